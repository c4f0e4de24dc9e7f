#include "PanelState.h"

#include "RunTexts.h"

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// What may be nothing but a pause is no error.
Tone troubleTone(RunTrouble trouble) {
    const bool mayBeWell = trouble == RunTrouble::OnlySilence || trouble == RunTrouble::AnswersLag;
    return mayBeWell ? Tone::Busy : Tone::Error;
}

} // namespace

StatusLine statusLine(const RunState& state, const TextLookup& text) {
    if (state.isStopping) {
        return {.headline = text(u"main.stopping"_s), .tone = Tone::Busy};
    }
    const bool isLoading = state.isModelLoading && !state.backendStatus.isEmpty();
    // What is being loaded says more than that there is no answer meanwhile.
    const bool isExpected = isLoading && state.progress.trouble == RunTrouble::AnswersLag;
    const bool isRefused =
        state.progress.trouble == RunTrouble::EngineRefused && !state.refusal.isEmpty();
    const QString trouble = isRefused ? state.refusal : troubleText(state.progress, text);
    if (state.isTranslating && !trouble.isEmpty() && !isExpected) {
        return {.headline = trouble, .tone = troubleTone(state.progress.trouble)};
    }
    if (state.hasEngineError && !state.backendStatus.isEmpty()) {
        return {.headline = state.backendStatus, .tone = Tone::Error};
    }
    if (!state.isTranslating) {
        return {};
    }
    if (isLoading) {
        return {.headline = state.backendStatus, .tone = Tone::Busy};
    }
    return {
        .headline = text(u"status.listening"_s), .detail = state.backendStatus, .tone = Tone::Good};
}

QList<FieldEntry> deviceEntries(const QList<AudioDevice>& devices, const QString& chosenId,
                                const TextLookup& text) {
    QList<FieldEntry> entries = {{.id = {}, .text = text(u"audio.mic.default"_s)}};
    for (const AudioDevice& device : devices) {
        entries.append({.id = device.id, .text = device.name});
    }
    keepChosen(entries, chosenId);
    return entries;
}

QList<FieldEntry> appEntries(const QList<RunningApp>& apps, const RunningApp& chosen,
                             const TextLookup& text) {
    QList<FieldEntry> entries = {{.id = {}, .text = text(u"audio.app.placeholder"_s)}};
    for (const RunningApp& app : apps) {
        entries.append({.id = app.bundleId, .text = app.name});
    }
    keepChosen(entries, chosen.bundleId, chosen.name);
    return entries;
}

QString deviceHint(const QList<AudioDevice>& devices, bool reachable, const TextLookup& text) {
    return reachable && devices.isEmpty() ? text(u"audio.mic.none"_s) : QString();
}

QString appHint(const QList<RunningApp>& apps, bool reachable, const TextLookup& text) {
    return text(reachable && apps.isEmpty() ? u"audio.app.none"_s : u"audio.drm.warning.short"_s);
}

QString resultHelp(bool backendRuns, bool runLasts, const TextLookup& text) {
    if (runLasts) {
        return text(u"panel.result.empty"_s);
    }
    return text(backendRuns ? u"panel.help.start"_s : u"panel.help.backend"_s);
}

QString noticeText(const AudioNotice& notice, const TextLookup& text) {
    switch (notice.kind) {
    case AudioNotice::Kind::ApiKeyMissing:
        return text(u"notice.apikey.missing"_s).arg(notice.detail);
    case AudioNotice::Kind::ServiceAccountMissing:
        return text(u"notice.serviceaccount.missing"_s);
    case AudioNotice::Kind::BackendOutdated:
        return text(u"notice.backend.outdated"_s).arg(notice.detail);
    }
    return {};
}

CloseAction closeAction(bool trayAvailable, bool somethingRuns) {
    if (trayAvailable) {
        return CloseAction::Hide;
    }
    return somethingRuns ? CloseAction::Minimise : CloseAction::EndProgram;
}

} // namespace orv
