#pragma once

#include "HttpResponse.h"
#include "OverlayAppearance.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace orv {

/// The latest result and how the page is to show it.
struct OverlayResult {
    QString original;
    QString translation;
    double lastUpdate = 0; ///< Seconds since 1970 with fraction; 0 before any result.
    OverlayAppearance appearance;

    /// The JSON document behind "/text".
    QByteArray toJson() const;

    friend bool operator==(const OverlayResult&, const OverlayResult&) = default;
};

/// What the overlay server offers.
enum class OverlayRoute { Text, Page, NotFound };

/// Where `path` leads; everything from its first "?" on is ignored.
OverlayRoute overlayRoute(QByteArrayView path);

HttpResponse textResponse(const QByteArray& json);
HttpResponse pageResponse(const QByteArray& html);
HttpResponse notFoundResponse();

} // namespace orv
