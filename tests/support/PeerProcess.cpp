#include "PeerProcess.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace orv::test {

PeerProcess::PeerProcess(const QStringList& arguments) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    // A socket rather than a pipe: writing to a script that has gone must not raise SIGPIPE.
    EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input.data()), 0);
    EXPECT_EQ(::pipe2(output.data(), O_CLOEXEC), 0);
    input_ = input[1];
    output_ = output[0];
    ::fcntl(input_, F_SETFL, O_NONBLOCK);
    ::fcntl(output_, F_SETFL, O_NONBLOCK);

    QList<QByteArray> words{"/usr/bin/python3"};
    for (const QString& argument : arguments) {
        words.append(argument.toUtf8());
    }
    std::vector<char*> argv;
    for (QByteArray& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    EXPECT_EQ(posix_spawn(&process_, argv[0], &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    ::close(input[0]);
    ::close(output[1]);
    readable_ = std::make_unique<QSocketNotifier>(output_, QSocketNotifier::Read);
    QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(),
                     [this] { drain(); });
}

PeerProcess::~PeerProcess() {
    readable_.reset();
    ::close(input_);
    ::close(output_);
    if (process_ > 0) {
        ::waitpid(process_, nullptr, 0);
    }
}

QList<QByteArray> PeerProcess::readLines() {
    drain();
    QList<QByteArray> lines;
    qsizetype start = 0;
    qsizetype end = 0;
    while ((end = unread_.indexOf('\n', start)) >= 0) {
        lines.append(unread_.mid(start, end - start));
        start = end + 1;
    }
    unread_.remove(0, start);
    return lines;
}

void PeerProcess::writeLine(const QByteArray& line) {
    const QByteArray bytes = line + '\n';
    qsizetype position = 0;
    while (position < bytes.size()) {
        const ssize_t sent =
            ::send(input_, bytes.constData() + position,
                   static_cast<std::size_t>(bytes.size() - position), MSG_NOSIGNAL);
        if (sent >= 0) {
            position += sent;
            continue;
        }
        if (errno != EAGAIN && errno != EINTR) {
            return; // The script has gone.
        }
        std::array<pollfd, 2> waiting{{{.fd = input_, .events = POLLOUT, .revents = 0},
                                       {.fd = output_, .events = POLLIN, .revents = 0}}};
        ::poll(waiting.data(), waiting.size(), -1);
        drain();
    }
}

void PeerProcess::signal(int number) const {
    if (process_ > 0) {
        ::kill(process_, number);
    }
}

void PeerProcess::drain() {
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    while ((count = ::read(output_, buffer.data(), buffer.size())) > 0) {
        unread_.append(buffer.data(), count);
    }
    if (count == 0) {
        readable_->setEnabled(false); // The script has ended.
    }
}

} // namespace orv::test
