#pragma once

#include "ButtonKind.h"

#include <QString>
#include <QStringList>
#include <QToolButton>

class QPushButton;

namespace orv {

/// A push button that Enter does not press for another control.
QPushButton* makeButton(QWidget* parent, ButtonKind kind = ButtonKind::Plain);

/// Makes a button wide enough for each of `texts`, which it may show one after the other, so that
/// neither it nor its neighbours move. Called again when the texts are translated.
void reserveWidth(QPushButton& button, const QStringList& texts);

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

} // namespace orv
