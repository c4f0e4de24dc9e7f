#include "EngineRow.h"

#include "PaintScope.h"
#include "StyleDrawing.h"
#include "Symbols.h"
#include "Theme.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace orv {

namespace {

constexpr int iconSide = 22;
constexpr int tickSide = 16;

} // namespace

EngineRow::EngineRow(const EngineDescriptor& engine, QWidget* parent)
    : QAbstractButton(parent)
    , id_(engine.id)
    , icon_(symbol(engine.icon)) {
    setCheckable(true);
    setAutoExclusive(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void EngineRow::setTexts(const QString& name, const QString& detail) {
    setText(name);
    detail_ = detail;
    setAccessibleName(name);
    setAccessibleDescription(detail);
    updateGeometry();
    update();
}

QSize EngineRow::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    const int widest = std::max(QFontMetrics(strongFont(font())).horizontalAdvance(text()),
                                metrics.horizontalAdvance(detail_));
    return {space::medium + iconSide + space::medium + widest + space::medium + tickSide +
                space::medium,
            2 * metrics.height() + 2 * space::small};
}

void EngineRow::paintEvent(QPaintEvent* /*event*/) {
    QStyleOption option;
    option.initFrom(this);
    const Theme& theme = themeOf(*this);
    QPainter painter(this);
    const PaintScope scope(&painter);
    QColor ground = Qt::transparent;
    if (isChecked()) {
        ground = theme.accentSoft;
    } else if (isHovered(option)) {
        ground = theme.controlHover;
    }
    const QRectF area(rect());
    drawRounded(&painter, area, radius::control, ground);
    if (showsFocus(option)) {
        drawRing(&painter, area, radius::control, theme.accent);
    }
    const auto place = [&](const QRect& logical) {
        return QStyle::visualRect(layoutDirection(), rect(), logical);
    };
    const QColor strong = isChecked() ? theme.accentText : theme.text;
    drawIcon(&painter, place({space::medium, (height() - iconSide) / 2, iconSide, iconSide}), icon_,
             strong, true);
    if (isChecked()) {
        drawTick(&painter,
                 QRectF(place({width() - space::medium - tickSide, (height() - tickSide) / 2,
                               tickSide, tickSide})),
                 theme.accentText);
    }
    const int left = space::medium + iconSide + space::medium;
    const int line = fontMetrics().height();
    const QRect name(left, space::small, width() - left - 2 * space::medium - tickSide, line);
    painter.setFont(strongFont(font()));
    painter.setPen(theme.text);
    const auto alignment =
        QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter);
    painter.drawText(place(name), int(alignment), text());
    painter.setFont(font());
    painter.setPen(isChecked() ? theme.text : theme.quietText);
    painter.drawText(place(name.translated(0, line)), int(alignment), detail_);
}

} // namespace orv
