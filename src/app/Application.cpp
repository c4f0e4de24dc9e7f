#include "Application.h"

#include "DesktopAppearance.h"
#include "DisplayPlatform.h"
#include "Look.h"
#include "Shell.h"
#include "Symbols.h"
#include "TerminationSignals.h"
#include "UserPaths.h"

#include <QApplication>
#include <QIcon>

#include <csignal>

using namespace Qt::StringLiterals;

namespace orv {

int runApplication(int argc, char** argv, const ServiceAddresses& addresses) {
    // A log whose reader has gone must not end the program.
    std::signal(SIGPIPE, SIG_IGN);
    chooseDisplayPlatform();
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"orvane"_s);
    QApplication::setApplicationVersion(QStringLiteral(ORVANE_VERSION));
    const auto appearance = createDesktopAppearance();
    const Look look(*appearance);
    QApplication::setWindowIcon(appPicture());
    // The program lives in the tray; closing its windows never ends it by itself.
    QApplication::setQuitOnLastWindowClosed(false);

    // `exit` rather than `quit`: the latter asks the windows, and the panel's may refuse to close.
    const auto terminate = [] { QApplication::exit(0); };
    Shell shell(UserPaths::fromEnvironment(), addresses, terminate);
    const TerminationSignals signals(terminate);
    shell.launch();
    const int status = QApplication::exec();
    shell.finish();
    return status;
}

} // namespace orv
