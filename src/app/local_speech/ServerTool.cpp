#include "ServerTool.h"

#include "Post.h"
#include "SpawnProgram.h"
#include "ThreadChecks.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr qsizetype mostPrinted = 1 << 20;

} // namespace

ServerTool::ServerTool(const LocalSpeechEnvironment& environment, QObject* parent)
    : QObject(parent)
    , environment_(environment) {}

ServerTool::~ServerTool() {
    if (process_) {
        process_->terminate();
        process_->waitForEnd(environment_.pause);
    }
}

void ServerTool::run(const QString& program, const QStringList& arguments) {
    ORV_ON_MAIN();
    printed_.clear();
    const QByteArray cache = QFile::encodeName(QFileInfo(environment_.whisperCache).path());
    ChildProcess::Handlers handlers;
    handlers.output = [this, target = reader_.handle()](const QByteArray& bytes) {
        target.post([this, bytes] {
            if (printed_.size() < mostPrinted) {
                printed_ += bytes;
            }
        });
    };
    handlers.finished = [this](int status) { finish(status); };
    ChildProcess::Launch launch = ChildProcess::start(
        {.program = environment_.interpreter,
         .arguments = QStringList{environment_.folder + u'/' + program} + arguments,
         .environment = environmentWith(ownEnvironment(), "XDG_CACHE_HOME", cache)},
        this, std::move(handlers), environment_.pause);
    process_ = std::move(launch.process);
    if (!process_) {
        // Not before whoever has called is done.
        post(this, [this, error = launch.error] { Q_EMIT ended(-1, error.toUtf8()); });
    }
}

void ServerTool::finish(int status) {
    ORV_ON_MAIN();
    process_.reset();
    Q_EMIT ended(status, std::exchange(printed_, {}));
}

} // namespace orv
