#pragma once

#include <QString>

namespace orv {

/// A notice about a run: something that the user has to know. The words are chosen by whoever shows
/// it.
struct AudioNotice {
    enum class Kind {
        ApiKeyMissing,         ///< `detail`: the engine's identifier, first letter upper case.
        ServiceAccountMissing, ///< Google's streaming recognition lacks its service account file.
        BackendOutdated,       ///< `detail`: the version that the backend told, in digits.
    };

    Kind kind;
    QString detail;

    friend bool operator==(const AudioNotice&, const AudioNotice&) = default;
};

} // namespace orv
