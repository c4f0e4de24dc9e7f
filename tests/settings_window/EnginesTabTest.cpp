// The tab of the engines, beyond showing and storing values.

#include "ControlProbe.h"
#include "EngineCatalogue.h"
#include "SettingsWindowFixture.h"

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

} // namespace

} // namespace orv::test
