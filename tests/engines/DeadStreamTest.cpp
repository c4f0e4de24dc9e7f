// Streams whose other end is gone without a word. A frozen process still has its system confirm
// what comes; what a network that is gone does is for the tests of the whole program.

#include "DeepgramSession.h"
#include "TrustedCertificate.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {
namespace {

/// More than the system's buffers hold, at both ends.
const QByteArray much = block(1, 16'000'000);

/// Nothing is to be translated, so that nobody misses a key for it.
CloudEngineConfig untranslated() {
    CloudEngineConfig same = config;
    same.targetLang = same.sourceLang;
    return same;
}

/// A stream behind TLS to a service that is frozen, and to which much is being sent.
struct FrozenStream {
    FrozenStream() {
        finish(session.engine->connect(untranslated()));
        isOpen = session.waitForOpen();
        session.service.freeze();
        sending = start(session.engine->sendAudio(much));
    }

    DeepgramSession session{{u"--tls"_s}, {.streamStall = 2s, .ping = 1h}, u"wss"_s};
    const TrustedCertificate trusted{session.service.certificate()};
    bool isOpen = false;
    std::shared_ptr<Outcome> sending;
};

TEST(DeadStream, isMissedBehindTlsToo) {
    FrozenStream stream;
    ASSERT_TRUE(stream.isOpen);
    ASSERT_TRUE(waitUntil([&] { return stream.sending->done; }));
    EXPECT_EQ(stream.sending->error, u"Zeitüberschreitung"_s);
    ASSERT_TRUE(stream.session.waitForEnd());
    const auto& faults = stream.session.reports.faults;
    ASSERT_EQ(faults.size(), 1);
    EXPECT_EQ(faults.first().kind, ServiceFault::Kind::TimedOut);
}

TEST(DeadStream, isNotMissedWhileItTakesSomething) {
    FrozenStream stream;
    ASSERT_TRUE(stream.isOpen);
    stream.session.service.thaw();
    ASSERT_TRUE(waitUntil([&] { return stream.sending->done; }));
    EXPECT_FALSE(stream.sending->error);
    finish(stream.session.engine->disconnect());
    EXPECT_TRUE(stream.session.reports.faults.isEmpty());
}

TEST(DeadStream, isMissedByItsPingsWhenThereIsNothingToTake) {
    DeepgramSession session({u"--key"_s, u"SECRET"_s}, {.streamStall = 2s, .ping = 10ms});
    finish(session.engine->connect(untranslated()));
    ASSERT_TRUE(session.waitForOpen());
    // The last round begins behind a ping, and ends behind its answer: both ways keep the order.
    QElapsedTimer watch;
    watch.start();
    int round = 0;
    for (bool isLast = false; !isLast; ++round) {
        isLast = watch.elapsed() > 100;
        finish(session.engine->sendAudio(block(1)));
        ASSERT_TRUE(waitUntil([&] { return session.service.count(u"audio"_s) == round + 1; }));
        session.service.send(deepgramResult(u"Satz"_s));
        ASSERT_TRUE(waitUntil([&] { return session.reports.results.size() == round + 1; }));
    }
    session.service.freeze();
    ASSERT_TRUE(session.waitForEnd());
    ASSERT_EQ(session.reports.faults.size(), 1);
    EXPECT_EQ(session.reports.faults.first().kind, ServiceFault::Kind::TimedOut);
}

} // namespace
} // namespace orv::test
