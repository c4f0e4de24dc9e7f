#include "RunTexts.h"

#include <chrono>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// What happened within this time happens now: chunks leave every few seconds at most.
constexpr std::chrono::seconds present{2};

QString captureText(const RunProgress& progress, const TextLookup& text) {
    switch (progress.captureProblem) {
    case CaptureProblem::NoPermission:
        return text(u"run.trouble.permission"_s);
    case CaptureProblem::NoSoundService:
        return text(u"run.trouble.service"_s);
    case CaptureProblem::NoDevice:
        return text(u"run.trouble.nodevice"_s);
    case CaptureProblem::DeviceGone:
        return text(u"run.trouble.devicegone"_s);
    case CaptureProblem::None:
    case CaptureProblem::Other:
        break;
    }
    return text(u"run.trouble.capture"_s).arg(progress.reason);
}

} // namespace

QString troubleText(const RunProgress& progress, const TextLookup& text) {
    const auto lasting = [&](const QString& key) { return text(key).arg(progress.lag.count()); };
    switch (progress.trouble) {
    case RunTrouble::None:
        break;
    case RunTrouble::LinkLost:
        return text(u"run.trouble.link"_s);
    case RunTrouble::CaptureFailed:
    case RunTrouble::CaptureEnded:
        return captureText(progress, text);
    case RunTrouble::EngineLost:
        return text(u"run.trouble.engine"_s).arg(progress.reason);
    case RunTrouble::EngineRefused:
        return text(u"run.trouble.refused"_s).arg(progress.reason);
    case RunTrouble::NoSound:
        return lasting(u"run.trouble.nosound"_s);
    case RunTrouble::AnswersLag:
        return lasting(u"run.trouble.lag"_s);
    case RunTrouble::OnlySilence:
        return lasting(u"run.trouble.silence"_s);
    }
    return {};
}

QString stageTime(std::optional<RunProgress::TimePoint> reached, RunProgress::TimePoint now,
                  const TextLookup& text) {
    if (!reached) {
        return text(u"run.stage.never"_s);
    }
    const auto ago = std::chrono::duration_cast<std::chrono::seconds>(now - *reached);
    return ago <= present ? text(u"run.stage.now"_s) : text(u"run.stage.ago"_s).arg(ago.count());
}

} // namespace orv
