#include "VmixTracking.h"

#include "LogCapture.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class VmixTrackingTest : public ::testing::Test {
  protected:
    VmixTrackingTest() {
        QObject::connect(&tracking, &VmixTracking::vmixShowWarningBannerChanged, &tracking,
                         [this](bool shown) { announced.append(shown); });
    }

    bool bannerIsShown() const { return tracking.failures().vmixShowWarningBanner; }

    void fail(int times) {
        for (int i = 0; i < times; ++i) {
            tracking.trackVmixFailure();
        }
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    QDateTime now = QDateTime::fromSecsSinceEpoch(1'700'000'000, QTimeZone::utc());
    VmixTracking tracking{settings, [this] { return now; }};
    QList<bool> announced; ///< What was said of the banner.
};

TEST_F(VmixTrackingTest, beginsWithoutFailuresAndWithTheRealNumbers) {
    const VmixFailures& failures = tracking.failures();
    EXPECT_EQ(failures.vmixFailureCount, 0);
    EXPECT_FALSE(failures.vmixSuppressedUntil);
    EXPECT_FALSE(failures.vmixShowWarningBanner);
    EXPECT_EQ(failures.vmixFailureThreshold, 3);
    EXPECT_EQ(failures.vmixSuppressDuration, 30min);
}

TEST_F(VmixTrackingTest, goesByTheThresholdAndTheSnoozeItIsGiven) {
    VmixTracking other(settings, [this] { return now; },
                       {.vmixFailureThreshold = 1, .vmixSuppressDuration = 5s});
    other.trackVmixFailure();
    EXPECT_TRUE(other.failures().vmixShowWarningBanner);
    other.vmixBannerSnooze();
    EXPECT_EQ(other.failures().vmixSuppressedUntil, now.addSecs(5));
}

TEST_F(VmixTrackingTest, theThirdFailureShowsTheBanner) {
    fail(2);
    EXPECT_FALSE(bannerIsShown());
    fail(1);
    EXPECT_TRUE(bannerIsShown());
    EXPECT_EQ(tracking.failures().vmixFailureCount, 3);
}

TEST_F(VmixTrackingTest, aSuccessInBetweenStartsTheCountAgain) {
    fail(2);
    tracking.trackVmixSuccess();
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
    fail(2);
    EXPECT_FALSE(bannerIsShown());
}

TEST_F(VmixTrackingTest, aSuccessHidesTheBanner) {
    fail(4);
    tracking.trackVmixSuccess();
    EXPECT_FALSE(bannerIsShown());
    EXPECT_EQ(announced, (QList<bool>{true, false}));
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

TEST_F(VmixTrackingTest, aSuccessAfterASuccessPublishesNothing) {
    tracking.trackVmixSuccess();
    EXPECT_TRUE(announced.isEmpty());
}

TEST_F(VmixTrackingTest, furtherFailuresDoNotShowItAgain) {
    fail(3);
    fail(5);
    EXPECT_EQ(announced, QList<bool>{true});
    EXPECT_EQ(tracking.failures().vmixFailureCount, 8);
}

TEST_F(VmixTrackingTest, withWarningsOffItCountsButShowsNothing) {
    settings.vmixShowConnectionWarnings.set(false);
    fail(5);
    EXPECT_EQ(tracking.failures().vmixFailureCount, 5);
    EXPECT_FALSE(bannerIsShown());
    settings.vmixShowConnectionWarnings.set(true);
    fail(1);
    EXPECT_TRUE(bannerIsShown());
}

TEST_F(VmixTrackingTest, laterHidesItForHalfAnHour) {
    fail(3);
    tracking.vmixBannerSnooze();
    EXPECT_FALSE(bannerIsShown());
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
    EXPECT_EQ(tracking.failures().vmixSuppressedUntil, now.addSecs(1800));
    now = now.addSecs(1799);
    fail(5);
    EXPECT_FALSE(bannerIsShown());
    EXPECT_EQ(tracking.failures().vmixFailureCount, 5) << "failures count while it is silent";
    now = now.addSecs(1);
    fail(1);
    EXPECT_TRUE(bannerIsShown()) << "the moment itself does not lie in the future";
}

TEST_F(VmixTrackingTest, afterTheSnoozeThreeFailuresAreNeededAgain) {
    fail(3);
    tracking.vmixBannerSnooze();
    now = now.addSecs(3600);
    fail(2);
    EXPECT_FALSE(bannerIsShown());
    fail(1);
    EXPECT_TRUE(bannerIsShown());
}

TEST_F(VmixTrackingTest, disablingSwitchesTheOutputOffAndForgetsEverything) {
    settings.vmixEnabled.set(true);
    tracking.vmixBannerSnooze();
    now = now.addSecs(1800);
    fail(3);
    tracking.disableVmix();
    EXPECT_FALSE(settings.vmixEnabled.get());
    EXPECT_EQ(store.boolean(u"vmixEnabled"_s), false);
    EXPECT_TRUE(settings.vmixShowConnectionWarnings.get());
    EXPECT_FALSE(bannerIsShown());
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
    EXPECT_FALSE(tracking.failures().vmixSuppressedUntil);
}

TEST_F(VmixTrackingTest, turningWarningsOffLeavesTheOutputOn) {
    settings.vmixEnabled.set(true);
    tracking.vmixBannerSnooze();
    now = now.addSecs(1800);
    fail(3);
    tracking.turnOffWarnings();
    EXPECT_TRUE(settings.vmixEnabled.get());
    EXPECT_FALSE(settings.vmixShowConnectionWarnings.get());
    EXPECT_EQ(store.boolean(u"vmixShowConnectionWarnings"_s), false);
    EXPECT_FALSE(bannerIsShown());
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
    EXPECT_FALSE(tracking.failures().vmixSuppressedUntil);
}

TEST_F(VmixTrackingTest, theBannerIsNotPersisted) {
    fail(3);
    EXPECT_FALSE(store.contains(u"vmixShowWarningBanner"_s));
    EXPECT_FALSE(store.contains(u"vmixFailureCount"_s));
}

TEST_F(VmixTrackingTest, aCountThatDoesNotFitEndsTheProgram) {
    VmixTracking full(settings, &QDateTime::currentDateTimeUtc,
                      {.vmixFailureCount = std::numeric_limits<std::int64_t>::max()});
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(full.trackVmixFailure(), "does not fit");
}

} // namespace

} // namespace orv::test
