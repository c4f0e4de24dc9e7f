#pragma once

#include <QByteArray>
#include <QColor>
#include <QString>

#include <optional>

namespace orv {

class DefaultsStore;

/// How the page's subtitle box looks.
struct OverlayAppearance {
    QColor background;                  ///< Without its alpha, which is `opacity`.
    double opacity = 0.85;              ///< Of the background, 0 to 1.
    QString textColor;                  ///< CSS colour of both lines.
    std::optional<QString> borderColor; ///< CSS colour of the border; none draws no border.

    /// Reads the user's choices; each absent one takes its default.
    static OverlayAppearance fromStore(const DefaultsStore& store);

    friend bool operator==(const OverlayAppearance&, const OverlayAppearance&) = default;
};

/// `value` as it stands when it can do no more than name a colour in a style sheet, else
/// `fallback`. Letters, digits, spaces and "#(),.%+-/" with matching parentheses pass: enough for
/// every way CSS writes a colour, and nothing that ends the declaration, the rule or the element.
QString cssColorOr(const QString& value, const QString& fallback);

/// `value` with as many digits as tell it apart, with a point whatever the user's language, and
/// without an exponent.
QByteArray cssNumber(double value);

/// The HTML document that a browser source shows: a transparent page which asks for "/text" every
/// 300 ms and shows the latest result as plain text in a box at the bottom until nothing has
/// changed for 8 s.
QByteArray overlayPage(const OverlayAppearance& appearance);

} // namespace orv
