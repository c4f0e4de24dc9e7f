#pragma once

#include "CaptureProblem.h"

#include <QString>

#include <chrono>
#include <optional>

namespace orv {

/// What keeps a run from bringing results.
enum class RunTrouble {
    None,
    LinkLost,      ///< The connection to the speech server is gone.
    CaptureFailed, ///< The source could not be opened: no permission, no device.
    CaptureEnded,  ///< The source ended by itself; the run waits for it.
    EngineLost,    ///< The connection to the service is gone; `reason` is what it said.
    EngineRefused, ///< The recogniser does not serve; `reason` is what it said.
    NoSound,       ///< The source has delivered nothing for some time.
    AnswersLag,    ///< What was sent has waited too long for its answer.
    OnlySilence    ///< Nothing louder than the threshold of speech for some time.
};

/// How a run is, by the stages that sound passes: each with the time when it was last reached.
struct RunProgress {
    using TimePoint = std::chrono::steady_clock::time_point;

    bool isOn = false; ///< From the start of a run to its stop.
    std::optional<TimePoint> soundArrived = {};
    std::optional<TimePoint> speechHeard = {};
    std::optional<TimePoint> sent = {};
    std::optional<TimePoint> answered = {};

    RunTrouble trouble = RunTrouble::None; ///< The most serious one, if several hold.
    CaptureProblem captureProblem = CaptureProblem::None; ///< Of a trouble with the source.
    QString reason = {};        ///< What the system or the service said; may be empty.
    std::chrono::seconds lag{}; ///< For how long `NoSound`, `AnswersLag` or `OnlySilence` holds.

    friend bool operator==(const RunProgress&, const RunProgress&) = default;
};

} // namespace orv
