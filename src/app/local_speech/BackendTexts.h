#pragma once

#include "BackendNews.h"
#include "TextLookup.h"

#include <QList>
#include <QString>

#include <optional>

namespace orv {

// What the speech server tells, in the language of the window. Functions from values to values.

/// One thing that the speech server tells.
struct BackendText {
    QString summary;     ///< What is the matter, in one line.
    QString detail = {}; ///< Why, and what to do; may be empty.

    friend bool operator==(const BackendText&, const BackendText&) = default;
};

/// What a notice says; nothing for an unknown code, or one whose parameters are not all there.
std::optional<BackendText> backendText(const BackendNotice& notice, const TextLookup& text);

/// What a status says. One of an older speech server, or of an unknown code, says its message.
BackendText backendText(const StatusMessage& status, const TextLookup& text);

/// What a person should know while the run lasts: each disturbance, then what there is to tell
/// about who serves, but for what is well as it is.
QList<BackendText> backendConcerns(const BackendNews& news, const QString& sourceLanguage,
                                   const TextLookup& text);

/// `text` with places at which its lines can be broken in words that are too long for one, such as
/// paths.
QString withBreaks(const QString& text);

} // namespace orv
