#pragma once

#include <QByteArray>
#include <QColor>
#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>
#include <optional>

namespace orv {

class SettingsList;

/// How the page's subtitle box looks, and what it shows.
struct OverlayAppearance {
    QColor background;                  ///< Without its alpha, which is `opacity`.
    double opacity = 1;                 ///< Of the background, 0 to 1.
    QString textColor;                  ///< CSS colour of both lines.
    std::optional<QString> borderColor; ///< CSS colour of the border; none draws no border.
    bool showOriginal = false;          ///< Whether the source text is shown too.

    /// The user's choices as they are now.
    static OverlayAppearance fromSettings(const SettingsList& settings);

    friend bool operator==(const OverlayAppearance&, const OverlayAppearance&) = default;
};

/// Calls `show` with the appearance after each assignment of a setting that it is made from, as
/// long as `context` lives.
void watchOverlayAppearance(const SettingsList& settings, QObject* context,
                            const std::function<void(const OverlayAppearance& appearance)>& show);

/// An appearance in the words of a style sheet.
struct OverlayStyle {
    QByteArray background;
    QByteArray border; ///< Empty for none.
    QByteArray color;  ///< Of both lines.

    /// For the page's script. Holds nothing that could end the script.
    QJsonObject toJson() const;
};

OverlayStyle overlayStyle(const OverlayAppearance& appearance);

/// `value` as it stands when it can do no more than name a colour in a style sheet, else
/// `fallback`. Letters, digits, spaces and "#(),.%+-/" with matching parentheses pass: enough for
/// every way CSS writes a colour, and nothing that ends the declaration, the rule or the element.
QString cssColorOr(const QString& value, const QString& fallback);

/// `value` with as many digits as tell it apart, with a point whatever the user's language, and
/// without an exponent.
QByteArray cssNumber(double value);

} // namespace orv
