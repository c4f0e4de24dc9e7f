// The texts of what the speech server tells, and of what is wrong with a cloud service. That every
// code of the server has one is checked on its side.

#include "L10n.h"

#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QString text(UILanguage language, const QString& key) {
    return L10n::strings().at(language).text(key).value_or(QString());
}

QStringList backendKeys() {
    return L10n::strings()
        .at(UILanguage::English)
        .keys()
        .filter(QRegularExpression(u"^(backend|service)\\."_s));
}

QSet<QString> placeholders(const QString& text) {
    static const QRegularExpression placeholder(u"\\{[^}]*\\}"_s);
    QSet<QString> found;
    auto match = placeholder.globalMatch(text);
    while (match.hasNext()) {
        found.insert(match.next().captured());
    }
    return found;
}

/// Calls `check(language, key, text)` for every text.
template <typename Check>
void forEachText(const Check& check) {
    ASSERT_GT(backendKeys().size(), 70);
    for (const UILanguage language : UILanguage::allCases()) {
        for (const QString& key : backendKeys()) {
            SCOPED_TRACE(QString(language.rawValue() + u' ' + key).toStdString());
            check(language, key, text(language, key));
        }
    }
}

TEST(BackendTable, everyLanguageNamesTheSameParameters) {
    forEachText([](UILanguage, const QString& key, const QString& shown) {
        EXPECT_EQ(placeholders(shown), placeholders(text(UILanguage::English, key)));
        EXPECT_EQ(shown.count(u'{'), text(UILanguage::English, key).count(u'{'));
    });
}

TEST(BackendTable, whatIsTheMatterIsOneLineWithoutAFullStop) {
    forEachText([](UILanguage, const QString&, const QString& shown) {
        EXPECT_LE(shown.count(u'\n'), 1);
        const QString summary = shown.section(u'\n', 0, 0);
        EXPECT_TRUE(summary.endsWith(u"..."_s) || !summary.endsWith(u'.'));
        EXPECT_LE(summary.size(), 90);
    });
}

TEST(BackendTable, whatToDoIsASentenceOrEndsInWhatWasSaid) {
    forEachText([](UILanguage, const QString&, const QString& shown) {
        const QString detail = shown.section(u'\n', 1);
        EXPECT_TRUE(detail.isEmpty() || QString(u".?}"_s).contains(detail.back()));
    });
}

TEST(BackendTable, aPlaceInTheSettingsIsCalledByItsName) {
    int places = 0;
    forEachText([&places](UILanguage language, const QString& key, const QString& shown) {
        if (!shown.contains(u'→') || key == u"backend.engine.serving") {
            return;
        }
        const QString settings = text(language, u"main.settings"_s) + u" → "_s;
        EXPECT_TRUE(shown.contains(settings + text(language, u"settings.tab.whisper"_s)) ||
                    shown.contains(settings + text(language, u"settings.tab.engines"_s)));
        ++places;
    });
    EXPECT_GT(places, 50);
}

} // namespace

} // namespace orv
