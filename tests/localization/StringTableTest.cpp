// The table files: complete, alike in shape in every language, and exact where a text is given.

#include "StringTable.h"

#include "L10n.h"

#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

const StringTable& table(UILanguage language) {
    return L10n::strings().at(language);
}

QString text(UILanguage language, const QString& key) {
    return table(language).text(key).value_or(u"(missing)"_s);
}

/// Every match of `pattern` in `text`, in order.
QStringList matches(const QString& text, const QRegularExpression& pattern) {
    QStringList found;
    auto match = pattern.globalMatch(text);
    while (match.hasNext()) {
        found.append(match.next().captured());
    }
    return found;
}

/// Calls `check(key, english, other, language)` for every text and its English counterpart.
template <typename Check>
void compareWithEnglish(const Check& check) {
    for (const UILanguage language : UILanguage::allCases()) {
        for (const QString& key : table(UILanguage::English).keys()) {
            SCOPED_TRACE(QString(language.rawValue() + u' ' + key).toStdString());
            check(key, text(UILanguage::English, key), text(language, key));
        }
    }
}

/// Every key the views ask for, in the tables' order, without the variants for one platform.
QStringList vocabulary() {
    const QString keys =
        u"app.name app.name.short app.subtitle menu.backend.running menu.backend.stopped "
        "menu.quit main.backend.start main.backend.stop main.stopping main.start main.stop "
        "main.settings main.quit audio.source audio.type audio.mic audio.system audio.app "
        "audio.mic.label audio.mic.default audio.level audio.gain.auto audio.gain.label "
        "audio.permission.granted audio.permission.needed audio.permission.request "
        "audio.capture.all audio.drm.warning audio.drm.warning.short audio.app.select "
        "audio.app.placeholder audio.app.only audio.app.refresh vad.toggle vad.active vad.fixed "
        "vad.pause vad.threshold lang.title lang.source lang.target lang.auto lang.available "
        "option.overlay option.original option.transcript option.speak status.listening "
        "alert.backend.notready.title alert.backend.notready.msg alert.noapp.title "
        "alert.noapp.msg alert.backend.notfound.title alert.backend.notfound.msg alert.ok "
        "alert.cache.title alert.cache.msg alert.cache.delete alert.cache.cancel "
        "alert.cache.done.title alert.cache.done.msg engine.stopped engine.running "
        "engine.starting engine.stopping engine.notinstalled engine.failed engine.notstarted "
        "engine.terminated settings.title settings.tab.general settings.tab.languages "
        "settings.tab.storage settings.tab.info settings.language settings.backend "
        "settings.backend.autostart settings.backend.autostop settings.backend.tip "
        "settings.backend.network settings.backend.network.warn settings.backend.network.hint "
        "settings.display settings.overlay settings.overlay.bgcolor settings.overlay.textcolor "
        "settings.overlay.border settings.overlay.bordercolor settings.overlay.opacity "
        "settings.obs.section settings.obs.enable settings.obs.port settings.obs.copy "
        "settings.obs.hint settings.vrc.section settings.vrc.enable settings.vrc.host "
        "settings.vrc.port settings.vrc.send settings.vrc.send.original "
        "settings.vrc.send.translation settings.vrc.send.both settings.vrc.sound "
        "settings.vrc.test settings.vrc.hint settings.notifications settings.autogain "
        "settings.vmix.enable settings.vmix.subtitle settings.vmix.connection "
        "settings.vmix.input.hint settings.vmix.fields settings.vmix.field.translation "
        "settings.vmix.field.original settings.vmix.tip settings.vmix.warn_on_fail "
        "settings.vmix.warn_on_fail.hint vmix.warn.title vmix.warn.detail vmix.warn.disable "
        "vmix.warn.snooze vmix.warn.off settings.tab.engines settings.engine.select "
        "settings.engine.apikey settings.engine.whisper.name settings.engine.whisper.detail "
        "settings.engine.deepgram.detail settings.engine.deepgram.hint "
        "settings.engine.assemblyai.detail settings.engine.assemblyai.hint "
        "settings.engine.google_rest.name settings.engine.google_rest.detail "
        "settings.engine.google_rest.hint settings.engine.google_grpc.name "
        "settings.engine.google_grpc.detail settings.engine.google_grpc.hint "
        "settings.engine.azure.detail settings.engine.azure.hint settings.engine.service_account "
        "settings.engine.choose_file settings.engine.clear_file settings.engine.no_file "
        "settings.engine.region settings.engine.project_id settings.engine.project_id.optional "
        "settings.engine.location settings.engine.vosk.detail settings.engine.vosk.hint "
        "settings.engine.vad.hint settings.tab.whisper settings.whisper "
        "settings.whisper.subtitle settings.whisper.current settings.whisper.model "
        "settings.whisper.tiny settings.whisper.base settings.whisper.small "
        "settings.whisper.medium settings.whisper.large settings.whisper.download "
        "settings.whisper.delete settings.whisper.tip settings.lang.count settings.lang.engine "
        "settings.lang.noinstall settings.lang.builtin settings.lang.autodetect "
        "settings.lang.supported settings.storage.files settings.storage.backend "
        "settings.storage.open settings.storage.transcripts settings.storage.transcripts.desc "
        "settings.storage.maintenance settings.storage.clearlogs settings.storage.clearlogs.desc "
        "settings.storage.delete info.title info.subtitle info.stt info.translation "
        "info.audioengine info.capture info.languages info.powered info.product "
        "info.update.check info.update.uptodate info.update.download info.update.available "
        "info.update.later"
        ""_s;
    return keys.split(u' ', Qt::SkipEmptyParts);
}

TEST(StringTable, everyLanguageHasATable) {
    EXPECT_EQ(L10n::strings().size(), UILanguage::allCases().size());
}

TEST(StringTable, allLanguagesHaveTheSameKeysInTheSameOrder) {
    for (const UILanguage language : UILanguage::allCases()) {
        EXPECT_EQ(table(language).keys(), table(UILanguage::English).keys());
    }
}

TEST(StringTable, everyTableHoldsAllTexts) {
    for (const UILanguage language : UILanguage::allCases()) {
        EXPECT_EQ(table(language).keys().size(), 385) << qPrintable(language.rawValue());
    }
}

TEST(StringTable, noKeyOccursTwice) {
    const QStringList& keys = table(UILanguage::German).keys();
    EXPECT_EQ(QSet<QString>(keys.begin(), keys.end()).size(), keys.size());
}

TEST(StringTable, theWholeVocabularyStandsInItsOrder) {
    ASSERT_EQ(vocabulary().size(), 192);
    QStringList present = table(UILanguage::English).keys();
    const QStringList wanted = vocabulary();
    present.removeIf([&](const QString& key) { return !wanted.contains(key); });
    EXPECT_EQ(present, wanted);
}

TEST(StringTable, aVariantForLinuxFollowsTheKeyItReplaces) {
    const QStringList& keys = table(UILanguage::English).keys();
    int variants = 0;
    for (qsizetype i = 0; i < keys.size(); ++i) {
        if (keys.at(i).endsWith(u".linux")) {
            ++variants;
            ASSERT_GT(i, 0);
            EXPECT_EQ(keys.at(i), keys.at(i - 1) + u".linux");
        }
    }
    EXPECT_GT(variants, 0);
}

TEST(StringTable, noTextIsEmptyOrFramedByWhiteSpace) {
    compareWithEnglish([](const QString& key, const QString&, const QString& other) {
        EXPECT_FALSE(other.isEmpty());
        EXPECT_EQ(other, other.trimmed());
        EXPECT_NE(other, key);
    });
}

TEST(StringTable, lineBreaksStandInTheSamePlaces) {
    compareWithEnglish([](const QString&, const QString& english, const QString& other) {
        const QStringList ours = other.split(u'\n');
        const QStringList theirs = english.split(u'\n');
        ASSERT_EQ(ours.size(), theirs.size());
        for (qsizetype line = 0; line < ours.size(); ++line) {
            EXPECT_EQ(ours.at(line).isEmpty(), theirs.at(line).isEmpty());
        }
    });
}

TEST(StringTable, emojiAndOtherSymbolsAreTheSame) {
    const QRegularExpression symbols(u"[\\p{So}\\p{Sm}\\x{FE0F}·•—]"_s,
                                     QRegularExpression::UseUnicodePropertiesOption);
    ASSERT_EQ(matches(u"⚠️ a → b 🎤"_s, symbols).size(), 4);
    compareWithEnglish([&](const QString&, const QString& english, const QString& other) {
        EXPECT_EQ(matches(other, symbols), matches(english, symbols));
        const bool leads = symbols.match(english).capturedStart() == 0;
        EXPECT_EQ(symbols.match(other).capturedStart() == 0, leads);
    });
}

TEST(StringTable, placeholdersAndNumbersAreTheSame) {
    const QRegularExpression numbers(u"%[0-9n]|[0-9]+"_s);
    compareWithEnglish([&](const QString&, const QString& english, const QString& other) {
        EXPECT_EQ(matches(other, numbers), matches(english, numbers));
    });
}

TEST(StringTable, noLineOfAFrenchTextBeginsWithATwoPartSign) {
    const QRegularExpression breakable(u" [:;?!]"_s);
    for (const QString& key : table(UILanguage::French).keys()) {
        EXPECT_FALSE(text(UILanguage::French, key).contains(breakable)) << key.toStdString();
    }
}

TEST(StringTable, anAmountOfMemoryStaysOnOneLine) {
    const QRegularExpression amount(u"~[0-9]+[ \u00A0].*RAM$"_s);
    for (const UILanguage language : UILanguage::allCases()) {
        for (const QString& model : {u"tiny"_s, u"base"_s, u"small"_s, u"medium"_s, u"large"_s}) {
            const QString detail = text(language, u"settings.whisper."_s + model);
            const QString found = amount.match(detail).captured();
            EXPECT_FALSE(found.isEmpty()) << detail.toStdString();
            // The English ones are exact.
            EXPECT_TRUE(language == UILanguage::English || !found.contains(u' '))
                << detail.toStdString();
        }
    }
}

TEST(StringTable, textsThatEndInAnEllipsisDoSoInEveryLanguage) {
    compareWithEnglish([](const QString&, const QString& english, const QString& other) {
        EXPECT_EQ(other.endsWith(u"..."), english.endsWith(u"..."));
        EXPECT_FALSE(other.contains(u'…'));
    });
}

TEST(StringTable, theProductsNameIsTheSameInEveryLanguage) {
    for (const UILanguage language : UILanguage::allCases()) {
        EXPECT_EQ(text(language, u"app.name.short"_s), u"ORV"_s);
        for (const QString& key : {u"app.name"_s, u"info.title"_s}) {
            EXPECT_EQ(text(language, key), u"ORV - Orvane for macOS"_s);
            EXPECT_EQ(text(language, key + u".linux"), u"ORV - Orvane for Linux"_s);
        }
    }
}

TEST(StringTable, theInstallAlertCarriesTheSameCommandsInEveryLanguage) {
    EXPECT_EQ(text(UILanguage::English, u"alert.backend.notfound.msg"_s),
              u"The Python backend is not installed.\n\nOpen the DMG and run:\n"
              "\"Install-Backend.command\"\n\nOr install manually:\n"
              "cd ~/Library/Application Support/Orvane\npython3.11 -m venv venv\n"
              "source venv/bin/activate\npip install -r backend/requirements.txt"_s);
    for (const UILanguage language : UILanguage::allCases()) {
        const QStringList lines = text(language, u"alert.backend.notfound.msg"_s).split(u'\n');
        ASSERT_EQ(lines.size(), 10);
        EXPECT_EQ(lines.at(3), u"\"Install-Backend.command\""_s);
        EXPECT_EQ(lines.mid(6),
                  (QStringList{u"cd ~/Library/Application Support/Orvane"_s,
                               u"python3.11 -m venv venv"_s, u"source venv/bin/activate"_s,
                               u"pip install -r backend/requirements.txt"_s}));
        const QString ours = text(language, u"alert.backend.notfound.msg.linux"_s);
        EXPECT_EQ(ours.section(u'\n', 0, 0), lines.first());
        EXPECT_FALSE(ours.contains(u"scripts/")) << "nobody is sent to a terminal";
    }
}

TEST(StringTable, theHintsSayWhereAKeyIsObtained) {
    for (const UILanguage language : UILanguage::allCases()) {
        EXPECT_TRUE(
            text(language, u"settings.engine.deepgram.hint"_s).contains(u"console.deepgram.com"));
        EXPECT_TRUE(text(language, u"settings.engine.assemblyai.hint"_s)
                        .contains(u"www.assemblyai.com/dashboard"));
        EXPECT_TRUE(text(language, u"settings.engine.google_rest.hint"_s)
                        .contains(u"console.cloud.google.com/apis/credentials"));
        const QString vrchat = text(language, u"settings.vrc.hint"_s);
        EXPECT_TRUE(vrchat.contains(u"Settings → OSC"));
        EXPECT_TRUE(vrchat.contains(u"127.0.0.1:9000"));
        EXPECT_TRUE(vrchat.contains(u"144"));
    }
}

struct Quoted {
    const char* key;
    QString text;
};

TEST(StringTable, englishTextsAreExact) {
    const QList<Quoted> quoted = {
        {"app.name.short", u"ORV"_s},
        {"app.subtitle", u"Real-time audio translation"_s},
        {"menu.backend.running", u"✓ Backend running"_s},
        {"menu.backend.stopped", u"○ Backend stopped"_s},
        {"main.stopping", u"Processing last translation..."_s},
        {"audio.mic", u"🎤 Microphone"_s},
        {"audio.system", u"🔊 System Audio"_s},
        {"audio.app", u"📱 Single App"_s},
        {"audio.drm.warning", u"⚠️ DRM content (Netflix, etc.) will be silent"_s},
        {"audio.app.placeholder", u"-- Select an App --"_s},
        {"vad.toggle", u"Smart Pause Detection"_s},
        {"vad.fixed", u"fixed 3s ticks"_s},
        {"lang.auto", u"🔍 Auto-Detect"_s},
        {"lang.available", u"languages available (Whisper + Mistral)"_s},
        {"status.listening", u"Active - Listening..."_s},
        {"alert.backend.notready.title", u"Backend Not Ready"_s},
        {"alert.backend.notready.msg", u"Please start the backend first."_s},
        {"alert.noapp.title", u"No App Selected"_s},
        {"alert.noapp.msg", u"Please select an app from the list."_s},
        {"alert.cache.msg", u"This removes logs and temporary files. Transcripts will be kept."_s},
        {"alert.cache.done.title", u"Cache Cleared"_s},
        {"alert.cache.done.msg", u"Logs have been removed."_s},
        {"settings.backend.network", u"Allow network access (0.0.0.0)"_s},
        {"settings.backend.network.warn", u"Other devices on the network can connect"_s},
        {"settings.backend.network.hint", u"Backend must be restarted after changing this."_s},
        {"settings.obs.hint",
         u"In OBS: Add Source → Browser → enter this URL. The background is transparent."_s},
        {"settings.vmix.tip",
         u"Field names must match the text fields in your vMix title (case-sensitive)."_s},
        {"settings.vmix.warn_on_fail.hint",
         u"Shows a notice in the main window after several failed connection attempts."_s},
        {"vmix.warn.detail",
         u"Translations are not being sent to vMix. The vMix host is unreachable."_s},
        {"settings.engine.vad.hint",
         u"VAD is set automatically per engine. Streaming engines detect pauses server-side."_s},
        {"settings.engine.vosk.detail", u"Local Vosk server (WebSocket, port 2700)"_s},
        {"settings.whisper.tiny", u"Fastest recognition, lowest quality · ~1 GB RAM"_s},
        {"settings.whisper.base", u"Default — good balance · ~1 GB RAM"_s},
        {"settings.whisper.small", u"Better quality · ~2 GB RAM"_s},
        {"settings.whisper.medium", u"High quality · ~5 GB RAM"_s},
        {"settings.whisper.large", u"Best quality, slowest recognition · ~10 GB RAM"_s},
        {"settings.lang.engine", u"Whisper recognizes • Mistral translates"_s},
        {"info.powered", u"Powered by Apple Silicon"_s},
        {"info.update.uptodate", u"App is up to date"_s},
        {"info.update.available", u"A new version is available."_s},
        {"info.update.download", u"Download Update"_s},
        {"info.update.later", u"Later"_s},
        {"engine.stopped", u"Backend stopped"_s},
        {"engine.starting", u"Backend starting..."_s},
        {"engine.running", u"✓ Backend running (Port 8765)"_s},
        {"engine.stopping", u"Backend stopping..."_s},
        {"engine.notinstalled", u"❌ Backend not installed"_s},
        {"engine.failed", u"❌ Backend start failed"_s},
        {"engine.notstarted", u"⚠️ Backend not started"_s},
        {"engine.terminated", u"❌ Backend was terminated"_s},
        {"vmix.warn.disable", u"Disable vMix"_s},
        {"vmix.warn.snooze", u"Later"_s},
        {"vmix.warn.off", u"Turn off warnings"_s},
        {"vmix.warn.title", u"vMix not reachable"_s},
        {"alert.backend.notfound.title", u"Backend Not Found"_s},
        {"alert.cache.title", u"Clear Cache?"_s},
        {"settings.lang.supported", u"Supported Languages"_s},
    };
    for (const Quoted& row : quoted) {
        EXPECT_EQ(text(UILanguage::English, QString::fromLatin1(row.key)), row.text) << row.key;
    }
}

TEST(StringTable, germanTextsAreExact) {
    const QList<Quoted> quoted = {
        {"engine.stopped", u"Backend gestoppt"_s},
        {"engine.starting", u"Backend startet..."_s},
        {"engine.running", u"✓ Backend läuft (Port 8765)"_s},
        {"engine.stopping", u"Backend stoppt..."_s},
        {"engine.notinstalled", u"❌ Backend nicht installiert"_s},
        {"engine.failed", u"❌ Backend-Start fehlgeschlagen"_s},
        {"engine.notstarted", u"⚠️ Backend nicht gestartet"_s},
        {"engine.terminated", u"❌ Backend wurde beendet"_s},
        {"vmix.warn.disable", u"vMix deaktivieren"_s},
        {"vmix.warn.snooze", u"Später"_s},
        {"vmix.warn.off", u"Warnung aus"_s},
        {"audio.system", u"🔊 System-Audio"_s},
        {"audio.app", u"📱 Einzelne App"_s},
    };
    for (const Quoted& row : quoted) {
        EXPECT_EQ(text(UILanguage::German, QString::fromLatin1(row.key)), row.text) << row.key;
    }
}

TEST(StringTable, aDoubledKeyKeepsItsFirstText) {
    const TextEntry entries[] = {{u"a", u"first"}, {u"b", u"other"}, {u"a", u"second"}};
    const StringTable doubled({entries});
    EXPECT_EQ(doubled.text(u"a"_s), u"first"_s);
    EXPECT_EQ(doubled.keys().size(), 3);
    EXPECT_FALSE(doubled.text(u"c"_s));
}

} // namespace

} // namespace orv
