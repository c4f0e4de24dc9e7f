#include "OverlayWindow.h"

#include "SerialQueue.h"
#include "SpeechSynthesizer.h"
#include "SubtitleLabel.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPixmap>
#include <QStringList>
#include <QTemporaryDir>
#include <QWindow>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class RecordedSpeech : public SpeechSynthesizer {
  public:
    void prepare() override { calls.append(u"prepare"_s); }

    void speak(const QString& text) override { calls.append(u"speak "_s + text); }

    void stop() override { calls.append(u"stop"_s); }

    QStringList calls;
};

class OverlayWindowTest : public ::testing::Test {
  protected:
    OverlayWindowTest() { make(60s); }

    void make(std::chrono::milliseconds hide) {
        window = std::make_unique<OverlayWindow>(
            OverlayEnvironment{.speech = speech,
                               .isComposited = [this] { return composited; },
                               .choices = SubtitleChoices::fromSettings(settings),
                               .timings = {.hide = hide}});
        watchSubtitleChoices(settings, window.get(), [this](const SubtitleChoices& choices) {
            window->setChoices(choices);
        });
    }

    void show(const QString& original, const QString& translation) {
        window->showTranslation({original, translation});
        drainEvents();
    }

    /// The colour that the window shows at a place of its frame.
    QColor colorAt(int x, int y) {
        const int margin = (window->width() - window->frames().window.width()) / 2;
        return window->grab().toImage().pixelColor(margin + x, margin + y);
    }

    /// The darkest there is in a line, 0 to 255.
    int darkestIn(const SubtitleLabel& field) {
        const QImage image = window->grab(field.geometry()).toImage();
        int darkest = 255;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                darkest = std::min(darkest, qGray(image.pixel(x, y)));
            }
        }
        return darkest;
    }

    QString large() const { return window->textField().text(); }

    QString small() const { return window->originalField().text(); }

    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.path() + u"/defaults.json"_s};
    TranslationSettings settings{store};
    RecordedSpeech speech;
    bool composited = true;
    std::unique_ptr<OverlayWindow> window;
};

TEST_F(OverlayWindowTest, isHiddenUntilAResultComes) {
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(window->frames().window.size(), QSize(800, 120));
    show(u"hello"_s, u"hola"_s);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(large(), u"hola"_s);
    EXPECT_TRUE(window->originalField().isHidden());
}

TEST_F(OverlayWindowTest, showsTheSourceTextAboveWhenTheUserWantsIt) {
    settings.showOriginal.set(true);
    show(u"hello"_s, u"hola"_s);
    EXPECT_EQ(small(), u"hello"_s);
    EXPECT_FALSE(window->originalField().isHidden());
    EXPECT_LT(window->originalField().geometry().bottom(), window->textField().geometry().top());
    show(u"okay"_s, u"okay"_s);
    EXPECT_EQ(large(), u"okay"_s);
    EXPECT_EQ(small(), QString());
    EXPECT_TRUE(window->originalField().isHidden());
}

TEST_F(OverlayWindowTest, showsTheSourceTextOfAFailureAndIsSilent) {
    settings.speakTranslation.set(true);
    show(u"hello"_s, u"[Translation Error]"_s);
    EXPECT_EQ(large(), u"hello"_s);
    EXPECT_TRUE(speech.calls.isEmpty());
}

TEST_F(OverlayWindowTest, isWhereItsFramesSay) {
    show(u"hello"_s, u"a sentence that needs more than one line "_s.repeated(5));
    const QMargins shadow(SoftShadow::margin, SoftShadow::margin, SoftShadow::margin,
                          SoftShadow::margin);
    EXPECT_EQ(window->geometry(), window->frames().window.marginsAdded(shadow));
    EXPECT_EQ(window->textField().geometry(),
              window->frames().translation.translated(SoftShadow::margin, SoftShadow::margin));
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    EXPECT_EQ(window->frames().window.bottom() + 1, screen.bottom() + 1 - 80);
    EXPECT_EQ(window->textField().height(), window->textField().subtitle().height());
}

TEST_F(OverlayWindowTest, neverTakesFocusMouseOrAPlaceInTheTaskBar) {
    show(u"hello"_s, u"hola"_s);
    const Qt::WindowFlags flags = window->windowFlags();
    for (const Qt::WindowType flag :
         {Qt::FramelessWindowHint, Qt::WindowStaysOnTopHint, Qt::BypassWindowManagerHint,
          Qt::WindowTransparentForInput, Qt::WindowDoesNotAcceptFocus}) {
        EXPECT_TRUE(flags.testFlag(flag)) << std::hex << flag;
    }
    EXPECT_TRUE(window->testAttribute(Qt::WA_ShowWithoutActivating));
    EXPECT_FALSE(window->testAttribute(Qt::WA_QuitOnClose));
}

TEST_F(OverlayWindowTest, hides6SecondsAfterTheResult) {
    EXPECT_EQ(OverlayTimings().hide, 6s);
    make(1s);
    QElapsedTimer clock;
    clock.start();
    show(u"hello"_s, u"hola"_s);
    ASSERT_TRUE(window->isVisible());
    ASSERT_TRUE(waitUntil([this] { return !window->isVisible(); }));
    EXPECT_GE(clock.elapsed(), 999);
}

TEST_F(OverlayWindowTest, staysUntilItsTimeAfterTheSecondResult) {
    // The second one comes after two thirds of the first one's time.
    make(900ms);
    QElapsedTimer clock;
    clock.start();
    show(u"one"_s, u"uno"_s);
    ASSERT_TRUE(waitUntil([&] { return clock.elapsed() >= 600; }));
    clock.start();
    show(u"two"_s, u"dos"_s);
    ASSERT_TRUE(waitUntil([&] { return !window->isVisible(); }));
    EXPECT_EQ(large(), u"dos"_s);
    EXPECT_GE(clock.elapsed(), 899);
}

TEST_F(OverlayWindowTest, showsAgainAfterHiding) {
    make(1s);
    show(u"one"_s, u"uno"_s);
    ASSERT_TRUE(waitUntil([this] { return !window->isVisible(); }));
    show(u"two"_s, u"dos"_s);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(OverlayWindowTest, speaksTheTranslationWhenTheUserWantsIt) {
    show(u"hello"_s, u"hola"_s);
    EXPECT_TRUE(speech.calls.isEmpty());
    settings.speakTranslation.set(true);
    show(u"hello"_s, u"hola"_s);
    show(u"okay"_s, u"okay"_s);
    EXPECT_EQ(speech.calls, (QStringList{u"speak hola"_s, u"speak okay"_s}));
}

TEST_F(OverlayWindowTest, preparesWhatARunWillNeedAndShowsNothing) {
    window->prepare();
    EXPECT_FALSE(window->isVisible());
    EXPECT_NE(window->windowHandle(), nullptr);
    EXPECT_TRUE(speech.calls.isEmpty());
    settings.speakTranslation.set(true);
    window->prepare();
    EXPECT_EQ(speech.calls, QStringList{u"prepare"_s});
}

TEST_F(OverlayWindowTest, preparesNoWindowThatTheUserDoesNotWant) {
    settings.showOverlay.set(false);
    window->prepare();
    EXPECT_EQ(window->windowHandle(), nullptr);
}

TEST_F(OverlayWindowTest, theEndOfARunHidesAndSilencesAtOnce) {
    make(60s);
    show(u"hello"_s, u"hola"_s);
    window->endSubtitles();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(speech.calls, QStringList{u"stop"_s});
}

TEST_F(OverlayWindowTest, theEndOfARunForgetsAResultOnItsWay) {
    window->showTranslation({u"hello"_s, u"hola"_s});
    window->endSubtitles();
    drainEvents();
    EXPECT_FALSE(window->isVisible());
    show(u"late"_s, u"tarde"_s);
    EXPECT_TRUE(window->isVisible()) << "the last words of a run still come";
}

TEST_F(OverlayWindowTest, theEndOfARunCancelsTheTimer) {
    make(50ms);
    show(u"hello"_s, u"hola"_s);
    window->endSubtitles();
    make(60s);
    show(u"hello"_s, u"hola"_s);
    bool passed = false;
    QTimer::singleShot(100ms, window.get(), [&] { passed = true; });
    ASSERT_TRUE(waitUntil([&] { return passed; }));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(OverlayWindowTest, asAnOutputItTakesResultsWhileTheUserWantsSubtitlesOnTheScreen) {
    Output& output = *window;
    output.take({u"hello"_s, u"hola"_s});
    drainEvents();
    EXPECT_TRUE(window->isVisible()) << "the user has not said no";
    settings.showOverlay.set(false);
    output.take({u"bye"_s, u"adiós"_s});
    drainEvents();
    EXPECT_EQ(large(), u"hola"_s);
    settings.showOverlay.set(true);
    output.take({u"again"_s, u"otra vez"_s});
    drainEvents();
    EXPECT_EQ(large(), u"otra vez"_s);
}

TEST_F(OverlayWindowTest, subtitlesThatAreSwitchedOffGoAtOnceAndComeBack) {
    settings.speakTranslation.set(true);
    show(u"hello"_s, u"hola"_s);
    settings.showOverlay.set(false);
    EXPECT_FALSE(window->isVisible());
    speech.calls.clear();
    settings.showOverlay.set(true);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(large(), u"hola"_s);
    EXPECT_TRUE(speech.calls.isEmpty()) << "it has been spoken already";
}

TEST_F(OverlayWindowTest, subtitlesThatAreSwitchedOnShowWhatCameMeanwhile) {
    Output& output = *window;
    settings.showOverlay.set(false);
    output.take({u"hello"_s, u"hola"_s});
    output.take({u"bye"_s, u"adiós"_s});
    output.take({u" "_s, u" "_s}); // Nothing to read.
    drainEvents();
    EXPECT_FALSE(window->isVisible());
    settings.showOverlay.set(true);
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(large(), u"adiós"_s);
}

TEST_F(OverlayWindowTest, subtitlesThatAreSwitchedOnShowNothingThatWouldBeGone) {
    make(20ms);
    Output& output = *window;
    settings.showOverlay.set(false);
    output.take({u"hello"_s, u"hola"_s});
    bool passed = false;
    QTimer::singleShot(60ms, window.get(), [&] { passed = true; });
    ASSERT_TRUE(waitUntil([&] { return passed; }));
    settings.showOverlay.set(true);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(OverlayWindowTest, aResultThatIsSwitchedOffOnItsWayIsNotShown) {
    window->showTranslation({u"hello"_s, u"hola"_s});
    settings.showOverlay.set(false);
    drainEvents();
    EXPECT_FALSE(window->isVisible());
    settings.showOverlay.set(true);
    EXPECT_TRUE(window->isVisible());
}

TEST_F(OverlayWindowTest, speechThatIsSwitchedOffEnds) {
    settings.speakTranslation.set(true);
    show(u"hello"_s, u"hola"_s);
    speech.calls.clear();
    settings.speakTranslation.set(false);
    EXPECT_EQ(speech.calls, QStringList{u"stop"_s});
    settings.speakTranslation.set(false);
    EXPECT_EQ(speech.calls.size(), 1);
}

TEST_F(OverlayWindowTest, takesResultsFromAnyThread) {
    std::thread other([this] { window->showTranslation({u"hello"_s, u"hola"_s}); });
    other.join();
    EXPECT_FALSE(window->isVisible()) << "the work is the main thread's";
    ASSERT_TRUE(waitUntil([this] { return window->isVisible(); }));
    EXPECT_EQ(large(), u"hola"_s);
}

TEST_F(OverlayWindowTest, showsOnlyTheLatestOfResultsThatComeTooFast) {
    settings.speakTranslation.set(true);
    int painted = 0;
    QObject::connect(window.get(), &OverlayWindow::resultPainted, window.get(), [&] { ++painted; });
    std::thread other([this] {
        for (int i = 0; i < 10'000; ++i) {
            window->showTranslation({u"source"_s, u"result %1"_s.arg(i)});
        }
    });
    other.join();
    ASSERT_TRUE(waitUntil([&] { return painted > 0; }));
    EXPECT_EQ(large(), u"result 9999"_s);
    EXPECT_EQ(speech.calls, QStringList{u"speak result 9999"_s});
    EXPECT_EQ(painted, 1);
}

TEST_F(OverlayWindowTest, aResultOnItsWayToAWindowThatGoesIsHarmless) {
    window->showTranslation({u"hello"_s, u"hola"_s});
    window.reset();
    drainEvents();
}

TEST_F(OverlayWindowTest, aTranslationWithoutAnythingToReadLeavesTheSourceText) {
    settings.showOriginal.set(true);
    for (const QString& blank : {u" "_s, u"\n"_s, u"\u0007"_s}) {
        show(u"hello"_s, u"hola"_s);
        show(u"Hallo"_s, blank);
        EXPECT_EQ(large(), u"Hallo"_s);
        EXPECT_TRUE(window->originalField().isHidden());
    }
}

TEST_F(OverlayWindowTest, aResultWithoutAnythingToReadChangesNothing) {
    settings.speakTranslation.set(true);
    const QList<std::pair<QString, QString>> results = {
        {QString(), QString()},
        {u" "_s, u"\n"_s},
        {u"\u0001"_s, u"\u0007"_s},
        {u" "_s, u"[Translation Error]"_s},
    };
    for (const auto& [original, translation] : results) {
        show(original, translation);
        EXPECT_FALSE(window->isVisible()) << qPrintable(original + u'/' + translation);
    }
    show(u"hello"_s, u"hola"_s);
    for (const auto& [original, translation] : results) {
        show(original, translation);
        EXPECT_EQ(large(), u"hola"_s) << qPrintable(original + u'/' + translation);
    }
    EXPECT_EQ(speech.calls, QStringList{u"speak hola"_s});
}

TEST_F(OverlayWindowTest, aResultWithoutAnythingToReadLeavesTheOneBeforeItsTurn) {
    settings.speakTranslation.set(true);
    window->showTranslation({u"hello"_s, u"hola"_s});
    window->showTranslation({u" "_s, u"\n"_s});
    drainEvents();
    EXPECT_EQ(large(), u"hola"_s);
    EXPECT_EQ(speech.calls, QStringList{u"speak hola"_s});
}

TEST_F(OverlayWindowTest, saysWhenAResultHasBeenPainted) {
    int painted = 0;
    QObject::connect(window.get(), &OverlayWindow::resultPainted, window.get(), [&] { ++painted; });
    show(u"hello"_s, u"hola"_s);
    ASSERT_TRUE(waitUntil([&] { return painted == 1; }));
    window->update();
    drainEvents();
    EXPECT_EQ(painted, 1) << "painting the same again is no news";
}

TEST_F(OverlayWindowTest, hasTheColoursOfTheSettings) {
    settings.overlayOpacity.set(1.0);
    settings.overlayBgColor.set(u"#102030"_s);
    settings.overlayBorderColor.set(u"#FF0000"_s);
    show(u"hello"_s, u"hola"_s);
    EXPECT_EQ(colorAt(100, 8), QColor(0x10, 0x20, 0x30));
    EXPECT_EQ(colorAt(400, 0), QColor(0xFF, 0, 0));
    EXPECT_EQ(colorAt(400, 2), QColor(0xFF, 0, 0));
    EXPECT_EQ(colorAt(400, 3), QColor(0x10, 0x20, 0x30));
}

TEST_F(OverlayWindowTest, changesColoursWhileItIsShown) {
    settings.overlayOpacity.set(1.0);
    show(u"hello"_s, u"hola"_s);
    settings.overlayBgColor.set(u"#123456"_s);
    settings.overlayBorderEnabled.set(false);
    EXPECT_EQ(colorAt(100, 8), QColor(0x12, 0x34, 0x56));
    EXPECT_EQ(colorAt(400, 0), QColor(0x12, 0x34, 0x56));
}

TEST_F(OverlayWindowTest, isAsTranslucentAsTheUserWants) {
    EXPECT_EQ(SubtitleAppearance::fromSettings(settings).background.alpha(), 217);
    show(u"hello"_s, u"hola"_s);
    EXPECT_TRUE(window->testAttribute(Qt::WA_TranslucentBackground));
    EXPECT_EQ(window->palette().color(QPalette::Window), QApplication::palette().window().color());
    EXPECT_TRUE(window->mask().isEmpty());
}

TEST_F(OverlayWindowTest, drawsTheSourceTextFainter) {
    settings.overlayTextColor.set(u"#FF0000"_s);
    const SubtitleAppearance appearance = SubtitleAppearance::fromSettings(settings);
    EXPECT_EQ(appearance.translation, QColor(0xFF, 0, 0));
    QColor fainter(0xFF, 0, 0);
    fainter.setAlphaF(0.7F);
    EXPECT_EQ(appearance.original, fainter);
}

TEST_F(OverlayWindowTest, theLettersOfTheSourceTextLetTheBackgroundThrough) {
    settings.showOriginal.set(true);
    settings.overlayOpacity.set(1.0);
    settings.overlayBgColor.set(u"#FFFFFF"_s);
    settings.overlayTextColor.set(u"#000000"_s);
    // Each one letter that fills pixels whole: neighbours would cover some of them twice.
    show(u"█"_s, u"▇"_s);
    EXPECT_EQ(darkestIn(window->textField()), 0);
    EXPECT_NEAR(darkestIn(window->originalField()), 0.3 * 255, 2);
}

TEST_F(OverlayWindowTest, hasRoundCorners) {
    settings.overlayOpacity.set(1.0);
    settings.overlayBgColor.set(u"#102030"_s);
    settings.overlayBorderEnabled.set(false);
    show(u"hello"_s, u"hola"_s);
    const int right = window->frames().window.width() - 1;
    const int bottom = window->frames().window.height() - 1;
    // From the middle of a corner's circle of 16 it is 17.7 to the first pixel, 14.8 to the second.
    for (const bool atRight : {false, true}) {
        for (const bool atBottom : {false, true}) {
            const auto cornerColor = [&](int inset) {
                return colorAt(atRight ? right - inset : inset, atBottom ? bottom - inset : inset);
            };
            EXPECT_LT(cornerColor(3).alpha(), 128) << "nothing but the shadow";
            EXPECT_EQ(cornerColor(3).blue(), 0);
            EXPECT_EQ(cornerColor(5), QColor(0x10, 0x20, 0x30));
        }
    }
}

TEST_F(OverlayWindowTest, hasTheSameCornersWhereTheDesktopBlendsNothing) {
    composited = false;
    show(u"hello"_s, u"hola"_s);
    EXPECT_FALSE(window->mask().contains(QPoint(3, 3)));
    EXPECT_TRUE(window->mask().contains(QPoint(5, 5)));
}

TEST_F(OverlayWindowTest, isOpaqueAndShapedWhereTheDesktopBlendsNothing) {
    composited = false;
    show(u"hello"_s, u"hola"_s);
    EXPECT_EQ(window->geometry(), window->frames().window);
    EXPECT_EQ(colorAt(100, 8), QColor(0x90, 0xEE, 0x90));
    EXPECT_FALSE(window->mask().contains(QPoint(0, 0)));
    EXPECT_TRUE(window->mask().contains(QPoint(400, 1)));
}

TEST_F(OverlayWindowTest, followsADesktopThatBeginsToBlend) {
    composited = false;
    show(u"hello"_s, u"hola"_s);
    composited = true;
    show(u"hello"_s, u"adiós"_s);
    EXPECT_EQ(window->width(), 800 + 2 * SoftShadow::margin);
    EXPECT_TRUE(window->mask().isEmpty());
}

TEST_F(OverlayWindowTest, tellsAssistiveProgramsItsTexts) {
    settings.showOriginal.set(true);
    show(u"hello <b>&amp; all"_s, u"hola"_s);
    EXPECT_EQ(small(), u"hello <b>&amp; all"_s);
    EXPECT_EQ(window->originalField().textFormat(), Qt::PlainText);
}

} // namespace

} // namespace orv::test
