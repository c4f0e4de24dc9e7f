#pragma once

#include <QString>

namespace orv {

/// Where the cloud services are reached: scheme, host and port, without a trailing slash. The
/// defaults are the providers' public hosts; tests hand in servers of their own.
struct ServiceEndpoints {
    QString googleTranslate = QStringLiteral("https://translation.googleapis.com");
};

} // namespace orv
