#pragma once

#include "AudioDevice.h"
#include "AudioNotice.h"
#include "FieldEntry.h"
#include "RunProgress.h"
#include "RunningApp.h"
#include "TextLookup.h"
#include "Theme.h"

#include <QList>
#include <QString>

namespace orv {

/// What the control panel says about the run. An empty headline says nothing at all.
struct StatusLine {
    QString headline = {};
    QString detail = {}; ///< A second, quieter line; may be empty.
    Tone tone = Tone::Quiet;

    friend bool operator==(const StatusLine&, const StatusLine&) = default;
};

/// The published state that the status line is made of.
struct RunState {
    bool isTranslating = false;
    bool isStopping = false;
    QString backendStatus = {}; ///< In the window's language, as far as it is known there.
    QString refusal = {};       ///< Why the speech server does not recognise, likewise.
    bool isModelLoading = false;
    bool hasEngineError = false;
    RunProgress progress = {};
};

/// What matters most comes first: the end that is awaited, what keeps the run from bringing
/// results, an error, a model that loads, the run.
StatusLine statusLine(const RunState& state, const TextLookup& text);

/// The default input and then every device. A chosen device that is not there now stays in the
/// list under its identifier, so that choosing it is not lost by unplugging it.
QList<FieldEntry> deviceEntries(const QList<AudioDevice>& devices, const QString& chosenId,
                                const TextLookup& text);

/// The invitation to choose and then every application; a chosen one that does not run now stays in
/// the list under the name it was last known by, else under its identifier.
QList<FieldEntry> appEntries(const QList<RunningApp>& apps, const RunningApp& chosen,
                             const TextLookup& text);

/// What stands below the list of devices: empty unless there is none at all. Without `reachable`
/// sound services nothing is known about devices, and something else says so.
QString deviceHint(const QList<AudioDevice>& devices, bool reachable, const TextLookup& text);

/// What stands below the list of applications: what holds for every capture, or, while none plays,
/// how to get one into the list.
QString appHint(const QList<RunningApp>& apps, bool reachable, const TextLookup& text);

/// What stands in place of a result while there is none: the next step, or, while a run lasts,
/// what is to come.
QString resultHelp(bool backendRuns, bool runLasts, const TextLookup& text);

/// What a notice says to people.
QString noticeText(const AudioNotice& notice, const TextLookup& text);

/// What closing the panel's window does.
enum class CloseAction { Hide, Minimise, EndProgram };

/// With a tray the program stays in reach, so its window just hides. Without one a hidden window
/// would leave a program that nobody sees: it ends, unless something is at work that closing a
/// window must not lose; then the window only becomes small.
CloseAction closeAction(bool trayAvailable, bool somethingRuns);

} // namespace orv
