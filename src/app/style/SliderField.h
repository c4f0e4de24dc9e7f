#pragma once

#include <QString>
#include <QWidget>

#include <functional>

class QLabel;
class QSlider;

namespace orv {

class ToneLabel;

/// A slider with its name above it on the left and its value on the right. The mouse wheel scrolls
/// past it.
class SliderField : public QWidget {
    Q_OBJECT

  public:
    using ValueText = std::function<QString(int value)>;

    /// Whole numbers from `lowest` to `highest` in steps of `step`; `valueText` says a value as
    /// people read it.
    SliderField(int lowest, int highest, int step, ValueText valueText, QWidget* parent = nullptr);

    /// The name on screen and for assistive programs.
    void setName(const QString& name);

    /// Shows a value (the nearest possible one) without telling anyone.
    void setValue(int value);

    int value() const;

  Q_SIGNALS:
    /// The user moves the slider; many of these come while the mouse drags it.
    void moving(int value);
    /// The user settled on a value.
    void chosen(int value);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void showValue();

    ValueText valueText_;
    int step_;
    QLabel* name_;
    ToneLabel* valueLabel_;
    QSlider* slider_;
};

} // namespace orv
