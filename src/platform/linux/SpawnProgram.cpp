#include "SpawnProgram.h"

#include "UniqueFd.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace orv {

namespace {

/// Null-terminated array of C strings, as exec takes it.
class StringVector {
  public:
    explicit StringVector(QList<QByteArray> strings)
        : strings_(std::move(strings)) {
        for (QByteArray& string : strings_) {
            pointers_.push_back(string.data());
        }
        pointers_.push_back(nullptr);
    }

    char* const* data() const { return pointers_.data(); }

  private:
    QList<QByteArray> strings_;
    std::vector<char*> pointers_;
};

StringVector argumentVector(const ProgramCall& call) {
    QList<QByteArray> strings = {QFile::encodeName(call.program)};
    for (const QString& argument : call.arguments) {
        strings.append(QFile::encodeName(argument));
    }
    return StringVector(std::move(strings));
}

class FileActions {
  public:
    FileActions() { posix_spawn_file_actions_init(&actions_); }

    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }

    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;

    /// Returns 0 or an error number.
    int hand(const std::vector<int>& descriptors) {
        const int count = static_cast<int>(descriptors.size());
        for (int target = 0; target < count; ++target) {
            // A copy above all targets can't be overwritten before its own turn.
            UniqueFd& copy = copies_.emplace_back(
                ::fcntl(descriptors[static_cast<std::size_t>(target)], F_DUPFD_CLOEXEC, count));
            if (!copy.isOpen()) {
                return errno;
            }
            const int error = posix_spawn_file_actions_adddup2(&actions_, copy.get(), target);
            if (error != 0) {
                return error;
            }
        }
        return posix_spawn_file_actions_addclosefrom_np(&actions_, count);
    }

    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_ = {};
    std::vector<UniqueFd> copies_;
};

class SpawnAttributes {
  public:
    explicit SpawnAttributes(pid_t group) {
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF |
                                                   POSIX_SPAWN_SETSIGMASK);
        posix_spawnattr_setpgroup(&attributes_, group);
        sigset_t signals = {};
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
    }

    ~SpawnAttributes() { posix_spawnattr_destroy(&attributes_); }

    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_ = {};
};

} // namespace

QList<QByteArray> ownEnvironment() {
    QList<QByteArray> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        entries.append(QByteArray(*entry));
    }
    return entries;
}

QList<QByteArray> environmentWith(QList<QByteArray> environment, const QByteArray& name,
                                  const QByteArray& value) {
    const QByteArray start = name + '=';
    environment.removeIf([&](const QByteArray& entry) { return entry.startsWith(start); });
    environment.append(start + value);
    return environment;
}

SpawnedProgram spawnProgram(const ProgramCall& call) {
    const StringVector arguments = argumentVector(call);
    const StringVector environment(call.environment);
    const SpawnAttributes attributes(call.group);
    FileActions actions;
    SpawnedProgram spawned;
    int error = actions.hand(call.descriptors);
    if (error == 0) {
        error = ::posix_spawn(&spawned.pid, arguments.data()[0], actions.get(), attributes.get(),
                              arguments.data(), environment.data());
    }
    if (error != 0) {
        spawned.pid = -1;
        spawned.error = QString::fromStdString(std::system_category().message(error));
    }
    return spawned;
}

} // namespace orv
