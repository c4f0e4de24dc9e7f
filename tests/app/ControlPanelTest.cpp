#include "ControlPanelFixture.h"
#include "ReadingText.h"
#include "Symbols.h"

#include <QFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

namespace {

class ControlPanelTest : public ControlPanelFixture {};

TEST_F(ControlPanelTest, showsTheBackendsStatusAndTheButtonThatFits) {
    EXPECT_TRUE(shows(text(u"engine.stopped"_s)));
    EXPECT_NE(button(u"main.backend.start"_s), nullptr);
    EXPECT_EQ(button(u"main.backend.stop"_s), nullptr);
    adoptBackend();
    EXPECT_TRUE(shows(text(u"engine.running"_s)));
    EXPECT_NE(button(u"main.backend.stop"_s), nullptr);
    EXPECT_EQ(button(u"main.backend.start"_s), nullptr);
}

TEST_F(ControlPanelTest, theBackendsButtonStartsAndStopsIt) {
    button(u"main.backend.start"_s)->click();
    EXPECT_TRUE(shows(text(u"engine.notinstalled"_s)));
    adoptBackend();
    button(u"main.backend.stop"_s)->click();
    EXPECT_TRUE(shows(text(u"engine.stopping"_s)));
}

TEST_F(ControlPanelTest, showsWhatABackendSaidLastThatDidNotStart) {
    ASSERT_TRUE(QFile::link(u"/bin/sh"_s, folder.filePath(u"python3"_s)));
    QFile script(folder.filePath(u"server.py"_s));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    const QString words = u"No <b>module</b> "_s + QString(200, u'x');
    script.write(u"echo '%1'; exit 3"_s.arg(words).toUtf8());
    script.close();
    const int width = panel.sizeHint().width();
    button(u"main.backend.start"_s)->click();
    EXPECT_TRUE(waitUntil([&] { return shows(u"Last message: "_s + words); }));
    EXPECT_TRUE(shows(text(u"engine.stopped"_s)));
    EXPECT_EQ(panel.sizeHint().width(), width) << "a long word does not widen the panel";
    adoptBackend();
    EXPECT_FALSE(shows(u"Last message: "_s + words));
}

TEST_F(ControlPanelTest, saysBeforeTheStartThatTheEngineLacksTheLanguage) {
    const QString lack = u"Deepgram does not recognize this language.\nChoose another language, or "
                         "another engine in Settings → Engines."_s;
    settings.sttEngine.set(u"deepgram"_s);
    settings.sourceLang.set(u"de"_s);
    EXPECT_FALSE(shows(lack));
    settings.sourceLang.set(u"haw"_s);
    EXPECT_TRUE(shows(lack));
    settings.sttEngine.set(u"whisper"_s);
    EXPECT_FALSE(shows(lack));
}

TEST_F(ControlPanelTest, refusesToStartWithoutABackend) {
    button(u"main.start"_s)->click();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"Backend Not Ready"_s);
    EXPECT_NE(button(u"main.start"_s), nullptr);
}

TEST_F(ControlPanelTest, theMainButtonFollowsTheRun) {
    adoptBackend();
    button(u"main.start"_s)->click();
    EXPECT_TRUE(shows(text(u"status.listening"_s)));
    ASSERT_NE(button(u"main.stop"_s), nullptr);
    EXPECT_EQ(picture(button(u"main.stop"_s)->icon()), picture(symbol(u"stop.circle.fill"_s)));
    button(u"main.stop"_s)->click();
    EXPECT_TRUE(shows(text(u"main.stopping"_s)));
    ASSERT_NE(button(u"main.start"_s), nullptr);
    EXPECT_EQ(picture(button(u"main.start"_s)->icon()), picture(symbol(u"play.circle.fill"_s)));
    capture.finishStops();
    EXPECT_FALSE(shows(text(u"main.stopping"_s)));
}

TEST_F(ControlPanelTest, theEmptyResultNamesTheNextStep) {
    const auto* result = panel.findChild<ReadingText*>();
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.backend"_s));
    adoptBackend();
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.start"_s));
    controller.startTranslation();
    EXPECT_EQ(result->placeholderText(), text(u"panel.result.empty"_s));
    controller.stopTranslation();
    EXPECT_EQ(result->placeholderText(), text(u"panel.result.empty"_s)) << "the end is awaited";
    capture.finishStops();
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.start"_s));
    l10n.setCurrent(UILanguage::French);
    EXPECT_EQ(result->placeholderText(), text(u"panel.help.start"_s));
}

TEST_F(ControlPanelTest, tellsThatItsWindowIsTheOnlyWayInWhileThereIsNoTray) {
    EXPECT_FALSE(shows(text(u"panel.notray"_s)));
    panel.setHasTray(false);
    EXPECT_TRUE(shows(text(u"panel.notray"_s)));
    l10n.setCurrent(UILanguage::Italian);
    EXPECT_TRUE(shows(text(u"panel.notray"_s)));
    panel.setHasTray(true);
    EXPECT_FALSE(shows(text(u"panel.notray"_s)));
}

TEST_F(ControlPanelTest, refusesSingleAppUntilOneIsChosen) {
    adoptBackend();
    button(u"audio.app"_s)->click();
    button(u"main.start"_s)->click();
    ASSERT_EQ(dialogs.alerts.size(), 1);
    EXPECT_EQ(dialogs.alerts[0].title, u"No App Selected"_s);
}

TEST_F(ControlPanelTest, aNoticeStaysUntilItIsClosed) {
    panel.showNotice({AudioNotice::Kind::ServiceAccountMissing, {}});
    EXPECT_TRUE(shows(text(u"notice.serviceaccount.missing"_s)));
    panel.showNotice({AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s});
    EXPECT_FALSE(shows(text(u"notice.serviceaccount.missing"_s)));
    EXPECT_TRUE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
    button(u"alert.ok"_s)->click();
    EXPECT_FALSE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
}

TEST_F(ControlPanelTest, aNoticeFollowsTheLanguageAndStaysClosed) {
    panel.showNotice({AudioNotice::Kind::ApiKeyMissing, u"Deepgram"_s});
    l10n.setCurrent(UILanguage::German);
    EXPECT_TRUE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
    l10n.setCurrent(UILanguage::Spanish);
    ASSERT_NE(button(u"alert.ok"_s), nullptr);
    button(u"alert.ok"_s)->click();
    l10n.setCurrent(UILanguage::English);
    EXPECT_FALSE(shows(text(u"notice.apikey.missing"_s).arg(u"Deepgram"_s)));
}

TEST_F(ControlPanelTest, quitIsThePanelsOwn) {
    button(u"main.quit"_s)->click();
    EXPECT_TRUE(log.contains(u"🛑 Beende App..."_s));
}

TEST_F(ControlPanelTest, theSettingsButtonOpensTheSettings) {
    button(u"main.settings"_s)->click();
    EXPECT_EQ(settingsShown, 1);
}

} // namespace

} // namespace orv::test
