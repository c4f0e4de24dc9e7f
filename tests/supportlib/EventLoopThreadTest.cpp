#include "EventLoopThread.h"
#include "WaitUntil.h"

#include <QSocketNotifier>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/eventfd.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv {

TEST(Post, runsWorkLaterInTheOrderOfPosting) {
    QObject context;
    std::vector<int> order;
    for (int job = 0; job < 100; ++job) {
        post(&context, [&order, job] { order.push_back(job); });
    }
    EXPECT_TRUE(order.empty());
    test::drainEvents();
    ASSERT_EQ(order.size(), 100U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(Post, doesNothingOnceTheContextIsGone) {
    bool ran = false;
    {
        QObject context;
        post(&context, [&] { ran = true; });
    }
    test::drainEvents();
    EXPECT_FALSE(ran);
}

TEST(Post, carriesWorkThatCanOnlyBeMoved) {
    QObject context;
    int seen = 0;
    post(&context, [value = std::make_unique<int>(7), &seen] { seen = *value; });
    test::drainEvents();
    EXPECT_EQ(seen, 7);
}

TEST(Post, handsDataFromOneThreadToAnother) {
    QObject context;
    const auto mainThread = std::this_thread::get_id();
    std::vector<int> received;
    std::thread poster([&] {
        for (int value = 0; value < 500; ++value) {
            post(&context, [&received, mainThread, data = std::vector<int>(100, value)] {
                EXPECT_EQ(std::this_thread::get_id(), mainThread);
                received.push_back(data.back());
            });
        }
    });
    EXPECT_TRUE(test::waitUntil([&] { return received.size() == 500; }));
    poster.join();
    EXPECT_TRUE(std::is_sorted(received.begin(), received.end()));
}

TEST(EventLoopThread, runsWorkOnItsThreadInTheOrderOfPosting) {
    std::vector<int> order;
    {
        EventLoopThread thread(u"test"_s);
        for (int job = 0; job < 1000; ++job) {
            thread.post([&, job] {
                EXPECT_TRUE(thread.isCurrent());
                order.push_back(job);
            });
        }
        EXPECT_FALSE(thread.isCurrent());
    }
    EXPECT_EQ(order.size(), 1000U) << "destroying it runs what was posted";
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(EventLoopThread, destroysWorkOnItsThread) {
    const auto mainThread = std::this_thread::get_id();
    std::atomic<int> wrongThread = 0;
    {
        EventLoopThread thread(u"test"_s);
        for (int job = 0; job < 2000; ++job) {
            thread.post([mine = std::unique_ptr<int, std::function<void(int*)>>(
                             new int(job), [&](int* value) {
                                 wrongThread += std::this_thread::get_id() == mainThread ? 1 : 0;
                                 delete value;
                             })] { EXPECT_GE(*mine, 0); });
        }
    }
    EXPECT_EQ(wrongThread, 0);
}

TEST(EventLoopThread, syncWaits) {
    EventLoopThread thread(u"test"_s);
    int value = 0;
    for (int round = 1; round <= 200; ++round) {
        thread.post([&] { ++value; });
        int seen = 0;
        thread.sync([&] { seen = value; });
        ASSERT_EQ(seen, round);
    }
}

TEST(EventLoopThread, hasAnEventLoopForTimers) {
    EventLoopThread thread(u"test"_s);
    std::unique_ptr<QTimer> timer;
    std::promise<void> ticked;
    thread.post([&] {
        timer = std::make_unique<QTimer>();
        timer->setSingleShot(true);
        QObject::connect(timer.get(), &QTimer::timeout, timer.get(), [&] { ticked.set_value(); });
        timer->start(1ms);
    });
    EXPECT_EQ(ticked.get_future().wait_for(20s), std::future_status::ready);
    thread.sync([&] { timer.reset(); });
}

TEST(EventLoopThread, isGoneWithWhatItsLibrariesCleanUpLast) {
    // As libraries in C keep what belongs to a thread: cleaned up after everything that Qt does.
    // Many rounds, since a thread that is not waited for can be fast enough by chance.
    static std::atomic<int> cleanedUp = 0;
    pthread_key_t key = {};
    ASSERT_EQ(pthread_key_create(&key, [](void*) { ++cleanedUp; }), 0);
    for (int round = 1; round <= 1000; ++round) {
        {
            EventLoopThread thread(u"test"_s);
            thread.post([&] { pthread_setspecific(key, &key); });
        }
        ASSERT_EQ(cleanedUp, round);
    }
    pthread_key_delete(key);
}

TEST(EventLoopThread, itsEndDestroysTheContextsChildrenOnIt) {
    std::vector<std::thread::id> destroyedOn;
    std::thread::id own;
    {
        EventLoopThread thread(u"test"_s);
        thread.post([&] {
            own = std::this_thread::get_id();
            auto* child = new QObject(thread.context());
            QObject::connect(child, &QObject::destroyed, child, [&] {
                destroyedOn.push_back(std::this_thread::get_id());
                thread.post([] { ADD_FAILURE() << "ran after the end"; });
            });
            QObject::connect(thread.context(), &QObject::destroyed, child,
                             [] { ADD_FAILURE() << "the context went first"; });
        });
    }
    EXPECT_EQ(destroyedOn, std::vector{own});
}

TEST(EventLoopThread, itsEndDestroysWhatIsToBeDeletedLaterBeforeTheContext) {
    // Something is always there to read, so that the loop has work also in the turn that ends it.
    const int readable = eventfd(1, EFD_CLOEXEC);
    ASSERT_GE(readable, 0);
    int made = 0;
    int destroyedInTime = 0;
    for (int round = 1; round <= 100; ++round) {
        bool contextIsThere = true;
        {
            EventLoopThread thread(u"test"_s);
            thread.sync([&] {
                QObject::connect(thread.context(), &QObject::destroyed, thread.context(),
                                 [&] { contextIsThere = false; });
                auto* notifier =
                    new QSocketNotifier(readable, QSocketNotifier::Read, thread.context());
                QObject::connect(notifier, &QSocketNotifier::activated, notifier, [&] {
                    auto* deferred = new QObject;
                    ++made;
                    QObject::connect(deferred, &QObject::destroyed, deferred,
                                     [&] { destroyedInTime += contextIsThere ? 1 : 0; });
                    deferred->deleteLater();
                });
            });
        }
        ASSERT_EQ(destroyedInTime, made) << "round " << round;
    }
    close(readable);
    EXPECT_GT(made, 0);
}

TEST(EventLoopThread, namesItsThreadByTheLabelsEnd) {
    EventLoopThread thread(u"io.tavrin.orv.overlayserver"_s);
    std::array<char, 16> name = {};
    thread.sync([&] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
    EXPECT_EQ(std::string(name.data()), "v.overlayserver");
}

} // namespace orv
