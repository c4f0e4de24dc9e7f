#include "ChildLifeline.h"

#include "SpawnProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/wait.h>
#include <system_error>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// Descriptor 0 tells what shall become of the child and ends with the program; descriptor 3 is the
// child's output. $1: the child's process identifier, $2: the pause in seconds.
const QString watcherScript = uR"(
fate=end
while read -r word; do fate=$word; done
if [ "$fate" = keep ]; then
    exec cat <&3 3<&-
fi
cat <&3 3<&- &
exec 3<&-
kill -s TERM "$1" && sleep "$2" && kill -s INT "$1" && sleep "$2" && kill -s KILL "$1"
kill -s KILL "$!"
)"_s;

QString lastErrorText() {
    return QString::fromStdString(std::system_category().message(errno));
}

} // namespace

ChildLifeline::ChildLifeline(pid_t child, int output, std::chrono::milliseconds pause) {
    std::array<int, 2> ends = {-1, -1};
    // A socket rather than a pipe: writing to it after the watcher's death raises no signal.
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        error_ = lastErrorText();
        return;
    }
    end_.reset(ends[0]);
    const UniqueFd far(ends[1]);
    const UniqueFd nowhere(::open("/dev/null", O_RDWR | O_CLOEXEC));

    ProgramCall call;
    call.program = u"/bin/sh"_s;
    call.arguments = {u"-c"_s, watcherScript, u"orvane-lifeline"_s, QString::number(child),
                      QString::number(std::chrono::duration<double>(pause).count(), 'f', 3)};
    call.environment = {"PATH=/usr/bin:/bin"};
    call.group = child;
    call.descriptors = {far.get(), nowhere.get(), nowhere.get(), output};
    const SpawnedProgram spawned = spawnProgram(call);
    watcher_ = spawned.pid;
    error_ = spawned.error;
}

void ChildLifeline::setMayOutlive(bool may) {
    if (may == mayOutlive_) {
        return;
    }
    const std::string_view word = may ? "keep\n" : "end\n";
    const ssize_t sent = ::send(end_.get(), word.data(), word.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent == static_cast<ssize_t>(word.size())) {
        mayOutlive_ = may;
    }
}

void ChildLifeline::release() {
    if (watcher_ < 0) {
        return;
    }
    ::kill(watcher_, SIGKILL);
    while (::waitpid(watcher_, nullptr, 0) < 0 && errno == EINTR) {
    }
    watcher_ = -1;
}

} // namespace orv
