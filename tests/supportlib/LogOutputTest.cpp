#include "LogOutput.h"
#include "FewFiles.h"
#include "StandardOutput.h"

#include <QByteArray>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <array>
#include <sys/socket.h>

namespace orv {

using test::Pipe;
using State = LogOutput::State;

namespace {

LogOutput::Outcome write(const LogOutput& output, const QByteArray& bytes) {
    return output.write(bytes.constData(), static_cast<std::size_t>(bytes.size()));
}

/// Writes until no more is taken; returns how much was. A terminal's other end moves what it got to
/// a buffer of its own at some later time, so that one full moment is not the last.
std::size_t fill(const LogOutput& output) {
    constexpr std::size_t limit = 4000000;
    const QByteArray bytes(1000000, 'x');
    LogOutput::Outcome outcome = write(output, bytes);
    std::size_t count = outcome.count;
    EXPECT_EQ(outcome.state, State::Full);
    while (count < limit && (outcome = write(output, "more")).count > 0) {
        count += outcome.count;
    }
    EXPECT_EQ(outcome.state, State::Full);
    EXPECT_LT(count, limit);
    return count;
}

} // namespace

TEST(LogOutput, aFullPipeIsNotWaitedFor) {
    const Pipe pipe;
    const LogOutput output(pipe.writer());
    const auto count = static_cast<qsizetype>(fill(output));
    EXPECT_EQ(::fcntl(pipe.writer(), F_GETFL) & O_NONBLOCK, 0) << "it is the others' pipe, too";
    QByteArray bytes(count, Qt::Uninitialized);
    EXPECT_EQ(::read(pipe.reader(), bytes.data(), static_cast<std::size_t>(count)), count);
    EXPECT_EQ(write(output, "again").state, State::Taken);
}

TEST(LogOutput, aFullPipeThatCannotBeOpenedAgainIsNotWaitedForEither) {
    const Pipe pipe;
    const test::FewFiles none(0);
    const LogOutput output(pipe.writer());
    EXPECT_GT(fill(output), 0U);
}

TEST(LogOutput, aFullSocketIsNotWaitedFor) {
    std::array<int, 2> ends = {-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
    const LogOutput output(ends[1]);
    EXPECT_GT(fill(output), 0U);
    ::close(ends[0]);
    EXPECT_EQ(write(output, "nobody").state, State::Gone);
    ::close(ends[1]);
}

TEST(LogOutput, aHeldTerminalIsNotWaitedFor) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master, 0);
    ASSERT_EQ(::grantpt(master), 0);
    ASSERT_EQ(::unlockpt(master), 0);
    const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    const LogOutput output(terminal);
    EXPECT_GT(fill(output), 0U);
    EXPECT_EQ(::fcntl(terminal, F_GETFL) & O_NONBLOCK, 0);
    ::close(terminal);
    ::close(master);
}

TEST(LogOutput, aFileGoesOnWhereOthersHaveWritten) {
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    const LogOutput output(file.handle());
    EXPECT_EQ(write(output, "one ").state, State::Taken);
    EXPECT_EQ(::write(file.handle(), "two ", 4), 4);
    EXPECT_EQ(write(output, "three").state, State::Taken);
    ASSERT_EQ(::lseek(file.handle(), 0, SEEK_SET), 0);
    std::array<char, 32> bytes = {};
    EXPECT_EQ(::read(file.handle(), bytes.data(), bytes.size()), 13);
    EXPECT_STREQ(bytes.data(), "one two three");
}

TEST(LogOutput, aClosedDescriptorIsGone) {
    Pipe pipe;
    const int number = pipe.writer();
    pipe.closeWriter();
    EXPECT_EQ(write(LogOutput(number), "nobody").state, State::Gone);
}

} // namespace orv
