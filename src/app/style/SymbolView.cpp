#include "SymbolView.h"

#include "StyleDrawing.h"
#include "Theme.h"

namespace orv {

SymbolView::SymbolView(const QIcon& icon, int side, QWidget* parent)
    : QWidget(parent)
    , icon_(icon) {
    setFixedSize(side, side);
}

void SymbolView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawIcon(&painter, rect(), icon_, themeOf(*this).quietText, true);
}

} // namespace orv
