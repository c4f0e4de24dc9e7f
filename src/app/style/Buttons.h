#pragma once

#include "ButtonKind.h"

#include <QString>
#include <QToolButton>

class QPushButton;

namespace orv {

/// A push button that Enter does not press for another control.
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

} // namespace orv
