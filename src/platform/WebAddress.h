#pragma once

#include <QString>
#include <QUrl>

#include <optional>

namespace orv {

/// The address that `text` holds, if it may be handed to a browser: absolute, with a host, and of
/// the scheme "http" or "https". White space around it is ignored.
std::optional<QUrl> webAddress(const QString& text);

} // namespace orv
