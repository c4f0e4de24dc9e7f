#include "StyleMetrics.h"

#include "StyleBars.h"
#include "StyleButtons.h"
#include "StyleFields.h"
#include "Theme.h"

#include <QStyleOption>

#include <algorithm>

namespace orv {

namespace {

constexpr int lowestRow = 24; ///< Height of a switch with its text, logical pixels.

QSize switchRow(const QStyleOption* option, const QSize& contents, const QSize& mark) {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    const bool bare = button == nullptr || button->text.isEmpty();
    const int text = bare ? 0 : space::small + contents.width();
    return {mark.width() + text, std::max({lowestRow, contents.height(), mark.height()})};
}

std::optional<QSize> menuItemSize(const QStyleOption* option, const QSize& contents) {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (item == nullptr) {
        return std::nullopt;
    }
    if (item->menuItemType == QStyleOptionMenuItem::Separator) {
        return QSize(10, space::small + 1);
    }
    const bool marks = item->maxIconWidth > 0 || item->menuHasCheckableItems;
    const int shortcut = item->text.contains(QLatin1Char('\t')) ? space::huge : 0;
    return QSize(contents.width() + 2 * space::tiny + space::small + space::medium + shortcut +
                     (marks ? buttonIconSide + space::small : 0),
                 item->fontMetrics.height() + space::medium);
}

std::optional<QRect> comboPart(const QStyleOptionComplex* option, QStyle::SubControl part) {
    const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (combo == nullptr) {
        return std::nullopt;
    }
    const QRect& area = option->rect;
    if (part == QStyle::SC_ComboBoxEditField) {
        // A line edit keeps two pixels itself.
        const int left = combo->editable ? fieldPadding - 2 : fieldPadding;
        return QStyle::visualRect(option->direction, area, area.adjusted(left, 1, -arrowWidth, -1));
    }
    if (part == QStyle::SC_ComboBoxArrow) {
        return QStyle::visualRect(
            option->direction, area,
            QRect(area.right() - arrowWidth + 1, area.y(), arrowWidth, area.height()));
    }
    return std::nullopt;
}

std::optional<QRect> spinPart(const QStyleOptionComplex* option, QStyle::SubControl part) {
    const QRect& area = option->rect;
    const int half = area.height() / 2;
    QRect place;
    switch (part) {
    case QStyle::SC_SpinBoxUp:
        place = QRect(area.right() - arrowWidth + 1, area.y() + 3, arrowWidth - 2, half - 3);
        break;
    case QStyle::SC_SpinBoxDown:
        place = QRect(area.right() - arrowWidth + 1, area.y() + half, arrowWidth - 2, half - 3);
        break;
    case QStyle::SC_SpinBoxEditField:
        place = area.adjusted(fieldPadding - 2, 1, -arrowWidth, -1);
        break;
    default:
        return std::nullopt;
    }
    return QStyle::visualRect(option->direction, area, place);
}

std::optional<QRect> scrollPart(const QStyleOptionComplex* option, QStyle::SubControl part) {
    const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (bar == nullptr) {
        return std::nullopt;
    }
    const QRect handle = scrollBarHandle(*bar);
    const QRect& area = option->rect;
    const bool horizontal = bar->orientation == Qt::Horizontal;
    switch (part) {
    case QStyle::SC_ScrollBarSlider:
        return handle;
    case QStyle::SC_ScrollBarGroove:
        return area;
    case QStyle::SC_ScrollBarSubPage:
        return horizontal ? QRect(area.topLeft(), QPoint(handle.left() - 1, area.bottom()))
                          : QRect(area.topLeft(), QPoint(area.right(), handle.top() - 1));
    case QStyle::SC_ScrollBarAddPage:
        return horizontal ? QRect(QPoint(handle.right() + 1, area.top()), area.bottomRight())
                          : QRect(QPoint(area.left(), handle.bottom() + 1), area.bottomRight());
    default:
        return QRect(); // No arrow buttons.
    }
}

} // namespace

std::optional<int> ownMetric(QStyle::PixelMetric metric) {
    switch (metric) {
    case QStyle::PM_IndicatorWidth:
        return switchSize().width();
    case QStyle::PM_IndicatorHeight:
        return switchSize().height();
    case QStyle::PM_ExclusiveIndicatorWidth:
    case QStyle::PM_ExclusiveIndicatorHeight:
    case QStyle::PM_ButtonIconSize:
        return buttonIconSide;
    case QStyle::PM_CheckBoxLabelSpacing:
    case QStyle::PM_RadioButtonLabelSpacing:
    case QStyle::PM_LayoutHorizontalSpacing:
    case QStyle::PM_LayoutVerticalSpacing:
        return space::small;
    case QStyle::PM_LayoutLeftMargin:
    case QStyle::PM_LayoutTopMargin:
    case QStyle::PM_LayoutRightMargin:
    case QStyle::PM_LayoutBottomMargin:
        return space::large;
    case QStyle::PM_ButtonShiftHorizontal:
    case QStyle::PM_ButtonShiftVertical:
    case QStyle::PM_TabBarTabShiftHorizontal:
    case QStyle::PM_TabBarTabShiftVertical:
    case QStyle::PM_TabBarTabOverlap:
    case QStyle::PM_TabBarBaseOverlap:
    case QStyle::PM_MenuHMargin:
    case QStyle::PM_ComboBoxFrameWidth:
        return 0;
    case QStyle::PM_DefaultFrameWidth:
    case QStyle::PM_SpinBoxFrameWidth:
    case QStyle::PM_MenuPanelWidth:
        return 1;
    case QStyle::PM_MenuVMargin:
        return space::tiny;
    case QStyle::PM_ScrollBarExtent:
        return scrollBarWidth;
    case QStyle::PM_ScrollView_ScrollBarSpacing:
        return 0;
    case QStyle::PM_SliderThickness:
        return knobSide + 4;
    case QStyle::PM_SliderLength:
    case QStyle::PM_SliderControlThickness:
        return knobSide;
    case QStyle::PM_TabBarTabHSpace:
        return 2 * space::medium;
    case QStyle::PM_TabBarTabVSpace:
        return space::large;
    case QStyle::PM_FocusFrameHMargin: // From a row's edge to its text.
    case QStyle::PM_ToolTipLabelFrameWidth:
        return 6;
    case QStyle::PM_MessageBoxIconSize:
        return 40;
    default:
        return std::nullopt;
    }
}

std::optional<int> ownHint(QStyle::StyleHint hint) {
    switch (hint) {
    case QStyle::SH_ComboBox_Popup:
    case QStyle::SH_EtchDisabledText:
    case QStyle::SH_UnderlineShortcut:
    case QStyle::SH_ScrollBar_Transient:
    case QStyle::SH_DialogButtonBox_ButtonsHaveIcons:
    case QStyle::SH_ScrollView_FrameOnlyAroundContents:
        return 0;
    case QStyle::SH_Slider_AbsoluteSetButtons:
        return int(Qt::LeftButton);
    case QStyle::SH_ToolTipLabel_Opacity:
        return 255;
    default:
        return std::nullopt;
    }
}

std::optional<QSize> ownSize(QStyle::ContentsType type, const QStyleOption* option,
                             const QSize& contents) {
    if (option == nullptr) {
        return std::nullopt;
    }
    const int height = controlHeight(option->fontMetrics);
    switch (type) {
    case QStyle::CT_PushButton:
        if (const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option)) {
            return pushButtonSize(*button);
        }
        return std::nullopt;
    case QStyle::CT_ToolButton: {
        const auto* button = qstyleoption_cast<const QStyleOptionToolButton*>(option);
        const bool iconOnly =
            button != nullptr && button->toolButtonStyle == Qt::ToolButtonIconOnly;
        return QSize(iconOnly ? height : contents.width() + 2 * space::medium, height);
    }
    case QStyle::CT_LineEdit:
        return QSize(contents.width() + 2 * fieldPadding, height);
    case QStyle::CT_ComboBox:
    case QStyle::CT_SpinBox:
        return QSize(contents.width() + fieldPadding + arrowWidth, height);
    case QStyle::CT_CheckBox:
        return switchRow(option, contents, switchSize());
    case QStyle::CT_RadioButton:
        return switchRow(option, contents, QSize(buttonIconSide, buttonIconSide));
    case QStyle::CT_MenuItem:
        return menuItemSize(option, contents);
    default:
        return std::nullopt;
    }
}

std::optional<QRect> ownPart(QStyle::ComplexControl control, const QStyleOptionComplex* option,
                             QStyle::SubControl part) {
    switch (control) {
    case QStyle::CC_ComboBox:
        return comboPart(option, part);
    case QStyle::CC_SpinBox:
        return spinPart(option, part);
    case QStyle::CC_ScrollBar:
        return scrollPart(option, part);
    default:
        return std::nullopt;
    }
}

} // namespace orv
