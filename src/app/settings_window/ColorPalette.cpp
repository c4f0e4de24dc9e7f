#include "ColorPalette.h"

#include "ButtonKind.h"
#include "HexColor.h"
#include "ScreenPlacement.h"
#include "Theme.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>
#include <QToolButton>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// How far an arrow key goes in the list of colours.
int stepOf(int key) {
    switch (key) {
    case Qt::Key_Left:
        return -1;
    case Qt::Key_Right:
        return 1;
    case Qt::Key_Up:
        return -paletteColumns;
    case Qt::Key_Down:
        return paletteColumns;
    default:
        return 0;
    }
}

} // namespace

QIcon swatchIcon(const QColor& color, const QSize& size) {
    constexpr int finest = 3; // Device pixels for each logical one.
    QPixmap pixmap(size * finest);
    pixmap.setDevicePixelRatio(finest);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QColor(128, 128, 128, 160));
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(QPointF(), QSizeF(size)).adjusted(0.5, 0.5, -0.5, -0.5),
                            radius::item, radius::item);
    painter.end();
    return QIcon(pixmap);
}

QList<QColor> paletteColors() {
    // Greys, then the hues dark, full and light: subtitles want strong contrasts.
    static constexpr QRgb colors[] = {
        0x000000, 0x212121, 0x424242, 0x757575, 0x9E9E9E, 0xBDBDBD, 0xEEEEEE, 0xFFFFFF,
        0xB71C1C, 0xE65100, 0x8D6E00, 0x2E7D32, 0x00695C, 0x0D47A1, 0x4A148C, 0x880E4F,
        0xF44336, 0xFF9800, 0xFFEB3B, 0x4CAF50, 0x00BCD4, 0x2196F3, 0x9C27B0, 0xE91E63,
        0xFFCDD2, 0xFFE0B2, 0xFFF9C4, 0x90EE90, 0xB2EBF2, 0xBBDEFB, 0xE1BEE7, 0xF8BBD0,
    };
    QList<QColor> list;
    for (const QRgb color : colors) {
        list.append(QColor(color));
    }
    return list;
}

ColorPalette::ColorPalette(const QColor& current, QWidget* parent)
    : QWidget(parent, Qt::Popup) {
    auto* grid = new QGridLayout(this);
    grid->setContentsMargins(space::small, space::small, space::small, space::small);
    grid->setSpacing(0);
    const QList<QColor> colors = paletteColors();
    for (int index = 0; index < colors.size(); ++index) {
        const QColor color = colors[index];
        auto* swatch = new QToolButton(this);
        swatch->setIcon(swatchIcon(color, swatch->iconSize()));
        swatch->setAccessibleName(toHexString(color));
        swatch->setToolTip(toHexString(color));
        setButtonKind(*swatch, ButtonKind::Quiet);
        swatch->setFocusPolicy(Qt::StrongFocus);
        connect(swatch, &QToolButton::clicked, this, [this, color] {
            Q_EMIT chosen(color);
            close();
        });
        grid->addWidget(swatch, index / paletteColumns, index % paletteColumns);
        swatches_.append(swatch);
    }
    const auto chosenIndex = std::max<qsizetype>(0, colors.indexOf(current));
    swatches_[chosenIndex]->setFocus();
}

void ColorPalette::showBelow(const QWidget& anchor) {
    const QRect button(anchor.mapToGlobal(QPoint()), anchor.size());
    adjustSize();
    move(placeBeside(button, sizeHint(), anchor.screen()->availableGeometry(), space::tiny));
    show();
}

void ColorPalette::paintEvent(QPaintEvent* /*event*/) {
    const Theme& theme = themeOf(*this);
    QPainter painter(this);
    painter.fillRect(rect(), theme.controlBorder);
    painter.fillRect(rect().adjusted(1, 1, -1, -1), theme.card);
}

void ColorPalette::keyPressEvent(QKeyEvent* event) {
    auto* focused = qobject_cast<QToolButton*>(focusWidget());
    const int step = stepOf(event->key());
    const auto next = swatches_.indexOf(focused) + step;
    if (step != 0 && focused != nullptr) {
        if (next >= 0 && next < swatches_.size()) {
            swatches_[next]->setFocus(Qt::TabFocusReason);
        }
    } else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (focused != nullptr) {
            focused->click();
        }
    } else {
        QWidget::keyPressEvent(event); // Escape closes a pop-up.
    }
}

} // namespace orv
