// The tab of the engines, beyond showing and storing values.

#include "ControlProbe.h"
#include "DeepgramMessages.h"
#include "EngineCatalogue.h"
#include "ServicePeer.h"
#include "SettingsWindowFixture.h"
#include "ToneLabel.h"
#include "TranslationMessages.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

using EnginesTabTest = SettingsWindowFixture;

TEST_F(EnginesTabTest, theChosenEngineIsExplainedAndAskedForWhatItNeeds) {
    showTab(1);
    for (const EngineDescriptor& engine : engines.engines()) {
        settings.sttEngine.set(engine.id);
        EXPECT_TRUE(shows(engineInfoText(engines, engine.id))) << qPrintable(engine.id);
        const auto isAsked = [this](const QString& name) { return control(name)->isVisible(); };
        EXPECT_EQ(isAsked(u"Deepgram: API Key"_s), engine.id == u"deepgram");
        EXPECT_EQ(isAsked(u"AssemblyAI: API Key"_s), engine.id == u"assemblyai");
        EXPECT_EQ(isAsked(u"Google Cloud (REST): API Key"_s), engine.id == u"google_rest");
        EXPECT_EQ(isAsked(u"Google Cloud (gRPC streaming): Location"_s),
                  engine.id == u"google_grpc");
        EXPECT_EQ(isAsked(u"Microsoft Azure: Region"_s), engine.id == u"azure");
        EXPECT_EQ(isAsked(u"Vosk: Port"_s), engine.id == u"vosk");
    }
}

TEST_F(EnginesTabTest, theExplanationStaysGermanInEveryLanguage) {
    showTab(1);
    for (const UILanguage language : UILanguage::allCases()) {
        l10n.setCurrent(language);
        EXPECT_TRUE(shows(engineInfoText(engines, u"whisper"_s)));
    }
}

TEST_F(EnginesTabTest, anUnknownEngineIsNotReplacedByLooking) {
    settings.sttEngine.set(u"later"_s);
    open();
    EXPECT_EQ(settings.sttEngine.get(), u"later"_s);
    EXPECT_EQ(shownByControl(*control(u"Speech Recognition Engine"_s)), u"empty"_s);
}

TEST_F(EnginesTabTest, keysAreDotsUntilTheyAreRevealed) {
    showTab(1);
    settings.sttEngine.set(u"azure"_s);
    auto* key = control<QLineEdit>(u"Microsoft Azure: API Key"_s);
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
    press(u"Microsoft Azure: Show API Key"_s);
    EXPECT_EQ(key->echoMode(), QLineEdit::Normal);
    window->close();
    EXPECT_EQ(key->echoMode(), QLineEdit::Password);
}

TEST_F(EnginesTabTest, googlesKeyIsOneSettingWhereverItIsAsked) {
    typeInto(*control(u"AssemblyAI: Google Translate: API Key"_s), u"abc"_s);
    EXPECT_EQ(settings.googleApiKey.get(), u"abc"_s);
    for (const QString& name :
         {u"Deepgram: Google Translate: API Key"_s, u"Google Cloud (REST): API Key"_s,
          u"Google Cloud (gRPC streaming): Google Translate: API Key"_s}) {
        EXPECT_EQ(shownByControl(*control(name)), u"abc"_s);
    }
}

TEST_F(EnginesTabTest, aRegionThatIsNotInTheListStaysChosen) {
    settings.azureRegion.set(u"moonbase1"_s);
    EXPECT_EQ(shownByControl(*control(u"Microsoft Azure: Region"_s)), u"moonbase1"_s);
    settings.azureRegion.set(u"westeurope"_s);
    EXPECT_EQ(shownByControl(*control(u"Microsoft Azure: Region"_s)), u"westeurope"_s);
}

struct KeyTrialTest : EnginesTabTest {
    KeyTrialTest() {
        endpoints = {{deepgramHost, service.url(u"ws"_s)},
                     {translationHost, u"http://127.0.0.1:1"_s}};
        settings.sttEngine.set(u"deepgram"_s);
        showTab(1);
    }

    QPushButton* button() const { return control<QPushButton>(u"Deepgram: Test Key"_s); }

    bool says(const QString& line) {
        return waitUntil([&] { return shows(line); });
    }

    /// Whether a text comes to show that begins so.
    bool saysFrom(const QString& start) {
        return waitUntil([&] {
            const auto labels = window->findChildren<ToneLabel*>();
            return std::ranges::any_of(labels, [&](const ToneLabel* label) {
                return label->isVisible() && label->text().startsWith(start);
            });
        });
    }

    ServicePeer service{u"cloud_service.py"_s,
                        {u"tests.cloud_services.deepgram"_s, u"--key"_s, u"right"_s}};
};

TEST_F(KeyTrialTest, needsAKey) {
    EXPECT_FALSE(button()->isEnabled());
    settings.deepgramApiKey.set(u"right"_s);
    EXPECT_TRUE(button()->isEnabled());
}

TEST_F(KeyTrialTest, tellsThatAKeyWorksUntilItIsAnother) {
    settings.deepgramApiKey.set(u"right"_s);
    press(u"Deepgram: Test Key"_s);
    EXPECT_TRUE(says(u"Deepgram accepts the key."_s));
    settings.deepgramApiKey.set(u"wrong"_s);
    EXPECT_FALSE(shows(u"Deepgram accepts the key."_s));
}

TEST_F(KeyTrialTest, tellsInTheWindowsLanguageWhyAKeyDoesNotWork) {
    settings.deepgramApiKey.set(u"wrong"_s);
    press(u"Deepgram: Test Key"_s);
    EXPECT_TRUE(saysFrom(u"Deepgram refuses the key\n"_s));
    l10n.setCurrent(UILanguage::German);
    EXPECT_TRUE(saysFrom(u"Deepgram nimmt den Schlüssel nicht an\n"_s));
}

TEST_F(KeyTrialTest, canBeTriedAgainAndWaitsForNoAnswerToAnOldQuestion) {
    service.freeze();
    settings.deepgramApiKey.set(u"wrong"_s);
    press(u"Deepgram: Test Key"_s);
    EXPECT_FALSE(button()->isEnabled());
    EXPECT_EQ(button()->text(), u"Testing..."_s);
    settings.deepgramApiKey.set(u"right"_s);
    EXPECT_TRUE(button()->isEnabled());
    service.thaw();
    press(u"Deepgram: Test Key"_s);
    EXPECT_TRUE(says(u"Deepgram accepts the key."_s));
}

TEST_F(KeyTrialTest, theKeyForTranslationIsTriedByItself) {
    settings.googleApiKey.set(u"abc"_s);
    press(u"Deepgram: Google Translate: Test Key"_s);
    EXPECT_TRUE(saysFrom(u"Google Translate cannot be reached\n"_s));
}

TEST_F(EnginesTabTest, saysWhereTheSoundGoes) {
    showTab(1);
    for (const EngineDescriptor& engine : engines.engines()) {
        settings.sttEngine.set(engine.id);
        const bool isNear = engine.id == u"whisper" || engine.id == u"vosk";
        EXPECT_EQ(engine.soundGoesTo.isEmpty(), isNear) << qPrintable(engine.id);
        EXPECT_EQ(shows(text(u"settings.engine.leaves"_s).arg(engine.soundGoesTo)), !isNear);
    }
}

} // namespace

} // namespace orv::test
