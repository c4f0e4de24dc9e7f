#pragma once

#include <QButtonGroup>
#include <QList>
#include <QWidget>

class QAbstractButton;
class QHBoxLayout;

namespace orv {

/// A few choices side by side, of which one is always chosen. Each is a button of its own, known by
/// its text. Tab leads to the chosen one, the arrow keys move the choice.
class SegmentedControl : public QWidget {
    Q_OBJECT

  public:
    explicit SegmentedControl(QWidget* parent = nullptr);

    /// Adds a choice at the end; `id` is what `chosen` tells.
    QAbstractButton* addSegment(int id);

    void setSegmentText(int id, const QString& text);

    /// Shows the choice, without telling anyone.
    void setChosen(int id);

    int chosenId() const { return group_.checkedId(); }

  Q_SIGNALS:
    /// The user chose a segment, with the mouse, the keys or an assistive program.
    void chosen(int id);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QHBoxLayout* row_;
    QButtonGroup group_;
};

} // namespace orv
