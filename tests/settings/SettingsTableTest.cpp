// docs/settings.md against the list of settings.

#include "SettingsTable.h"
#include "SettingsList.h"

#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

namespace orv::test {

TEST(SettingsListTable, standsInTheDocument) {
    QFile file(QStringLiteral(ORVANE_SETTINGS_TABLE));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString document = QString::fromUtf8(file.readAll());
    EXPECT_EQ(document, withSettingsTable(document)) << "scripts/settings-table writes it anew";
}

TEST(SettingsListTable, takesThePlaceOfTheOneBefore) {
    const QString before = u"# Settings\n\n| Setting | Where | Control | Key | Default |\n"
                           "|---|---|---|---|---|\n| a | b | c | d | e |\n\nMore.\n"_s;
    const QString after = u"# Settings\n\n"_s + settingsTable() + u"\n\nMore.\n"_s;
    EXPECT_EQ(withSettingsTable(before), after);
    EXPECT_EQ(withSettingsTable(after), after);
    EXPECT_EQ(withSettingsTable(u"No table."_s), QString());
}

TEST(SettingsListTable, everyKeyStandsOnceAndIsDocumented) {
    const SettingsList settings;
    QSet<QString> keys;
    for (const AnySetting* setting : settings.all()) {
        EXPECT_EQ(setting->keeping() == Keeping::Never, setting->key().isEmpty());
        if (!setting->key().isEmpty()) {
            EXPECT_FALSE(keys.contains(setting->key())) << setting->key().toStdString();
            keys.insert(setting->key());
            EXPECT_TRUE(settingsTable().contains(u"| `"_s + setting->key() + u"` |"_s))
                << setting->key().toStdString();
            EXPECT_NE(setting->note().control, nullptr) << setting->key().toStdString();
        }
    }
    EXPECT_EQ(keys.size(), 49);
}

TEST(SettingsListTable, registeredValuesHaveAPlaceEach) {
    const SettingsList settings;
    QSet<int> positions;
    for (const AnySetting* setting : settings.all()) {
        if (const auto registered = setting->registered()) {
            EXPECT_FALSE(positions.contains(registered->position)) << setting->key().toStdString();
            positions.insert(registered->position);
        }
    }
    EXPECT_EQ(positions.size(), 11);
}

} // namespace orv::test
