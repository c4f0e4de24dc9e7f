#pragma once

#include <QByteArray>
#include <QString>

namespace orv {

/// What an update manifest says.
struct UpdateInfo {
    QString version; ///< "4.2.1"
    QString url;     ///< What to open for the download.
    QString notes;   ///< Empty when the manifest has none.
};

struct DecodedUpdateInfo {
    UpdateInfo info; ///< Valid when `error` is empty.
    QString error;   ///< Why this is not a manifest.
};

/// Reads a manifest: a JSON object with the texts "version" and "url" and, if its publisher likes,
/// "notes". Other keys are ignored. A version that is longer than 64 characters or holds control
/// characters is none: it is shown to people and printed on one line.
DecodedUpdateInfo decodeUpdateInfo(const QByteArray& body);

} // namespace orv
