#include "OverlayAppearance.h"

#include "OverlayDefaults.h"
#include "SettingsList.h"

#include <QLocale>

#include <algorithm>
#include <cmath>

namespace orv {

namespace {

QByteArray rgba(const QColor& color, double opacity) {
    const QColor converted = color.isValid() ? color.toRgb() : QColor(Qt::green);
    const auto component = [](double value) {
        return QByteArray::number(static_cast<int>(std::lround(value * 255)));
    };
    return "rgba(" + component(converted.redF()) + ',' + component(converted.greenF()) + ',' +
           component(converted.blueF()) + ',' + cssNumber(opacity) + ')';
}

bool parenthesesMatch(const QString& value) {
    int open = 0;
    for (const QChar character : value) {
        open += character == u'(' ? 1 : character == u')' ? -1 : 0;
        if (open < 0) {
            return false;
        }
    }
    return open == 0;
}

/// The text that a setting holds, or its default when that could harm the page.
QString harmless(const Setting<QString>& color) {
    return cssColorOr(color.get(), color.initial());
}

} // namespace

OverlayAppearance OverlayAppearance::fromSettings(const SettingsList& settings) {
    OverlayAppearance appearance;
    appearance.background = OverlayDefaults::color(settings.overlayBgColor);
    appearance.opacity = OverlayDefaults::opacityValue(settings);
    appearance.textColor = harmless(settings.overlayTextColor);
    if (settings.overlayBorderEnabled.get()) {
        appearance.borderColor = harmless(settings.overlayBorderColor);
    }
    appearance.showOriginal = settings.showOriginal.get();
    return appearance;
}

void watchOverlayAppearance(const SettingsList& settings, QObject* context,
                            const std::function<void(const OverlayAppearance& appearance)>& show) {
    std::vector<const AnySetting*> watched = OverlayDefaults::settings(settings);
    watched.push_back(&settings.showOriginal);
    watchAll(watched, context,
             [&settings, show] { show(OverlayAppearance::fromSettings(settings)); });
}

QJsonObject OverlayStyle::toJson() const {
    return {{u"background"_s, QString::fromUtf8(background)},
            {u"border"_s, QString::fromUtf8(border)},
            {u"color"_s, QString::fromUtf8(color)}};
}

OverlayStyle overlayStyle(const OverlayAppearance& appearance) {
    OverlayStyle style{.background = rgba(appearance.background, appearance.opacity),
                       .border = {},
                       .color = appearance.textColor.toUtf8()};
    if (appearance.borderColor) {
        style.border = "3px solid " + appearance.borderColor->toUtf8();
    }
    return style;
}

QString cssColorOr(const QString& value, const QString& fallback) {
    const auto mayStandInColor = [](QChar character) {
        const char16_t unit = character.unicode();
        return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z') ||
               (unit >= u'0' && unit <= u'9') || QStringView(u" #(),.%+-/").contains(character);
    };
    const bool isHarmless = std::all_of(value.begin(), value.end(), mayStandInColor);
    return isHarmless && parenthesesMatch(value) ? value : fallback;
}

QByteArray cssNumber(double value) {
    return QByteArray::number(value, 'f', QLocale::FloatingPointShortest);
}

} // namespace orv
