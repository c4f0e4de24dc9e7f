#pragma once

#include "RunProgress.h"
#include "TextLookup.h"

#include <QString>

#include <optional>

namespace orv {

/// What keeps the run from bringing results, in one sentence for people; empty when nothing does.
QString troubleText(const RunProgress& progress, const TextLookup& text);

/// When a stage was last reached: "now", "7 s ago", "not yet".
QString stageTime(std::optional<RunProgress::TimePoint> reached, RunProgress::TimePoint now,
                  const TextLookup& text);

} // namespace orv
