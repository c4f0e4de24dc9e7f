#include "BackendTexts.h"

#include "L10n.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {
namespace {

TextLookup in(UILanguage language) {
    return [language](const QString& key) {
        return L10n::strings().at(language).text(key).value_or(key);
    };
}

const TextLookup english = in(UILanguage::English);

StatusMessage told(const QString& status, const BackendNotice& notice) {
    return {.status = status, .message = u"as it came"_s, .version = {}, .notice = notice};
}

BackendNotice unknownLanguage(const QString& code) {
    return {u"recognition.language_unknown"_s,
            {{u"engine"_s, u"PocketSphinx"_s}, {u"language"_s, code}}};
}

QStringList summaries(const QList<BackendText>& texts) {
    QStringList found;
    for (const BackendText& text : texts) {
        found.append(text.summary);
    }
    return found;
}

TEST(BackendText, callsALanguageByItsOwnName) {
    const auto said = [](const QString& code) {
        return backendText(unknownLanguage(code), english)->summary;
    };
    EXPECT_EQ(said(u"de"_s), u"PocketSphinx does not understand “Deutsch”"_s);
    EXPECT_EQ(said(u"zh-tw"_s), u"PocketSphinx does not understand “中文”"_s);
    EXPECT_EQ(said(u"tlh"_s), u"PocketSphinx does not understand “tlh”"_s);
}

TEST(BackendText, isOfTheWindowsLanguage) {
    EXPECT_EQ(backendText(unknownLanguage(u"en"_s), in(UILanguage::German))->summary,
              u"PocketSphinx versteht „English“ nicht"_s);
}

TEST(BackendText, partsWhatIsTheMatterFromWhatToDo) {
    const BackendNotice missing{u"recognition.model_missing"_s,
                                {{u"engine"_s, u"Whisper"_s}, {u"model"_s, u"small"_s}}};
    EXPECT_EQ(backendText(missing, english),
              (BackendText{u"Whisper: the model “small” is not on this computer"_s,
                           u"Download it in Settings → Whisper."_s}));
}

TEST(BackendText, saysHowToInstallWhatCanBeInstalled) {
    const auto detail = [](const QString& engine) {
        return backendText({u"recognition.not_installed"_s, {{u"engine"_s, engine}}}, english)
            ->detail;
    };
    EXPECT_EQ(detail(u"Whisper"_s), u"Install it in Settings → Whisper."_s);
    EXPECT_EQ(detail(u"PocketSphinx"_s), QString());
}

TEST(BackendText, leavesBracesAndLineBreaksOfAServiceAlone) {
    const BackendNotice failed{u"recognition.failed"_s,
                               {{u"engine"_s, u"{reason}"_s}, {u"reason"_s, u"{\n{engine}"_s}}};
    EXPECT_EQ(backendText(failed, english), (BackendText{u"{reason}: { {engine}"_s}));
}

TEST(BackendText, cutsWhatAServiceSaysAtLength) {
    const BackendNotice failed{u"recognition.failed"_s,
                               {{u"engine"_s, u"X"_s}, {u"reason"_s, QString(100'000, u'x')}}};
    EXPECT_LT(backendText(failed, english)->summary.size(), 400);
}

TEST(BackendText, isTheMessageWhereTheCodeIsOfNoUse) {
    for (const BackendNotice& notice :
         {BackendNotice(), BackendNotice{u"no.such"_s, {}},
          BackendNotice{u"recognition.language_unknown"_s, {{u"engine"_s, u"X"_s}}}}) {
        EXPECT_EQ(backendText(notice, english), std::nullopt);
        EXPECT_EQ(backendText(told(u"warning"_s, notice), english), (BackendText{u"as it came"_s}));
    }
}

TEST(BackendText, saysWhoServesInOneLine) {
    const auto said = [](const QMap<QString, QString>& parameters) {
        return backendText(told(u"engine"_s, {u"engine.serving"_s, parameters}), english).summary;
    };
    EXPECT_EQ(said({{u"recogniser"_s, u"Whisper (base)"_s}, {u"translator"_s, u"mistral"_s}}),
              u"Whisper (base) → mistral"_s);
    EXPECT_EQ(said({{u"recogniser"_s, u"Whisper (base)"_s}, {u"translator"_s, QString()}}),
              u"Whisper (base)"_s);
    EXPECT_EQ(said({{u"translator"_s, u"mistral"_s}}), u"as it came"_s);
}

TEST(BackendText, saysWhyNobodyRecognises) {
    StatusMessage nobody =
        told(u"error"_s, {u"engine.none_for_language"_s,
                          {{u"language"_s, u"de"_s}, {u"reason"_s, u"auf Deutsch"_s}}});
    const QString advice =
        u"Set up Whisper in Settings → Whisper, or name a recognizer of your own "
        "in recognisers.toml."_s;
    EXPECT_EQ(backendText(nobody, english),
              (BackendText{u"No speech recognition for “Deutsch”"_s, u"auf Deutsch\n"_s + advice}));
    nobody.recognition = {{u"recognition.not_installed"_s, {{u"engine"_s, u"Whisper"_s}}},
                          {u"no.such"_s, {}},
                          unknownLanguage(u"de"_s)};
    EXPECT_EQ(backendText(nobody, english).detail,
              u"Whisper is not installed. PocketSphinx does not understand “Deutsch”.\n"_s +
                  advice);
}

class BackendConcerns : public testing::Test {
  protected:
    QStringList concerns(const QString& source = u"de"_s) const {
        return summaries(backendConcerns(news, source, english));
    }

    void serve(const QList<BackendNotice>& recognition,
               const QList<BackendNotice>& translation = {}, const QString& recogniser = u"A"_s) {
        StatusMessage serving =
            told(u"engine"_s, {u"engine.serving"_s, {{u"recogniser"_s, recogniser}}});
        serving.recognition = recognition;
        serving.translation = translation;
        news.take(serving);
    }

    BackendNews news;
};

TEST_F(BackendConcerns, areTheDisturbancesAndWhatIsToldOfWhoServes) {
    EXPECT_EQ(concerns(), QStringList());
    serve({unknownLanguage(u"de"_s)}, {{u"translation.no_target"_s, {}}});
    news.take(told(u"overloaded"_s, {u"session.behind"_s, {{u"seconds"_s, u"7"_s}}}));
    EXPECT_EQ(concerns(), (QStringList{u"Recognition cannot keep up: 7 s of speech left out"_s,
                                       u"PocketSphinx does not understand “Deutsch”"_s,
                                       u"No target language is chosen"_s}));
    serve({});
    EXPECT_EQ(concerns(), QStringList());
}

TEST_F(BackendConcerns, sayNothingTwice) {
    serve({unknownLanguage(u"de"_s)});
    news.take(told(u"warning"_s, unknownLanguage(u"de"_s)));
    EXPECT_EQ(concerns().size(), 1);
}

TEST_F(BackendConcerns, nameASilentServerOnce) {
    const auto silent = [](const QString& address) {
        return BackendNotice{u"translation.silent"_s,
                             {{u"translator"_s, u"T"_s}, {u"address"_s, address}}};
    };
    const BackendNotice nobody{
        u"translation.none"_s,
        {{u"source"_s, u"en"_s}, {u"target"_s, u"ja"_s}, {u"address"_s, u"here"_s}}};
    serve({}, {silent(u"here"_s), silent(u"there"_s), nobody});
    EXPECT_EQ(concerns(),
              (QStringList{u"T does not answer"_s, u"No translation from English to 日本語"_s}));
    serve({}, {silent(u"here"_s)});
    EXPECT_EQ(concerns(), QStringList{u"T does not answer"_s});
}

TEST_F(BackendConcerns, areNotWhatIsWellAsItIs) {
    serve({{u"recognition.near_serves"_s, {{u"engine"_s, u"A"_s}, {u"address"_s, u"b"_s}}}},
          {{u"translation.by_client"_s, {}},
           {u"translation.awaits_language"_s, {}},
           {u"translation.same"_s, {}},
           {u"translation.loading"_s, {{u"translator"_s, u"T"_s}}}});
    EXPECT_EQ(concerns(), QStringList());
    news.take(told(u"warning"_s, {u"translation.loading"_s, {{u"translator"_s, u"T"_s}}}));
    EXPECT_EQ(concerns(), QStringList{u"T is still loading"_s}) << "it failed for that";
}

TEST_F(BackendConcerns, sayThatOnlyEnglishIsUnderstoodWhereThatMatters) {
    serve({{u"recognition.only_english"_s, {}}});
    EXPECT_EQ(concerns(u"en"_s), QStringList());
    EXPECT_EQ(concerns(u"auto"_s), QStringList{u"Recognition understands English only"_s});
}

TEST_F(BackendConcerns, nameOtherRecognisersOnlyWhereTheOneThatIsAlwaysThereServes) {
    const BackendNotice found{u"recognition.near_found"_s, {{u"engine"_s, u"B"_s}}};
    serve({found});
    EXPECT_EQ(concerns(), QStringList());
    serve({found}, {}, u"PocketSphinx"_s);
    EXPECT_EQ(concerns(), QStringList{u"B runs on this computer"_s});
}

TEST_F(BackendConcerns, showTheWholeMessageOnceForWhatIsNotKnown) {
    serve({{u"no.such"_s, {}}, {u"nor.this"_s, {}}});
    EXPECT_EQ(concerns(), QStringList{u"as it came"_s});
}

TEST(WithBreaks, lengthensOnlyWordsThatAreTooLongForALine) {
    EXPECT_EQ(withBreaks(u"short words stay"_s), u"short words stay"_s);
    const QString path = u"/home/somebody/"_s + QString(200, u'x');
    const QString broken = withBreaks(path);
    EXPECT_NE(broken, path);
    EXPECT_EQ(QString(broken).remove(QChar(0x200B)), path);
    for (const QString& part : broken.split(QChar(0x200B))) {
        EXPECT_LE(part.size(), 40);
    }
}

TEST(WithBreaks, tearsNoCharacterApart) {
    const QString emoji = u"🎙"_s.repeated(100);
    for (const QString& part : withBreaks(emoji).split(QChar(0x200B))) {
        EXPECT_EQ(part.size() % 2, 0);
    }
}

} // namespace
} // namespace orv
