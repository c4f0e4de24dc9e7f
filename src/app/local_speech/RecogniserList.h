#pragma once

#include "BackendMessages.h"

#include <QByteArray>
#include <QList>
#include <QString>

namespace orv {

// Recognisers that run on this computer or near it, as the speech server's recognisers.py lists
// them. Plain values.

struct KnownRecogniser {
    bool isNamed = false; ///< It stands in recognisers.toml, and serves when it can.
    bool answers = true;  ///< Whether it would serve now.
    QString name = {};
    QString kind = {};
    QString address = {};
    QString model = {};
    StatusMessage why = {}; ///< Why it would not serve; else empty.

    friend bool operator==(const KnownRecogniser&, const KnownRecogniser&) = default;
};

struct RecogniserList {
    QList<KnownRecogniser> recognisers; ///< Those that are named first.
    QList<StatusMessage> notices;       ///< What is wrong with the file, or was with a change.

    friend bool operator==(const RecogniserList&, const RecogniserList&) = default;
};

/// From what the program printed, an object on each line; whatever else stands there is left out.
RecogniserList parseRecogniserList(const QByteArray& printed);

} // namespace orv
