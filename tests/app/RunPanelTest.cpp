// What the panel shows of a run: its stages, and what interrupts it.

#include "ControlPanel.h"
#include "InterruptionBanner.h"
#include "L10n.h"
#include "ReadingText.h"
#include "RecoveryFixture.h"
#include "RunStages.h"
#include "VmixTracking.h"

#include <QLabel>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

QStringList textsOf(const QWidget& widget) {
    QStringList texts;
    for (const QLabel* label : widget.findChildren<QLabel*>()) {
        if (!label->text().isEmpty()) {
            texts.append(label->text());
        }
    }
    return texts;
}

class InterruptionBannerTest : public RecoveryFixture {
  protected:
    InterruptionBannerTest() {
        banner = new InterruptionBanner(*recovery, l10n, &window);
        window.show();
    }

    QString shown() const { return textsOf(*banner).join(u'|'); }

    QPushButton* button() const { return banner->findChild<QPushButton*>(); }

    L10n l10n{settings.uiLanguage, u"en"_s};
    QWidget window;
    InterruptionBanner* banner = nullptr;
};

TEST_F(InterruptionBannerTest, isThereOnlyWhileTheRunIsInterrupted) {
    startRun();
    EXPECT_FALSE(banner->isVisible());
    breakLink();
    EXPECT_TRUE(banner->isVisible());
    EXPECT_EQ(shown(), u"Translation Interrupted|The connection to the backend is lost."_s);
    EXPECT_EQ(banner->accessibleName(), u"Translation Interrupted"_s);
    EXPECT_EQ(banner->accessibleDescription(), u"The connection to the backend is lost."_s);
    controller.stopTranslation();
    EXPECT_FALSE(banner->isVisible());
}

TEST_F(InterruptionBannerTest, itsButtonContinues) {
    startRun();
    breakLink();
    EXPECT_EQ(button()->text(), u"Continue"_s);
    button()->click();
    EXPECT_EQ(button()->text(), u"Continuing..."_s);
    EXPECT_FALSE(button()->isEnabled());
    listenTo(2);
    EXPECT_TRUE(waitUntil([this] { return !banner->isVisible(); }));
}

TEST_F(InterruptionBannerTest, followsTheLanguage) {
    startRun();
    breakLink();
    settings.uiLanguage.set(u"de"_s);
    EXPECT_EQ(button()->text(), l10n.platformText(u"run.continue"_s));
    EXPECT_NE(button()->text(), u"Continue"_s);
}

class RunStagesTest : public RecoveryFixture {
  protected:
    RunStagesTest() { window.show(); }

    QStringList shown() const {
        QStringList names;
        for (const QLabel* label : stages->findChildren<QLabel*>()) {
            names.append(label->accessibleName());
        }
        return names;
    }

    L10n l10n{settings.uiLanguage, u"en"_s};
    QWidget window;
    RunStages* stages = new RunStages(audio, l10n, &window);
};

TEST_F(RunStagesTest, areThereDuringARun) {
    EXPECT_FALSE(stages->isVisible());
    startRun();
    EXPECT_TRUE(stages->isVisible());
    bool stopped = false;
    audio.stopCapture([&stopped] { stopped = true; });
    EXPECT_FALSE(stages->isVisible());
    EXPECT_TRUE(waitUntil([&] { return stopped; }));
}

TEST_F(RunStagesTest, tellHowFarTheSoundGets) {
    settings.vadEnabled.set(true);
    controller.startTranslation();
    ASSERT_TRUE(waitUntil([this] { return sound.isMicrophoneRunning(); }));
    EXPECT_TRUE(waitUntil([this] {
        return shown() == QStringList{u"Sound: not yet"_s, u"Speech: not yet"_s, u"Sent: not yet"_s,
                                      u"Answer: not yet"_s};
    }));
    ASSERT_TRUE(play());
    EXPECT_TRUE(waitUntil([this] { return shown().first() == u"Sound: now"_s; }));
    EXPECT_TRUE(waitUntil([this] { return shown().at(1) == u"Speech: now"_s; }));
    EXPECT_EQ(shown().at(3), u"Answer: not yet"_s);
    // The link counts as ready after a fixed time, also where it is still on its way.
    ASSERT_TRUE(waitUntil([this] { return !server.messages(u"config"_s).isEmpty(); }));
    server.send(R"({"type":"translation","original":"Hi","translation":"Hola"})");
    EXPECT_TRUE(waitUntil([this] { return shown().at(3) == u"Answer: now"_s; }));
}

TEST_F(RunStagesTest, followTheLanguage) {
    startRun();
    settings.uiLanguage.set(u"de"_s);
    EXPECT_TRUE(shown().first().startsWith(u"Ton: ")) << qPrintable(shown().first());
}

class RunResultTest : public RecoveryFixture {
  protected:
    PanelEnvironment environment() {
        return {.settings = settings,
                .engines = engines,
                .audio = audio,
                .engine = backend,
                .controller = controller,
                .recovery = *recovery,
                .l10n = l10n,
                .vmix = vmix};
    }

    L10n l10n{settings.uiLanguage, u"en"_s};
    VmixTracking vmix{settings};
    ControlPanel panel{environment()};
    ReadingText* texts = panel.findChild<ReadingText*>();
};

TEST_F(RunResultTest, reachesEveryOutputBeforeThePanel) {
    startRun();
    QString shownBefore = u"never"_s;
    QObject::connect(&audio, &AudioManager::resultArrived, &panel,
                     [&] { shownBefore = texts->toPlainText(); });
    server.send(R"({"type":"translation","original":"Hi","translation":"Hola"})");
    ASSERT_TRUE(waitUntil([&] { return texts->toPlainText() == u"Hi\nHola"_s; }));
    EXPECT_EQ(shownBefore, QString());
}

TEST_F(RunResultTest, isThereAtOnceInAPanelThatIsMadeLater) {
    startRun();
    server.send(R"({"type":"translation","original":"Hi","translation":"Hola"})");
    ASSERT_TRUE(waitUntil([this] { return audio.currentTranslation() == u"Hola"_s; }));
    const ControlPanel later(environment());
    EXPECT_EQ(later.findChild<ReadingText*>()->toPlainText(), u"Hi\nHola"_s);
}

} // namespace

} // namespace orv::test
