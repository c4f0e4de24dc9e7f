#include "Application.h"

#include "DesktopAppearance.h"
#include "DisplayPlatform.h"
#include "FontPreparation.h"
#include "Log.h"
#include "LogWriter.h"
#include "Look.h"
#include "SessionEnd.h"
#include "Shell.h"
#include "SingleInstance.h"
#include "StallWatch.h"
#include "Symbols.h"
#include "TerminationSignals.h"
#include "UserPaths.h"

#include <QApplication>
#include <QFile>
#include <QIcon>

#include <chrono>
#include <csignal>
#include <new>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// The life of the user's only running program.
int runFirst(int argc, char** argv, const ProgramParts& parts, const UserPaths& paths,
             SingleInstance& instance) {
    std::optional<DisplayPlatform> platform(std::in_place);
    QApplication application(argc, argv);
    platform.reset();
    QApplication::setApplicationName(u"orvane"_s);
    QApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));
    const auto appearance = createDesktopAppearance();
    const Look look(*appearance);
    QApplication::setWindowIcon(appPicture());
    // The program lives in the tray; closing its windows never ends it by itself.
    QApplication::setQuitOnLastWindowClosed(false);

    // `exit` rather than `quit`: the latter asks the windows, and the panel's may refuse to close.
    const auto terminate = [] { QApplication::exit(0); };
    // Outlives the shell, so that a signal in the midst of its end does not cut that short.
    const TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::requested, &application, terminate);
    Shell shell(paths, parts, terminate);
    const SessionEnd sessionEnd;
    QObject::connect(&sessionEnd, &SessionEnd::requested, &application, terminate);
    shell.launch();
#ifdef ORVANE_STALL_WATCH
    const StallWatch stallWatch(std::chrono::milliseconds(50), logStall);
#endif
    instance.answerWith([&shell] { return shell.showPanel(); });
    // Once the icon is there: the panel's first opening is the next to need them.
    const FontPreparation fonts;
    const int status = QApplication::exec();
    instance.answerWith([] { return false; });
    shell.finish();
    return status;
}

} // namespace

int runApplication(int argc, char** argv, const ProgramParts& parts) {
    // A peer or a reader of the log that has gone must not end the program.
    std::signal(SIGPIPE, SIG_IGN);
    const UserPaths paths = UserPaths::fromEnvironment();
    SingleInstance instance(paths.runtime,
                            QFile::encodeName(paths.home + u'\n' + paths.defaultsFile()));
    switch (instance.claim()) {
    case SingleInstance::Claim::First:
        break;
    case SingleInstance::Claim::Shown:
        return 0;
    case SingleInstance::Claim::NoAnswer:
        logLine(u"⚠️ Orvane läuft bereits, antwortet aber nicht");
        return 1;
    }
    const LogWriter logWriter;
    if (!paths.homeHasName) {
        logLine(u"❌ Der Name des Benutzerordners ist kein UTF-8: Einstellungen und Transkripte "
                "können nicht gespeichert werden");
    }
    try {
        return runFirst(argc, argv, parts, paths, instance);
    } catch (const std::bad_alloc&) {
        // What is kept has been written by those who went meanwhile.
        logLine(u"❌ Zu wenig Arbeitsspeicher, Orvane endet");
        return 1;
    }
}

} // namespace orv
