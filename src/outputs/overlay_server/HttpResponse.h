#pragma once

#include <QByteArray>

namespace orv {

/// What a path is answered with.
struct HttpResponse {
    QByteArray body;
    QByteArray contentType; ///< With its charset.

    /// Head and body as they go over the wire. The status is always 200, pages of any origin may
    /// read the answer, nothing is to be cached, and the connection ends with it.
    QByteArray bytes() const;
};

} // namespace orv
