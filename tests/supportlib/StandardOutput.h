#pragma once

#include <QByteArray>

#include <array>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include <gtest/gtest.h>

namespace orv::test {

/// Puts a descriptor in the place of standard output while it lives.
class StandardOutput {
  public:
    explicit StandardOutput(int replacement)
        : saved_(::dup(STDOUT_FILENO)) {
        ::dup2(replacement, STDOUT_FILENO);
    }

    ~StandardOutput() {
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
    }

    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

  private:
    int saved_;
};

/// A pipe of which the test holds both ends, so that it can stop reading.
class Pipe {
  public:
    explicit Pipe(int flags = 0) { EXPECT_EQ(::pipe2(ends_.data(), flags), 0); }

    ~Pipe() {
        closeReader();
        closeWriter();
    }

    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return ends_[0]; }

    int writer() const { return ends_[1]; }

    void closeReader() { close(ends_[0]); }

    void closeWriter() { close(ends_[1]); }

    /// What comes until the writing ends are closed, or until `end` has come.
    QByteArray read(const QByteArray& end = {}) const {
        QByteArray all;
        std::array<char, 4096> piece = {};
        while (end.isEmpty() || !all.endsWith(end)) {
            const ssize_t count = ::read(reader(), piece.data(), piece.size());
            if (count <= 0) {
                break;
            }
            all.append(piece.data(), static_cast<qsizetype>(count));
        }
        return all;
    }

  private:
    static void close(int& end) {
        if (end >= 0) {
            ::close(std::exchange(end, -1));
        }
    }

    std::array<int, 2> ends_ = {-1, -1};
};

} // namespace orv::test
