#pragma once

#include <QWidget>

class QGridLayout;
class QLabel;
class QVBoxLayout;

namespace orv {

/// A part of a window on a ground of its own, with a column for what it holds.
///
/// All windows are put together alike: a window is a column of cards; a card has a heading, then
/// rows; a row is a label with its control, or a switch. Switches are plain QCheckBoxes, number
/// fields QSpinBoxes, levels QSliders, texts QLineEdits: the style draws them. Lists to choose from
/// are `FieldCombo` (with search by typing when it is long), a few choices side by side
/// `SegmentedControl`, coloured texts `ToneLabel`, symbols come from Symbols.h. Distances are those
/// of `space` in Theme.h, and nothing in a window needs a colour, a font or a style sheet of its
/// own.
class Card : public QWidget {
    Q_OBJECT

  public:
    enum class Ground {
        Plain,
        Notice, ///< Set off, for what the user should read now.
    };

    explicit Card(QWidget* parent = nullptr, Ground ground = Ground::Plain);

    /// The card's column: add headings, hints, switches and rows to it.
    QVBoxLayout* rows() const { return rows_; }

    /// Adds a heading at the end and returns it.
    QLabel* addHeading();

    /// Adds a row with a label on the left and `control` on the right, which takes the room that is
    /// left, and returns the label. Texts go in with `nameField(label, control, text)`. Labels of a
    /// card's consecutive rows share one column.
    QLabel* addField(QWidget* control);

    /// Lets the rows of a table that is only read stand as close together as lines of text.
    void setFieldsClose();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Ground ground_;
    QVBoxLayout* rows_;
    int fieldSpacing_;
    QGridLayout* fields_ = nullptr; ///< Of the latest consecutive rows.
};

} // namespace orv
