#include "OrvaneStyle.h"

#include "StyleBars.h"
#include "StyleButtons.h"
#include "StyleFields.h"
#include "StyleLists.h"
#include "StyleMetrics.h"
#include "StylePaint.h"
#include "SwitchRow.h"
#include "Symbols.h"

#include <QAbstractItemView>
#include <QAbstractScrollArea>
#include <QDateTime>
#include <QStyleOption>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr int darkBelow = 128; ///< Lightness of a window's ground, 0..255.

constexpr int alertTextWidth = 280; ///< Logical pixels; narrower lines are tiring.

constexpr std::chrono::milliseconds sweepTime{1600}; ///< Of a bar without a known end.
constexpr std::chrono::milliseconds sweepStep{33};

/// Where the moving part of a bar without a known end is now, 0..1, there and back.
qreal sweepPhase() {
    const qint64 now = QDateTime::currentMSecsSinceEpoch() % sweepTime.count();
    return 1.0 - std::abs(1.0 - 2.0 * qreal(now) / qreal(sweepTime.count()));
}

bool isPopup(const QWidget* widget) {
    return widget != nullptr &&
           (widget->isWindow() || widget->inherits("QComboBoxPrivateContainer"));
}

/// A frame round a list or text: its ground is drawn with it, so that the corners are round.
void drawFrame(const Theme& theme, const QStyleOption& option, QPainter* painter,
               const QWidget* widget) {
    if (isPopup(widget)) {
        drawMenuGround(theme, option, painter);
        return;
    }
    const PaintScope scope(painter);
    drawRounded(painter, QRectF(option.rect), radius::control, theme.field, theme.controlBorder);
    if (option.state.testFlag(QStyle::State_HasFocus)) {
        drawRing(painter, QRectF(option.rect), radius::control, theme.accentText);
    }
}

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

void OrvaneStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option,
                                QPainter* painter, const QWidget* widget) const {
    if (!drawOwnPrimitive(element, option, painter, widget)) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

bool OrvaneStyle::drawOwnPrimitive(PrimitiveElement element, const QStyleOption* option,
                                   QPainter* painter, const QWidget* widget) const {
    switch (element) {
    case PE_PanelButtonCommand:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            drawPushButton(theme_, *button, buttonKind(widget), painter);
            return true;
        }
        return false;
    case PE_PanelLineEdit:
        if (const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
            frame != nullptr && frame->lineWidth > 0) {
            drawField(theme_, *option, painter);
        }
        return true;
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        drawSwitch(theme_, *option, painter);
        return true;
    case PE_IndicatorRadioButton:
        drawRadio(theme_, *option, painter);
        return true;
    case PE_FrameFocusRect:
        // A chosen row is seen anyway.
        if (!option->rect.isEmpty() && showsFocus(*option) &&
            !option->state.testFlag(State_Selected)) {
            const PaintScope scope(painter);
            drawRing(painter, QRectF(option->rect), radius::item, theme_.accentText);
        }
        return true;
    case PE_Frame:
        drawFrame(theme_, *option, painter, widget);
        return true;
    case PE_PanelMenu:
        drawMenuGround(theme_, *option, painter);
        return true;
    case PE_PanelTipLabel:
        painter->fillRect(option->rect, theme_.tip);
        return true;
    case PE_PanelItemViewItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(option)) {
            drawRow(theme_, *item, painter);
        }
        return true;
    case PE_FrameTabBarBase:
        painter->fillRect(
            QRect(option->rect.left(), option->rect.bottom(), option->rect.width(), 1),
            theme_.cardBorder);
        return true;
    case PE_FrameLineEdit:
    case PE_FrameMenu:
    case PE_FrameTabWidget:
    case PE_PanelItemViewRow:
    case PE_PanelScrollAreaCorner:
        return true;
    default:
        return false;
    }
}

void OrvaneStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                              const QWidget* widget) const {
    if (!drawOwnControl(element, option, painter, widget)) {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

bool OrvaneStyle::drawOwnControl(ControlElement element, const QStyleOption* option,
                                 QPainter* painter, const QWidget* widget) const {
    switch (element) {
    case CE_PushButtonBevel:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            drawPushButton(theme_, *button, buttonKind(widget), painter);
        }
        return true;
    case CE_PushButtonLabel:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            drawPushButtonLabel(theme_, *button, buttonKind(widget), painter);
        }
        return true;
    case CE_CheckBox:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            QStyleOptionButton part = *button;
            part.rect = subElementRect(SE_CheckBoxIndicator, button, widget);
            drawSwitch(theme_, part, painter);
            part.rect = subElementRect(SE_CheckBoxContents, button, widget);
            drawSwitchLabel(theme_, part, painter);
        }
        return true;
    case CE_ComboBoxLabel:
        if (const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option)) {
            drawComboBoxLabel(
                theme_, *combo,
                proxy()->subControlRect(CC_ComboBox, combo, SC_ComboBoxEditField, widget), painter);
        }
        return true;
    case CE_MenuItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option)) {
            drawMenuItem(theme_, *item, painter);
        }
        return true;
    case CE_ItemViewItem:
        if (const auto* item = qstyleoption_cast<const QStyleOptionViewItem*>(option)) {
            QStyleOptionViewItem own = *item;
            own.palette.setColor(QPalette::HighlightedText, theme_.text);
            QProxyStyle::drawControl(element, &own, painter, widget);
        }
        return true;
    case CE_ProgressBar:
        if (const auto* bar = qstyleoption_cast<const QStyleOptionProgressBar*>(option)) {
            drawProgressBar(theme_, *bar, sweepPhase(), painter);
            if (bar->maximum <= bar->minimum && widget != nullptr) {
                // The next step follows from this one, so a bar that nobody sees stands still.
                auto* moving = const_cast<QWidget*>(widget);
                QTimer::singleShot(sweepStep, moving, [moving] { moving->update(); });
            }
        }
        return true;
    case CE_TabBarTabShape:
        if (const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(option)) {
            drawTab(theme_, *tab, painter);
        }
        return true;
    case CE_TabBarTabLabel:
        if (const auto* tab = qstyleoption_cast<const QStyleOptionTab*>(option)) {
            drawTabLabel(theme_, *tab, painter);
        }
        return true;
    default:
        return false;
    }
}

void OrvaneStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                     QPainter* painter, const QWidget* widget) const {
    switch (control) {
    case CC_ComboBox:
        if (const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option)) {
            drawComboBox(theme_, *combo, painter);
            return;
        }
        break;
    case CC_SpinBox:
        if (const auto* spin = qstyleoption_cast<const QStyleOptionSpinBox*>(option)) {
            drawSpinBox(theme_, *spin, subControlRect(control, spin, SC_SpinBoxUp, widget),
                        subControlRect(control, spin, SC_SpinBoxDown, widget), painter);
            return;
        }
        break;
    case CC_Slider:
        if (const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            drawSlider(theme_, *slider,
                       proxy()->subControlRect(control, slider, SC_SliderHandle, widget), painter);
            return;
        }
        break;
    case CC_ScrollBar:
        if (const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option)) {
            drawScrollBar(theme_, *bar, painter);
            return;
        }
        break;
    case CC_ToolButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option)) {
            drawToolButton(theme_, *button, buttonKind(widget), painter);
            return;
        }
        break;
    default:
        break;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

} // namespace orv
