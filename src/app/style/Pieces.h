#pragma once

#include "ButtonKind.h"

#include <QString>
#include <QToolButton>
#include <QWidget>

class QGridLayout;
class QLabel;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace orv {

// The pieces that windows are made of, so that all of them look alike. A window is a column of
// cards; a card has a heading, then rows; a row is a label with its control, or a switch. Switches
// are plain QCheckBoxes, number fields QSpinBoxes, levels QSliders, texts QLineEdits: the style
// draws them. Lists to choose from are `FieldCombo` (with search by typing when it is long), a few
// choices side by side `SegmentedControl`, coloured texts `ToneLabel`, symbols come from
// Symbols.h. Distances are those of `space` in Theme.h, and no piece needs a colour, a font or a
// style sheet.

/// The name of a window or of what it is about, in the larger text size.
QLabel* makeTitle(QWidget* parent);

/// The name of a card or of a group of controls.
QLabel* makeHeading(QWidget* parent);

/// An explanation, in the quieter colour; breaks its lines.
QLabel* makeHint(QWidget* parent);

/// Text from outside, such as a result: plain, breaks its lines, can be selected and copied with
/// the mouse and the keys.
QLabel* makeText(QWidget* parent);

QPushButton* makeButton(QWidget* parent, ButtonKind kind = ButtonKind::Plain);

/// A square button that shows only a symbol. Its text is its tool tip and what assistive programs
/// call it.
class IconButton : public QToolButton {
    Q_OBJECT

  public:
    /// `symbolName` as in Symbols.h.
    explicit IconButton(const QString& symbolName, QWidget* parent = nullptr);

    void setSymbol(const QString& symbolName);

    void setText(const QString& text);
};

/// A part of a window on a ground of its own. Give it a layout through `rows` or `fields`.
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

/// A page that scrolls up and down when `content` is higher than its place; without a frame, on the
/// window's ground.
QScrollArea* makePage(QWidget* content, QWidget* parent);

/// Shows `text` on `label` and makes it the name of `field`, on screen and for assistive programs.
void nameField(QLabel* label, QWidget* field, const QString& text);

} // namespace orv
