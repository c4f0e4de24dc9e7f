#pragma once

#include <QColor>
#include <QWidget>

class QLineEdit;
class QToolButton;

namespace orv {

class ColorPalette;

/// A field for a colour: a well that shows it and offers others, and a field for its hexadecimal
/// form. Text in the field that is no colour changes nothing and is replaced when the field is
/// left.
class ColorField : public QWidget {
    Q_OBJECT

  public:
    explicit ColorField(QWidget* parent = nullptr);

    /// Shows a colour without telling anyone.
    void setColor(const QColor& color);

    QColor color() const { return color_; }

    /// What the colour is for; the names of well and field for assistive programs begin with it.
    void setName(const QString& name);

  Q_SIGNALS:
    /// The user chose a colour.
    void chosen(const QColor& color);

  private:
    void choose(const QColor& color);
    void takeTyped();
    void showPalette();

    QColor color_;
    QToolButton* well_;
    QLineEdit* hex_;
};

} // namespace orv
