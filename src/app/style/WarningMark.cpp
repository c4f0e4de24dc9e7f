#include "WarningMark.h"

#include "StyleDrawing.h"
#include "Symbols.h"
#include "Theme.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int side = 24;

} // namespace

WarningMark::WarningMark(QWidget* parent)
    : QWidget(parent) {
    setFixedSize(side, side);
}

void WarningMark::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    drawIcon(&painter, rect(), symbol(u"warning"_s), themeOf(*this).error, true);
}

} // namespace orv
