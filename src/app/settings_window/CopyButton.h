#pragma once

#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <functional>

namespace orv {

/// A button that copies a text and says so in its own place for a moment; assistive programs hear
/// of it, since it is the button's name that changes. It is as wide as the longer of its two texts.
class CopyButton : public QPushButton {
    Q_OBJECT

  public:
    /// `source` gives the text to copy; `thanks` is how long the button tells that it did.
    explicit CopyButton(std::function<QString()> source, QWidget* parent = nullptr,
                        std::chrono::milliseconds thanks = std::chrono::seconds(2));

    /// What the button says before and after.
    void setTexts(const QString& copy, const QString& copied);

    QSize sizeHint() const override;

  private:
    void copy();
    void showText();

    const std::function<QString()> source_;
    QString copyText_;
    QString copiedText_;
    QTimer thanks_;
};

} // namespace orv
