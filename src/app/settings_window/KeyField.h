#pragma once

#include <QLineEdit>
#include <QString>

class QAction;
class QToolButton;

namespace orv {

/// A field for a secret: dots, until the button beside it is pressed. It is hidden again when the
/// window goes.
class KeyField : public QWidget {
    Q_OBJECT

  public:
    explicit KeyField(QWidget* parent = nullptr);

    QLineEdit* edit() const { return edit_; }

    /// The name of the field and of the button that reveals it, for assistive programs; the tool
    /// tip of the button says what it does.
    void setNames(const QString& field, const QString& reveal, const QString& tip);

  protected:
    void hideEvent(QHideEvent* event) override;

  private:
    void setRevealed(bool revealed);

    QLineEdit* edit_;
    QToolButton* reveal_;
};

} // namespace orv
