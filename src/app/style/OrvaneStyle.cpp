#include "OrvaneStyle.h"

#include "StyleButtons.h"
#include "StyleDrawing.h"
#include "StyleFields.h"
#include "StyleMetrics.h"
#include "SwitchRow.h"
#include "Symbols.h"
#include "Theme.h"

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QStyleOption>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int darkBelow = 128; ///< Lightness of a window's ground, 0..255.

constexpr int alertTextWidth = 280; ///< Logical pixels; narrower lines are tiring.

/// The switch stands at the row's far edge.
QRect switchRowPart(QStyle::SubElement element, const QStyleOption& option) {
    const QSize size = switchSize();
    const QRect& row = option.rect;
    const QRect mark(row.right() - size.width() + 1, row.y() + (row.height() - size.height()) / 2,
                     size.width(), size.height());
    const QRect text = row.adjusted(0, 0, -size.width() - space::small, 0);
    return QStyle::visualRect(option.direction, row,
                              element == QStyle::SE_CheckBoxIndicator ? mark : text);
}

QIcon coloured(const QString& name, const QColor& color) {
    QPixmap pixmap = symbol(name).pixmap(QSize(64, 64));
    QPainter tint(&pixmap);
    tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
    tint.fillRect(pixmap.rect(), color);
    return QIcon(pixmap);
}

} // namespace

OrvaneStyle::OrvaneStyle()
    : QProxyStyle(u"Fusion"_s) {}

void OrvaneStyle::polish(QPalette& palette) {
    QProxyStyle::polish(palette);
    const bool desktopIsDark = palette.color(QPalette::Window).lightness() < darkBelow;
    const bool dark =
        scheme_ == ColourScheme::Dark || (scheme_ == ColourScheme::NoPreference && desktopIsDark);
    theme_ = dark ? Theme::darkened() : Theme::light();
    palette = theme_.palette();
}

void OrvaneStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    if (auto* area = qobject_cast<QAbstractScrollArea*>(widget); area != nullptr) {
        // The frame draws the ground.
        if (area->frameShape() == QFrame::StyledPanel || isPopup(area->parentWidget())) {
            area->viewport()->setAutoFillBackground(false);
        }
    }
    if (widget->objectName() == "qt_msgbox_label"_L1) {
        widget->setFont(strongFont(widget->font()));
    } else if (widget->objectName() == "qt_msgbox_informativelabel"_L1) {
        widget->setMinimumWidth(alertTextWidth);
    }
    if (widget->inherits("QTipLabel")) {
        widget->setPalette(theme_.palette());
    }
}

QIcon OrvaneStyle::standardIcon(StandardPixmap standard, const QStyleOption* option,
                                const QWidget* widget) const {
    switch (standard) {
    case SP_MessageBoxInformation:
    case SP_MessageBoxQuestion:
        return coloured(u"info"_s, theme_.accentText);
    case SP_MessageBoxWarning:
        return coloured(u"warning"_s, theme_.busy);
    case SP_MessageBoxCritical:
        return coloured(u"warning"_s, theme_.error);
    case SP_LineEditClearButton:
        return coloured(u"close"_s, theme_.quietText);
    default:
        return QProxyStyle::standardIcon(standard, option, widget);
    }
}

int OrvaneStyle::pixelMetric(PixelMetric metric, const QStyleOption* option,
                             const QWidget* widget) const {
    return ownMetric(metric).value_or(QProxyStyle::pixelMetric(metric, option, widget));
}

int OrvaneStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* data) const {
    return ownHint(hint).value_or(QProxyStyle::styleHint(hint, option, widget, data));
}

QSize OrvaneStyle::sizeFromContents(ContentsType type, const QStyleOption* option,
                                    const QSize& size, const QWidget* widget) const {
    if (type == CT_ItemViewItem) {
        const QSize row = QProxyStyle::sizeFromContents(type, option, size, widget);
        return {row.width(), std::max(row.height(), option->fontMetrics.height() + space::small)};
    }
    return ownSize(type, option, size)
        .value_or(QProxyStyle::sizeFromContents(type, option, size, widget));
}

QRect OrvaneStyle::subElementRect(SubElement element, const QStyleOption* option,
                                  const QWidget* widget) const {
    switch (element) {
    case SE_CheckBoxFocusRect:
    case SE_RadioButtonFocusRect:
    case SE_PushButtonFocusRect:
        return {}; // The control itself shows the focus.
    case SE_LineEditContents:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            frame != nullptr && frame->lineWidth > 0) {
            // A line edit keeps two pixels itself.
            return option->rect.adjusted(fieldPadding - 2, 1, 2 - fieldPadding, -1);
        }
        return option->rect;
    case SE_CheckBoxIndicator:
    case SE_CheckBoxContents:
        if (qobject_cast<const SwitchRow*>(widget) != nullptr) {
            return switchRowPart(element, *option);
        }
        return QProxyStyle::subElementRect(element, option, widget);
    default:
        return QProxyStyle::subElementRect(element, option, widget);
    }
}

QRect OrvaneStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                                  SubControl part, const QWidget* widget) const {
    return ownPart(control, option, part)
        .value_or(QProxyStyle::subControlRect(control, option, part, widget));
}

} // namespace orv
