#include "L10n.h"

#include "LogCapture.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace orv::test {

class L10nTest : public ::testing::Test {
  protected:
    L10nTest() { reopen(); }

    void reopen() {
        l10n_.reset();
        settings_.reset();
        store_.reset();
        store_ = std::make_unique<DefaultsStore>(disk_, home_.filePath(u"defaults.json"_s));
    }

    L10n& make(const QString& systemLanguage) {
        l10n_.reset();
        settings_ = std::make_unique<TranslationSettings>(*store_);
        l10n_ = std::make_unique<L10n>(settings_->uiLanguage, systemLanguage);
        return *l10n_;
    }

    LogCapture log_;
    QTemporaryDir home_;
    SerialQueue disk_{u"test.disk"_s};
    std::unique_ptr<DefaultsStore> store_;
    std::unique_ptr<TranslationSettings> settings_;
    std::unique_ptr<L10n> l10n_;
};

TEST_F(L10nTest, languagesStandInTheirOrderWithCodeAndLabel) {
    QStringList codes;
    QStringList labels;
    for (const UILanguage language : UILanguage::allCases()) {
        codes.append(language.rawValue());
        labels.append(language.label());
    }
    EXPECT_EQ(codes, (QStringList{u"de"_s, u"en"_s, u"es"_s, u"fr"_s, u"it"_s}));
    EXPECT_EQ(labels, (QStringList{u"🇩🇪 Deutsch"_s, u"🇬🇧 English"_s, u"🇪🇸 Español"_s,
                                   u"🇫🇷 Français"_s, u"🇮🇹 Italiano"_s}));
}

TEST_F(L10nTest, onlyExactRawValuesNameALanguage) {
    EXPECT_EQ(UILanguage::fromRawValue(u"fr"_s), UILanguage::French);
    for (const QString& other : {u"pt"_s, u"DE"_s, u"de_DE"_s, u""_s, u" de"_s, u"deu"_s}) {
        EXPECT_FALSE(UILanguage::fromRawValue(other)) << other.toStdString();
    }
}

TEST_F(L10nTest, theStoredLanguageWins) {
    store_->setString(u"uiLanguage"_s, u"it"_s);
    EXPECT_EQ(make(u"de"_s).current(), UILanguage::Italian);
}

TEST_F(L10nTest, withoutAStoredLanguageTheSystemDecides) {
    for (const UILanguage language : UILanguage::allCases()) {
        EXPECT_EQ(make(language.rawValue()).current(), language);
    }
}

TEST_F(L10nTest, aStoredLanguageThatIsNoneOfTheFiveIsIgnored) {
    store_->setString(u"uiLanguage"_s, u"pt"_s);
    EXPECT_EQ(make(u"es"_s).current(), UILanguage::Spanish);
}

TEST_F(L10nTest, aStoredLanguageOfTheWrongTypeIsIgnored) {
    store_->setInteger(u"uiLanguage"_s, 2);
    EXPECT_EQ(make(u"fr"_s).current(), UILanguage::French);
}

TEST_F(L10nTest, aSystemLanguageThatIsNoneOfTheFiveGivesEnglish) {
    EXPECT_EQ(make(u"pt"_s).current(), UILanguage::English);
    EXPECT_EQ(make(QString()).current(), UILanguage::English);
}

TEST_F(L10nTest, theChoiceAtTheStartIsNotWrittenBack) {
    make(u"fr"_s);
    EXPECT_FALSE(store_->contains(u"uiLanguage"_s));
    store_->setString(u"uiLanguage"_s, u"pt"_s);
    make(u"fr"_s);
    EXPECT_EQ(store_->string(u"uiLanguage"_s), u"pt"_s);
}

TEST_F(L10nTest, aChangeIsWrittenAtOnceAndOutlivesAStart) {
    L10n& l10n = make(u"de"_s);
    l10n.setCurrent(UILanguage::Spanish);
    EXPECT_EQ(store_->string(u"uiLanguage"_s), u"es"_s);
    reopen();
    EXPECT_EQ(make(u"de"_s).current(), UILanguage::Spanish);
}

TEST_F(L10nTest, choosingTheCurrentLanguageIsWrittenTooButTellsNobody) {
    L10n& l10n = make(u"de"_s);
    int told = 0;
    QObject::connect(&l10n, &L10n::currentChanged, &l10n, [&] { ++told; });
    l10n.setCurrent(UILanguage::German);
    EXPECT_EQ(store_->string(u"uiLanguage"_s), u"de"_s);
    EXPECT_EQ(told, 0);
}

TEST_F(L10nTest, aChoiceThatIsAssignedElsewhereIsFollowed) {
    const L10n& l10n = make(u"de"_s);
    int told = 0;
    QObject::connect(&l10n, &L10n::currentChanged, &l10n, [&] { ++told; });
    settings_->uiLanguage.set(u"fr"_s);
    EXPECT_EQ(l10n.current(), UILanguage::French);
    settings_->uiLanguage.set(u"fr"_s);
    EXPECT_EQ(told, 1);
    settings_->uiLanguage.set(u"pt"_s);
    EXPECT_EQ(l10n.current(), UILanguage::German) << "the system decides again";
    EXPECT_EQ(store_->string(u"uiLanguage"_s), u"pt"_s);
}

TEST_F(L10nTest, textsFollowTheLanguageWhenTheChangeIsTold) {
    L10n& l10n = make(u"de"_s);
    EXPECT_EQ(l10n.s(u"engine.stopped"_s), u"Backend gestoppt"_s);
    QString shown;
    QObject::connect(&l10n, &L10n::currentChanged, &l10n,
                     [&] { shown = l10n.s(u"engine.stopped"_s); });
    l10n.setCurrent(UILanguage::English);
    EXPECT_EQ(shown, u"Backend stopped"_s);
    EXPECT_EQ(l10n.current(), UILanguage::English);
}

TEST_F(L10nTest, anUnknownKeyIsItsOwnText) {
    const L10n& l10n = make(u"fr"_s);
    EXPECT_EQ(l10n.s(u"main.strat"_s), u"main.strat"_s);
    EXPECT_EQ(l10n.s(QString()), QString());
    EXPECT_EQ(l10n.s(u"main"_s), u"main"_s);
    EXPECT_EQ(l10n.platformText(u"main.strat"_s), u"main.strat"_s);
}

TEST_F(L10nTest, keysAreToldApartByCase) {
    EXPECT_EQ(make(u"de"_s).s(u"Main.Start"_s), u"Main.Start"_s);
}

TEST_F(L10nTest, aTextForThisPlatformIsTakenWhereThereIsOne) {
    const L10n& l10n = make(u"de"_s);
    EXPECT_EQ(l10n.s(u"app.name"_s), u"ORV - Orvane for macOS"_s);
    EXPECT_EQ(l10n.s(u"info.powered"_s), u"Läuft auf Apple Silicon"_s);
#ifdef Q_OS_LINUX
    EXPECT_EQ(l10n.platformText(u"app.name"_s), u"ORV - Orvane for Linux"_s);
    EXPECT_EQ(l10n.platformText(u"info.powered"_s), u"Läuft unter Linux"_s);
#else
    EXPECT_EQ(l10n.platformText(u"app.name"_s), u"ORV - Orvane for macOS"_s);
#endif
    EXPECT_EQ(l10n.platformText(u"main.quit"_s), u"Beenden"_s);
}

TEST_F(L10nTest, theSystemsLocaleNamesItsLanguage) {
    EXPECT_EQ(languageCode(u"de_DE.UTF-8"_s), u"de"_s);
    EXPECT_EQ(languageCode(u"de-DE"_s), u"de"_s);
    EXPECT_EQ(languageCode(u"fr"_s), u"fr"_s);
    EXPECT_EQ(languageCode(u"IT_it@euro"_s), u"it"_s);
    EXPECT_EQ(languageCode(u"pt_BR"_s), u"pt"_s);
}

TEST_F(L10nTest, aLocaleWithoutALanguageGivesEnglish) {
    for (const QString& name : {u""_s, u"C"_s, u"C.UTF-8"_s, u"POSIX"_s, u"_DE"_s}) {
        EXPECT_EQ(languageCode(name), u"en"_s) << name.toStdString();
    }
}

TEST_F(L10nTest, theSystemHasALanguageCode) {
    EXPECT_EQ(languageCode(systemLanguageCode()), systemLanguageCode());
}

TEST_F(L10nTest, sharedIsTheOneThereIs) {
    TranslationSettings settings(*store_);
    const L10n italian(settings.uiLanguage, u"it"_s);
    EXPECT_EQ(&L10n::shared(), &italian);
    EXPECT_EQ(L10n::shared().current(), UILanguage::Italian);
}

} // namespace orv::test
