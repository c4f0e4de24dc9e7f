// docs/settings.md against the program: every key, every default, every control, both ways.

#include "ControlProbe.h"
#include "SettingsWindowFixture.h"

#include <QFile>
#include <QLabel>
#include <QStackedWidget>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

struct Row {
    QString where;
    QString control;
    QString key; ///< Empty for a setting that is not kept.
    QString fallback;

    bool isInWindow() const { return where.startsWith(u"Settings, "_s); }

    QString tab() const { return where.mid(u"Settings, "_s.size()); }
};

QList<Row> documentedRows() {
    QFile file(QStringLiteral(ORVANE_SETTINGS_TABLE));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QList<Row> rows;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(u'\n')) {
        QStringList cells = line.split(u'|');
        if (cells.size() != 7 || line.startsWith(u"|---"_s) || line.contains(u"| Key |"_s)) {
            continue;
        }
        for (QString& cell : cells) {
            cell = cell.trimmed();
        }
        const QString key = cells[4] == u"not kept" ? QString() : cells[4].remove(u'`');
        rows.append({cells[2], cells[3], key, cells[5]});
    }
    return rows;
}

/// Rows whose control changes by itself when it is used, or by other means than its own.
bool isSpecial(const Row& row) {
    return row.key == u"uiLanguage" || row.key == u"googleServiceAccountPath";
}

class SettingsTableTest : public SettingsWindowFixture {
  protected:
    /// The tab that `widget` is on, by its name.
    QString tabOf(const QWidget* widget) const {
        auto* pages = window->findChild<QStackedWidget*>();
        for (int page = 0; page < pages->count(); ++page) {
            if (pages->widget(page)->isAncestorOf(widget)) {
                return tabs()->tabText(page);
            }
        }
        return {};
    }

    const QList<Row> rows = documentedRows();
};

TEST_F(SettingsTableTest, namesEveryKeyOnce) {
    QStringList keys;
    for (const Row& row : rows) {
        if (!row.key.isEmpty()) {
            keys.append(row.key);
        }
    }
    QStringList known;
    for (const AnySetting* setting : settings.all()) {
        if (!setting->key().isEmpty()) {
            known.append(setting->key());
        }
    }
    EXPECT_EQ(known.size(), 49);
    keys.sort();
    known.sort();
    EXPECT_EQ(keys, known);
}

TEST_F(SettingsTableTest, namesTheDefaultsThatAreRegistered) {
    QHash<QString, QString> documented;
    for (const Row& row : rows) {
        documented.insert(row.key, row.fallback);
    }
    for (const auto& [key, value] : defaultSettings()) {
        EXPECT_EQ(documented.value(key), inWords(value)) << qPrintable(key);
    }
}

TEST_F(SettingsTableTest, everyControlIsWhereItSaysAndShowsTheDefault) {
    for (const Row& row : rows) {
        if (!row.isInWindow()) {
            continue;
        }
        SCOPED_TRACE(row.control.toStdString());
        const auto* found = control(row.control);
        ASSERT_NE(found, nullptr);
        EXPECT_EQ(tabOf(found), row.tab());
        if (!isSpecial(row)) {
            EXPECT_EQ(shownByControl(*found), row.fallback);
        }
    }
}

TEST_F(SettingsTableTest, whatAPersonChangesIsStoredAtOnce) {
    for (const Row& row : rows) {
        if (!row.isInWindow() || isSpecial(row)) {
            continue;
        }
        SCOPED_TRACE(row.control.toStdString());
        auto* found = control(row.control);
        ASSERT_NE(found, nullptr);
        changeControl(*found);
        EXPECT_NE(shownByControl(*found), row.fallback);
        if (!row.key.isEmpty()) {
            EXPECT_EQ(inWords(store.object(row.key)), shownByControl(*found));
        }
    }
}

TEST_F(SettingsTableTest, anotherWindowShowsTheChangeAtOnce) {
    const auto second = makeWindow();
    second->show();
    lookAtEveryTab(*second);
    for (const Row& row : rows) {
        if (!row.isInWindow() || isSpecial(row)) {
            continue;
        }
        SCOPED_TRACE(row.control.toStdString());
        auto* found = control(row.control);
        ASSERT_NE(found, nullptr);
        changeControl(*found);
        EXPECT_EQ(shownByControl(*controlIn(*second, row.control)), shownByControl(*found));
    }
}

TEST_F(SettingsTableTest, theNextWindowShowsWhatWasStored) {
    QHash<QString, QString> shown;
    for (const Row& row : rows) {
        if (row.isInWindow() && !isSpecial(row)) {
            changeControl(*control(row.control));
            shown.insert(row.control, shownByControl(*control(row.control)));
        }
    }
    open();
    for (auto value = shown.cbegin(); value != shown.cend(); ++value) {
        EXPECT_EQ(shownByControl(*control(value.key())), value.value()) << qPrintable(value.key());
    }
}

TEST_F(SettingsTableTest, theLanguageIsStored) {
    auto* languages = control(u"Interface Language"_s);
    EXPECT_EQ(shownByControl(*languages), u"en"_s);
    EXPECT_FALSE(store.contains(u"uiLanguage"_s));
    changeControl(*languages);
    EXPECT_EQ(store.string(u"uiLanguage"_s), u"de"_s);
    EXPECT_EQ(shownByControl(*languages), u"de"_s);
}

TEST_F(SettingsTableTest, theServiceAccountIsChosenAndRemoved) {
    auto* path = control<QLabel>(u"Service Account File (JSON)"_s);
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(path->text(), u"No file selected"_s);
    EXPECT_FALSE(control<QAbstractButton>(u"Remove"_s)->isEnabled());
    press(u"Choose File..."_s);
    chooser.pending(u"/home/mia/account.json"_s);
    EXPECT_EQ(store.string(u"googleServiceAccountPath"_s), u"/home/mia/account.json"_s);
    EXPECT_EQ(path->text(), u"/home/mia/account.json"_s);
    press(u"Remove"_s);
    EXPECT_EQ(store.string(u"googleServiceAccountPath"_s), u""_s);
    EXPECT_EQ(path->text(), u"No file selected"_s);
}

} // namespace

} // namespace orv::test
