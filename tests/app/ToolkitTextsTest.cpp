#include "ToolkitTexts.h"

#include "DefaultsStore.h"
#include "L10n.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"

#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

class ToolkitTextsTest : public ::testing::Test {
  protected:
    /// What the items of a text field's menu are called.
    static QStringList menuItems() {
        QLineEdit field;
        const std::unique_ptr<QMenu> menu(field.createStandardContextMenu());
        QStringList items;
        for (const QAction* action : menu->actions()) {
            items.append(action->text().section(u'\t', 0, 0).remove(u'&'));
        }
        return items;
    }

    QTemporaryDir folder;
    SerialQueue disk{u"test.disk"_s};
    DefaultsStore store{disk, folder.filePath(u"defaults.json"_s)};
    TranslationSettings settings{store};
    L10n l10n{settings.uiLanguage, u"en"_s};
};

TEST_F(ToolkitTextsTest, aFieldsMenuSpeaksEachLanguageAndEnglishAgain) {
    const ToolkitTexts texts(l10n);
    EXPECT_TRUE(menuItems().contains(u"Copy"_s));
    for (const auto& [code, copy] :
         std::initializer_list<std::pair<QString, QString>>{{u"de"_s, u"Kopieren"_s},
                                                            {u"es"_s, u"Copiar"_s},
                                                            {u"fr"_s, u"Copier"_s},
                                                            {u"it"_s, u"Copia"_s},
                                                            {u"en"_s, u"Copy"_s}}) {
        l10n.setCurrent(UILanguage::fromRawValue(code).value());
        EXPECT_TRUE(menuItems().contains(copy)) << qPrintable(code);
    }
}

TEST_F(ToolkitTextsTest, theLanguageAtTheStartCounts) {
    l10n.setCurrent(UILanguage::German);
    const ToolkitTexts texts(l10n);
    EXPECT_TRUE(menuItems().contains(u"Kopieren"_s));
}

TEST_F(ToolkitTextsTest, withoutTranslationsTheTextsAreEnglish) {
    const ToolkitTexts texts(l10n, folder.filePath(u"nothing here"_s));
    l10n.setCurrent(UILanguage::German);
    EXPECT_TRUE(menuItems().contains(u"Copy"_s));
}

TEST_F(ToolkitTextsTest, aLanguageWhoseTranslationsAreMissingDoesNotKeepTheOneBefore) {
    const QString file = u"qtbase_de.qm"_s;
    ASSERT_TRUE(QFile::copy(ToolkitTexts::installedFolder() + u'/' + file, folder.filePath(file)));
    const ToolkitTexts texts(l10n, folder.path());
    l10n.setCurrent(UILanguage::German);
    EXPECT_TRUE(menuItems().contains(u"Kopieren"_s));
    l10n.setCurrent(UILanguage::Italian);
    EXPECT_TRUE(menuItems().contains(u"Copy"_s));
}

TEST_F(ToolkitTextsTest, goesWithTheObject) {
    l10n.setCurrent(UILanguage::French);
    {
        const ToolkitTexts texts(l10n);
        EXPECT_TRUE(menuItems().contains(u"Copier"_s));
    }
    EXPECT_TRUE(menuItems().contains(u"Copy"_s));
}

} // namespace

} // namespace orv::test
