#include "SettingsTabBar.h"

#include "PaintScope.h"
#include "StyleDrawing.h"
#include "Theme.h"

#include <QPainter>
#include <QStyleOptionTab>

#include <algorithm>

namespace orv {

namespace {

constexpr int iconSide = 20;
constexpr int narrowest = 68;

} // namespace

SettingsTabBar::SettingsTabBar(QWidget* parent)
    : QTabBar(parent) {
    setDrawBase(false);
    setExpanding(false);
    setUsesScrollButtons(false);
    setElideMode(Qt::ElideNone);
    setFocusPolicy(Qt::StrongFocus);
}

QSize SettingsTabBar::tabSizeHint(int index) const {
    const int text = fontMetrics().horizontalAdvance(tabText(index));
    return {std::max(text + 2 * space::small, narrowest),
            space::small + iconSide + space::tiny + fontMetrics().height() + space::small};
}

QSize SettingsTabBar::minimumTabSizeHint(int index) const {
    return tabSizeHint(index);
}

void SettingsTabBar::paintEvent(QPaintEvent* /*event*/) {
    const Theme& theme = themeOf(*this);
    QPainter painter(this);
    for (int tab = 0; tab < count(); ++tab) {
        QStyleOptionTab option;
        initStyleOption(&option, tab);
        const PaintScope scope(&painter);
        const QRect area = option.rect.adjusted(1, 2, -1, -2);
        const bool chosen = tab == currentIndex();
        if (chosen || isHovered(option)) {
            drawRounded(&painter, QRectF(area), radius::control,
                        chosen ? theme.accentSoft : theme.controlHover);
        }
        if (chosen && hasFocus() && showsFocus(option)) {
            drawRing(&painter, QRectF(area), radius::control, theme.accent);
        }
        const QColor color = chosen ? theme.accentText : theme.quietText;
        drawIcon(
            &painter,
            QRect(area.center().x() - iconSide / 2, area.top() + space::tiny, iconSide, iconSide),
            tabIcon(tab), color, true);
        painter.setFont(font());
        painter.setPen(chosen ? theme.accentText : theme.text);
        painter.drawText(area.adjusted(0, space::tiny + iconSide, 0, 0), Qt::AlignCenter,
                         tabText(tab));
    }
}

} // namespace orv
