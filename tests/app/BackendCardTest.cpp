// What the panel shows of the speech server's word, and where.

#include "BackendCard.h"
#include "ControlPanel.h"
#include "ElidedLabel.h"
#include "L10n.h"
#include "ReadingText.h"
#include "RecoveryFixture.h"
#include "VmixTracking.h"

#include <QLabel>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

constexpr auto nobody =
    R"({"type":"status","status":"error","message":"❌ Keine Spracherkennung",)"
    R"("code":"engine.none_for_language","parameters":{"language":"de","reason":"x"},)"
    R"("recognition":[{"code":"recognition.language_unknown",)"
    R"("parameters":{"engine":"PocketSphinx","language":"de"}}]})";
constexpr auto serving = R"({"type":"status","status":"engine","message":"🎙",)"
                         R"("code":"engine.serving",)"
                         R"("parameters":{"recogniser":"Vosk","translator":"mistral"}})";
constexpr auto servingUntranslated =
    R"({"type":"status","status":"engine","message":"🎙","code":"engine.serving",)"
    R"("parameters":{"recogniser":"Vosk","translator":""},)"
    R"("translation":[{"code":"translation.package",)"
    R"("parameters":{"source":"en","target":"it","packages":"apertium-en-it"}}]})";

class BackendCardTest : public RecoveryFixture {
  protected:
    BackendCardTest() { panel.show(); }

    bool shows(const QString& text) const { return label(text) != nullptr; }

    QLabel* label(const QString& text) const {
        for (QLabel* candidate : card->findChildren<QLabel*>()) {
            if (candidate->isVisible() && candidate->accessibleName() == text) {
                return candidate;
            }
        }
        return nullptr;
    }

    bool comesToShow(const QString& text) {
        return waitUntil([&] { return shows(text); });
    }

    bool goes() {
        return waitUntil([this] { return !card->isVisible(); });
    }

    /// What the header says, below the program's name.
    QString headline() const { return panel.findChild<ElidedLabel*>()->text(); }

    L10n l10n{settings.uiLanguage, u"en"_s};
    VmixTracking vmix{settings};
    ControlPanel panel{{.settings = settings,
                        .engines = engines,
                        .audio = audio,
                        .engine = backend,
                        .controller = controller,
                        .recovery = *recovery,
                        .l10n = l10n,
                        .vmix = vmix}};
    BackendCard* card = panel.findChild<BackendCard*>();
    const QString unheard = u"No speech recognition for “Deutsch”"_s;
};

TEST_F(BackendCardTest, isNotThereWhileAllIsWell) {
    startRun();
    server.send(serving);
    EXPECT_TRUE(
        waitUntil([this] { return headline() == u"Active - Listening... · Vosk → mistral"_s; }));
    EXPECT_FALSE(card->isVisible());
}

TEST_F(BackendCardTest, saysAnErrorInFullBelowTheHeadline) {
    startRun();
    server.send(nobody);
    ASSERT_TRUE(comesToShow(unheard));
    EXPECT_TRUE(shows(u"PocketSphinx does not understand “Deutsch”.\nSet up Whisper in Settings → "
                      "Whisper, or name a recognizer of your own in recognisers.toml."_s));
    EXPECT_EQ(card->accessibleName(), unheard);
    EXPECT_EQ(headline(), unheard);
    // Nowhere a third time.
    EXPECT_FALSE(panel.findChild<ReadingText*>()->toPlainText().contains(unheard));
}

TEST_F(BackendCardTest, goesWhenTheServerSaysThatItIsOver) {
    startRun();
    server.send(nobody);
    ASSERT_TRUE(comesToShow(unheard));
    server.send(R"({"type":"status","status":"engine_loading","message":"x"})");
    ASSERT_TRUE(waitUntil([this] { return !audio.hasEngineError(); }));
    EXPECT_TRUE(shows(unheard)) << "it is only tried again";
    server.send(serving);
    EXPECT_TRUE(goes());
}

TEST_F(BackendCardTest, goesWithTheRun) {
    startRun();
    server.send(servingUntranslated);
    ASSERT_TRUE(comesToShow(u"Apertium can translate from English to Italiano"_s));
    EXPECT_TRUE(shows(u"Install it in a terminal: sudo apt install apertium-en-it"_s));
    controller.stopTranslation();
    EXPECT_TRUE(goes());
}

TEST_F(BackendCardTest, leavesAnErrorThatOutlastsTheRunToTheResult) {
    startRun();
    server.send(nobody);
    ASSERT_TRUE(comesToShow(unheard));
    controller.stopTranslation();
    EXPECT_TRUE(goes());
    EXPECT_TRUE(waitUntil([this] {
        return headline() == unheard &&
               panel.findChild<ReadingText*>()->toPlainText().contains(unheard);
    }));
}

TEST_F(BackendCardTest, goesWithTheLink) {
    startRun();
    server.send(servingUntranslated);
    ASSERT_TRUE(waitUntil([this] { return card->isVisible(); }));
    breakLink();
    EXPECT_TRUE(goes()) << "nobody knows what holds";
}

TEST_F(BackendCardTest, followsTheLanguage) {
    startRun();
    server.send(nobody);
    ASSERT_TRUE(comesToShow(unheard));
    settings.uiLanguage.set(u"de"_s);
    EXPECT_TRUE(shows(u"Keine Spracherkennung für „Deutsch“"_s));
    EXPECT_FALSE(shows(unheard));
    EXPECT_EQ(headline(), u"Keine Spracherkennung für „Deutsch“"_s);
}

TEST_F(BackendCardTest, showsAnOlderServersWordsAsTheyCame) {
    startRun();
    server.send(R"({"type":"status","status":"warning","message":"⚠️ Vosk antwortet nicht"})");
    EXPECT_TRUE(comesToShow(u"⚠️ Vosk antwortet nicht"_s));
}

TEST_F(BackendCardTest, breaksEveryLineThatIsTooLong) {
    startRun();
    const int width = panel.minimumSizeHint().width();
    server.send(QByteArray(R"({"type":"status","status":"warning","message":"m","code":)"
                           R"("recognition.near_file","parameters":{"path":"/)") +
                QByteArray(250, 'x') + R"(","reason":"no such file"}})");
    const QString whole = u"/"_s + QString(250, u'x') + u": no such file"_s;
    ASSERT_TRUE(comesToShow(whole));
    EXPECT_EQ(panel.minimumSizeHint().width(), width);
    // A label is as tall as its lines need, and its longest word fits into one of them.
    const QLabel* text = label(whole);
    ASSERT_TRUE(waitUntil([&] { return text->height() >= text->heightForWidth(text->width()); }));
    EXPECT_LE(text->minimumSizeHint().width(), text->width());
    EXPECT_LE(text->mapTo(&panel, text->rect().bottomRight()).x(), panel.width());
}

TEST_F(BackendCardTest, takesNoFocusAndIsNoStopOfTheTabKey) {
    startRun();
    const QWidget* focused = panel.focusWidget();
    server.send(nobody);
    ASSERT_TRUE(comesToShow(unheard));
    EXPECT_EQ(panel.focusWidget(), focused);
    for (const QWidget* child : card->findChildren<QWidget*>()) {
        EXPECT_EQ(child->focusPolicy() & Qt::TabFocus, 0);
    }
}

} // namespace

} // namespace orv::test
