#pragma once

#include "BackendMessages.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>

#include <cstdint>
#include <optional>

namespace orv {

// What there is of Whisper in the speech server's environment, as the server's manage_whisper.py
// tells it. Plain values.

/// Whether something is there, and can be used.
enum class Presence {
    There,
    Partial, ///< A download was broken off.
    Missing,
    Unusable, ///< It is there and does not work.
};

/// One of the packages that run Whisper's models.
struct WhisperPackage {
    QString name;
    Presence presence = Presence::Missing;
    QString version = {};
    StatusMessage why = {}; ///< Why it is unusable; else empty.
    std::int64_t downloadBytes = 0;
    std::int64_t diskBytes = 0;

    friend bool operator==(const WhisperPackage&, const WhisperPackage&) = default;
};

/// One model, by whichever package has it.
struct WhisperCopy {
    Presence presence = Presence::Missing;
    QString package = {};
    bool canBeFetched = false;
    StatusMessage why = {}; ///< Why it is unusable; else empty.

    friend bool operator==(const WhisperCopy&, const WhisperCopy&) = default;
};

/// All there is.
struct WhisperInventory {
    QList<WhisperPackage> packages; ///< The better one first.
    QString serves;                 ///< The package that would serve; empty when none would.
    QMap<QString, WhisperCopy> models;
    QString usedModel;      ///< Which model would serve; empty when none would.
    StatusMessage whyOther; ///< Why it is not the one that was asked for; else empty.

    friend bool operator==(const WhisperInventory&, const WhisperInventory&) = default;
};

/// What there is of the model `id`, as the settings name it: "large" is its newest version that is
/// there.
WhisperCopy copyOf(const WhisperInventory& inventory, const QString& id);

/// Whether the model `id`, as the settings name it, is the one that serves.
bool uses(const WhisperInventory& inventory, const QString& id);

/// Both packages, and neither there: what holds before a speech server is installed.
WhisperInventory nothingOfWhisper();

/// From what the program printed: the last line that is an object counts, as packages print
/// whatever they like before it. Nothing when there is none, or none with packages.
std::optional<WhisperInventory> parseWhisperInventory(const QByteArray& printed);

} // namespace orv
