#include "VMixWarningBanner.h"

#include "DefaultsStore.h"
#include "L10n.h"
#include "LogCapture.h"
#include "SerialQueue.h"
#include "Theme.h"
#include "TranslationSettings.h"
#include "VmixTracking.h"

#include <QAccessible>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class VMixWarningBannerTest : public ::testing::Test {
  protected:
    VMixWarningBannerTest() { window.show(); }

    QPushButton* button(const QString& text) {
        for (QPushButton* candidate : banner->findChildren<QPushButton*>()) {
            if (candidate->text() == text) {
                return candidate;
            }
        }
        return nullptr;
    }

    QStringList texts() {
        QStringList found;
        for (const QLabel* label : banner->findChildren<QLabel*>()) {
            if (!label->text().isEmpty()) {
                found.append(label->text());
            }
        }
        return found;
    }

    void raiseBanner() {
        for (int i = 0; i < 3; ++i) {
            tracking.trackVmixFailure();
        }
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.path() + u"/defaults.json"_s};
    TranslationSettings settings{store};
    L10n l10n{settings.uiLanguage, u"en"_s};
    QDateTime now = QDateTime::fromSecsSinceEpoch(1'700'000'000, QTimeZone::utc());
    VmixTracking tracking{settings, [this] { return now; }};
    QWidget window;
    VMixWarningBanner* banner = new VMixWarningBanner(tracking, l10n, &window);
};

TEST_F(VMixWarningBannerTest, isThereOnlyWhileTheTrackingSaysSo) {
    EXPECT_FALSE(banner->isVisible());
    raiseBanner();
    EXPECT_TRUE(banner->isVisible());
    tracking.trackVmixSuccess();
    EXPECT_FALSE(banner->isVisible());
}

TEST_F(VMixWarningBannerTest, isThereFromTheStartWhenItIsMadeLate) {
    raiseBanner();
    const auto* late = new VMixWarningBanner(tracking, l10n, &window);
    EXPECT_FALSE(late->isHidden());
}

TEST_F(VMixWarningBannerTest, saysWhatIsWrong) {
    EXPECT_EQ(texts(), (QStringList{u"vMix not reachable"_s,
                                    u"Translations are not being sent to vMix. The vMix host is "
                                    "unreachable."_s}));
    EXPECT_NE(button(u"Disable vMix"_s), nullptr);
    EXPECT_NE(button(u"Later"_s), nullptr);
    EXPECT_NE(button(u"Turn off warnings"_s), nullptr);
}

TEST_F(VMixWarningBannerTest, hasATriangleInTheColourOfWhatIsWrong) {
    raiseBanner();
    const QImage picture = banner->grab().toImage();
    const QRgb wrong = themeOf(*banner).error.rgb();
    int dots = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            dots += picture.pixel(x, y) == wrong ? 1 : 0;
        }
    }
    EXPECT_GT(dots, 20);
}

TEST_F(VMixWarningBannerTest, followsTheLanguage) {
    l10n.setCurrent(UILanguage::German);
    EXPECT_EQ(texts().first(), u"vMix nicht erreichbar"_s);
    EXPECT_NE(button(u"vMix deaktivieren"_s), nullptr);
    EXPECT_NE(button(u"Später"_s), nullptr);
    EXPECT_NE(button(u"Warnung aus"_s), nullptr);
    EXPECT_EQ(banner->accessibleName(), u"vMix nicht erreichbar"_s);
}

TEST_F(VMixWarningBannerTest, assistiveProgramsReadItsTextsAndButtons) {
    raiseBanner();
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(banner);
    EXPECT_EQ(interface->text(QAccessible::Name), u"vMix not reachable"_s);
    EXPECT_EQ(interface->text(QAccessible::Description),
              u"Translations are not being sent to vMix. The vMix host is unreachable."_s);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(button(u"Later"_s))->text(QAccessible::Name),
              u"Later"_s);
}

TEST_F(VMixWarningBannerTest, disableSwitchesTheOutputOff) {
    settings.vmixEnabled.set(true);
    raiseBanner();
    button(u"Disable vMix"_s)->click();
    EXPECT_FALSE(settings.vmixEnabled.get());
    EXPECT_FALSE(banner->isVisible());
    EXPECT_EQ(tracking.failures().vmixFailureCount, 0);
}

TEST_F(VMixWarningBannerTest, laterSnoozes) {
    settings.vmixEnabled.set(true);
    raiseBanner();
    button(u"Later"_s)->click();
    EXPECT_FALSE(banner->isVisible());
    EXPECT_TRUE(settings.vmixEnabled.get());
    EXPECT_EQ(tracking.failures().vmixSuppressedUntil, now.addSecs(1800));
}

TEST_F(VMixWarningBannerTest, turningWarningsOffKeepsTheOutput) {
    settings.vmixEnabled.set(true);
    raiseBanner();
    button(u"Turn off warnings"_s)->click();
    EXPECT_FALSE(banner->isVisible());
    EXPECT_TRUE(settings.vmixEnabled.get());
    EXPECT_FALSE(settings.vmixShowConnectionWarnings.get());
    raiseBanner();
    EXPECT_FALSE(banner->isVisible());
}

} // namespace

} // namespace orv::test
