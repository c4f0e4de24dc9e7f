// What the style draws itself. Its sizes, places and colours stand in OrvaneStyle.cpp.

#include "OrvaneStyle.h"

#include "PaintScope.h"
#include "StyleBars.h"
#include "StyleButtons.h"
#include "StyleDrawing.h"
#include "StyleFields.h"
#include "StyleRows.h"
#include "Theme.h"

#include <QDateTime>
#include <QStyleOption>
#include <QTimer>

#include <chrono>
#include <cmath>

namespace orv {

namespace {

constexpr std::chrono::milliseconds sweepTime{1600}; ///< Of a bar without a known end.
constexpr std::chrono::milliseconds sweepStep{33};

/// Where the moving part of a bar without a known end is now, 0..1, there and back.
qreal sweepPhase() {
    const qint64 now = QDateTime::currentMSecsSinceEpoch() % sweepTime.count();
    return 1.0 - std::abs(1.0 - 2.0 * qreal(now) / qreal(sweepTime.count()));
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

} // namespace

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
