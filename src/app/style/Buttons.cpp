#include "Buttons.h"

#include "Symbols.h"

#include <QPushButton>

#include <algorithm>

namespace orv {

QPushButton* makeButton(QWidget* parent, ButtonKind kind) {
    auto* button = new QPushButton(parent);
    button->setAutoDefault(false);
    setButtonKind(*button, kind);
    return button;
}

void reserveWidth(QPushButton& button, const QStringList& texts) {
    const QFontMetrics metrics = button.fontMetrics();
    int widest = 0;
    for (const QString& text : texts) {
        widest = std::max(widest, metrics.horizontalAdvance(text));
    }
    // The rest of the button is the same round each text.
    button.setMinimumWidth(button.sizeHint().width() + widest -
                           metrics.horizontalAdvance(button.text()));
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
