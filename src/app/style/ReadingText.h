#pragma once

#include "Theme.h"

#include <QString>
#include <QTextEdit>

namespace orv {

/// Text to read and to copy: an original in the quieter colour and below it its translation in the
/// larger text size. Lines break wherever they must, each paragraph runs in its own direction, and
/// what is longer than the place scrolls.
class ReadingText : public QTextEdit {
    Q_OBJECT

  public:
    explicit ReadingText(QWidget* parent = nullptr);

    /// Both may be empty. The same texts again change nothing, a selection least of all.
    void setTexts(const QString& original, const QString& translation);

    /// A remark above the texts, such as an error, in the colour of its tone; empty for none.
    void setRemark(const QString& remark, Tone tone);

    /// What stands there, quietly, while there is nothing else.
    void setEmptyText(const QString& text);

  protected:
    void changeEvent(QEvent* event) override;

  private:
    void compose();

    QString original_;
    QString translation_;
    QString remark_;
    Tone remarkTone_ = Tone::Plain;
};

} // namespace orv
