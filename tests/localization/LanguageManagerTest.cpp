#include "LanguageManager.h"

#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

Language language(const QString& code) {
    for (const Language& entry : LanguageManager::allLanguages()) {
        if (entry.code == code) {
            return entry;
        }
    }
    ADD_FAILURE() << "no language " << code.toStdString();
    return {};
}

TEST(LanguageManager, holdsExactly101LanguagesWithoutDoubles) {
    QSet<QString> ids;
    for (const Language& entry : LanguageManager::allLanguages()) {
        ids.insert(entry.id);
    }
    EXPECT_EQ(LanguageManager::allLanguages().size(), 101);
    EXPECT_EQ(ids.size(), 101);
}

TEST(LanguageManager, listsThemInTheOrderOfDisplay) {
    const QString codes =
        u"de, en, es, fr, it, pt, nl, pl, ru, uk, tr, el, zh, ja, ko, ar, hi, he, th, vi, id, ms, "
        "sv, da, no, fi, cs, sk, hu, ro, bg, hr, sr, sl, lt, lv, et, ca, eu, gl, is, mt, lb, cy, "
        "ga, sq, mk, bs, be, bn, ta, te, ml, kn, gu, mr, pa, ur, fa, ne, si, km, lo, my, mn, bo, "
        "tl, jw, su, ka, hy, az, kk, uz, tg, tk, af, sw, am, yo, ha, sn, so, mg, ht, la, haw, mi, "
        "yi, fo, br, oc, sa, nn, tt, ba, sd, ps, as, ln, yue"_s;
    QStringList listed;
    for (const Language& entry : LanguageManager::allLanguages()) {
        listed.append(entry.code);
    }
    EXPECT_EQ(listed.join(u", "), codes);
}

TEST(LanguageManager, identifiesEveryEntryByItsCode) {
    for (const Language& entry : LanguageManager::allLanguages()) {
        EXPECT_EQ(entry.id, entry.code);
    }
}

TEST(LanguageManager, givesEveryEntryANameAndOneFlag) {
    for (const Language& entry : LanguageManager::allLanguages()) {
        SCOPED_TRACE(entry.code.toStdString());
        EXPECT_FALSE(entry.name.isEmpty());
        EXPECT_EQ(entry.name, entry.name.trimmed());
        const QList<uint> points = entry.flag.toUcs4();
        if (points.size() == 2) {
            for (const uint point : points) {
                EXPECT_TRUE(point >= 0x1F1E6 && point <= 0x1F1FF);
            }
        } else {
            // A flag of a part of a country: black flag, tag letters, end of tags.
            ASSERT_EQ(points.size(), 7);
            EXPECT_EQ(points.first(), 0x1F3F4U);
            EXPECT_EQ(points.last(), 0xE007FU);
        }
    }
}

TEST(LanguageManager, offersNoAutomaticDetection) {
    for (const Language& entry : LanguageManager::allLanguages()) {
        EXPECT_NE(entry.code, u"auto"_s);
    }
}

TEST(LanguageManager, namesLanguagesInTheirOwnScript) {
    struct Row {
        QString code;
        QString name;
        QString flag;
    };

    const QList<Row> rows = {
        {u"de"_s, u"Deutsch"_s, u"🇩🇪"_s},  {u"en"_s, u"English"_s, u"🇬🇧"_s},
        {u"es"_s, u"Español"_s, u"🇪🇸"_s},  {u"fr"_s, u"Français"_s, u"🇫🇷"_s},
        {u"it"_s, u"Italiano"_s, u"🇮🇹"_s}, {u"uk"_s, u"Українська"_s, u"🇺🇦"_s},
        {u"ar"_s, u"العربية"_s, u"🇸🇦"_s},  {u"ca"_s, u"Català"_s, u"🇪🇸"_s},
        {u"eu"_s, u"Euskara"_s, u"🇪🇸"_s},  {u"gl"_s, u"Galego"_s, u"🇪🇸"_s},
        {u"hy"_s, u"Hayeren"_s, u"🇦🇲"_s},  {u"jw"_s, u"Basa Jawa"_s, u"🇮🇩"_s},
        {u"la"_s, u"Latina"_s, u"🇻🇦"_s},   {u"haw"_s, u"ʻŌlelo Hawaiʻi"_s, u"🇺🇸"_s},
        {u"tt"_s, u"Татар"_s, u"🇷🇺"_s},    {u"ba"_s, u"Башҡорт"_s, u"🇷🇺"_s},
        {u"yue"_s, u"粵語"_s, u"🇭🇰"_s},    {u"el"_s, u"Ελληνικά"_s, u"🇬🇷"_s},
        {u"zh"_s, u"中文"_s, u"🇨🇳"_s},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.code.toStdString());
        EXPECT_EQ(language(row.code).name, row.name);
        EXPECT_EQ(language(row.code).flag, row.flag);
    }
}

TEST(LanguageManager, writesTheLanguagesOfIndiaInTheirScriptsUnderOneFlag) {
    const QList<std::pair<QString, QChar::Script>> scripts = {
        {u"ta"_s, QChar::Script_Tamil},     {u"te"_s, QChar::Script_Telugu},
        {u"ml"_s, QChar::Script_Malayalam}, {u"kn"_s, QChar::Script_Kannada},
        {u"gu"_s, QChar::Script_Gujarati},  {u"mr"_s, QChar::Script_Devanagari},
        {u"pa"_s, QChar::Script_Gurmukhi},
    };
    for (const auto& [code, script] : scripts) {
        SCOPED_TRACE(code.toStdString());
        const Language entry = language(code);
        EXPECT_EQ(entry.flag, u"🇮🇳"_s);
        EXPECT_TRUE(std::all_of(entry.name.begin(), entry.name.end(),
                                [wanted = script](QChar c) { return c.script() == wanted; }));
    }
    EXPECT_EQ(language(u"bo"_s).flag, u"🇨🇳"_s);
    EXPECT_EQ(language(u"bo"_s).name.front().script(), QChar::Script_Tibetan);
}

TEST(LanguageManager, keepsItsDeliberateFlags) {
    EXPECT_EQ(language(u"he"_s).flag, u"🇮🇱"_s);
    EXPECT_EQ(language(u"yi"_s).flag, u"🇮🇱"_s);
    EXPECT_EQ(language(u"br"_s).flag, u"🇫🇷"_s);
    EXPECT_EQ(language(u"oc"_s).flag, u"🇫🇷"_s);
    EXPECT_EQ(language(u"no"_s).name, u"Norsk"_s);
    EXPECT_EQ(language(u"nn"_s).name, u"Nynorsk"_s);
    EXPECT_EQ(language(u"no"_s).flag, u"🇳🇴"_s);
    EXPECT_EQ(language(u"nn"_s).flag, u"🇳🇴"_s);
}

} // namespace

} // namespace orv
