#include "Buttons.h"

#include "Symbols.h"

#include <QPushButton>

namespace orv {

QPushButton* makeButton(QWidget* parent, ButtonKind kind) {
    auto* button = new QPushButton(parent);
    button->setAutoDefault(false);
    setButtonKind(*button, kind);
    return button;
}

IconButton::IconButton(const QString& symbolName, QWidget* parent)
    : QToolButton(parent) {
    setToolButtonStyle(Qt::ToolButtonIconOnly);
    setFocusPolicy(Qt::StrongFocus);
    setSymbol(symbolName);
}

void IconButton::setSymbol(const QString& symbolName) {
    setIcon(symbol(symbolName));
}

void IconButton::setText(const QString& text) {
    QToolButton::setText(text);
    setToolTip(text);
    setAccessibleName(text);
}

} // namespace orv
