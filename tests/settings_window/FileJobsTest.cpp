#include "FileJobs.h"

#include "WaitUntil.h"

#include <QThread>

#include <gtest/gtest.h>

#include <future>
#include <optional>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

TEST(FileJobs, worksOnTheQueueAndAnswersOnItsOwnThread) {
    SerialQueue disk(u"test.disk"_s);
    FileJobs files(disk);
    std::optional<bool> wasOnQueue;
    QThread* answered = nullptr;
    files.run([&disk] { return disk.isCurrent(); },
              [&](bool onQueue) {
                  wasOnQueue = onQueue;
                  answered = QThread::currentThread();
              });
    ASSERT_TRUE(waitUntil([&] { return wasOnQueue.has_value(); }));
    EXPECT_TRUE(*wasOnQueue);
    EXPECT_EQ(answered, QThread::currentThread());
}

TEST(FileJobs, goesWithoutWaitingForItsWorkAndAnswersNobodyThen) {
    SerialQueue disk(u"test.disk"_s);
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    bool isAnswered = false;
    {
        FileJobs files(disk);
        files.run(
            [released] {
                released.wait(); // Hangs if the end of `files` waits.
                return 0;
            },
            [&](int) { isAnswered = true; });
    }
    release.set_value();
    disk.sync([] {});
    drainEvents();
    EXPECT_FALSE(isAnswered);
}

} // namespace

} // namespace orv::test
