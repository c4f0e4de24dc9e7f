#pragma once

#include <QCheckBox>

namespace orv {

class ToneLabel;

/// A switch in a row of its own: its text on the left, the switch at the right edge, and between
/// them, where needed, a quiet note. Pressing anywhere in the row switches it.
class SwitchRow : public QCheckBox {
    Q_OBJECT

  public:
    explicit SwitchRow(QWidget* parent = nullptr);

    /// A short remark on the state, such as "active".
    void setNote(const QString& note);

    /// Shows a state without telling anyone.
    void setShown(bool on);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    bool hitButton(const QPoint& point) const override;

  private:
    ToneLabel* note_;
};

} // namespace orv
