// A program with a supervisor and nothing else, for tests that kill it. The argument says whether
// the backend may stay: "keep" or "end". Letters on standard input: "e", it may no longer stay;
// "s", stop it.

#include "Dialogs.h"
#include "Log.h"
#include "NullPortProbe.h"
#include "TranslationEngine.h"
#include "UserPaths.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class NoDialogs : public orv::Dialogs {
  public:
    void showAlert(const orv::Alert& /*alert*/, std::function<void(int)> /*done*/) override {}
};

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QString mode = QCoreApplication::arguments().value(1);
    const auto paths = orv::UserPaths::fromEnvironment();
    bool mayOutlive = mode == u"keep";
    orv::NullPortProbe probe;
    NoDialogs dialogs;
    orv::TranslationEngine engine({.interpreter = paths.backendInterpreter(),
                                   .script = paths.backendScript(),
                                   .probe = probe,
                                   .dialogs = dialogs,
                                   .text = [](const QString& key) { return key; },
                                   .networkAccess = [] { return false; },
                                   .mayOutlive = [&] { return mayOutlive; },
                                   .timings = {.stopPause = 200ms}});
    QSocketNotifier commands(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&commands, &QSocketNotifier::activated, &application, [&] {
        char command = 0;
        if (::read(STDIN_FILENO, &command, 1) != 1) {
            return;
        }
        if (command == 'e') {
            mayOutlive = false;
            engine.refreshMayOutlive();
        } else if (command == 's') {
            engine.stopBackend();
        }
        orv::logLine(u"driver has obeyed");
    });
    engine.startBackend();
    return QCoreApplication::exec();
}
