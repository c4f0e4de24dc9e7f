#include "DesktopServices.h"
#include "FileDialogs.h"
#include "LogCapture.h"
#include "NullDesktopOpener.h"
#include "NullFileChooser.h"
#include "WaitUntil.h"
#include "WebAddress.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileDialog>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace orv::test {

namespace {

/// Takes the place of the browser and of the file browser while it lives.
class Opened : public QObject {
    Q_OBJECT

  public:
    Opened() {
        for (const QString& scheme : schemes) {
            QDesktopServices::setUrlHandler(scheme, this, "take");
        }
    }

    ~Opened() override {
        for (const QString& scheme : schemes) {
            QDesktopServices::unsetUrlHandler(scheme);
        }
    }

    Q_SLOT void take(const QUrl& url) { urls.append(url); }

    const QStringList schemes = {u"http"_s, u"https"_s, u"file"_s, u"ftp"_s, u"javascript"_s};
    QList<QUrl> urls;
};

QFileDialog* dialogOnScreen() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        auto* dialog = qobject_cast<QFileDialog*>(widget);
        if (dialog != nullptr && dialog->isVisible()) {
            return dialog;
        }
    }
    return nullptr;
}

TEST(WebAddress, isHttpOrHttpsWithAHost) {
    EXPECT_EQ(webAddress(u"https://example.org/a?b=c#d"_s), QUrl(u"https://example.org/a?b=c#d"_s));
    EXPECT_EQ(webAddress(u" HTTP://example.org\n"_s), QUrl(u"http://example.org"_s));
}

TEST(WebAddress, isNothingElse) {
    const QStringList others = {u""_s,
                                u"example.org"_s,
                                u"/etc/passwd"_s,
                                u"file:///etc/passwd"_s,
                                u"ftp://example.org/"_s,
                                u"javascript:alert(1)"_s,
                                u"https:"_s,
                                u"https:///path"_s,
                                u"http://exa mple.org/"_s};
    for (const QString& other : others) {
        EXPECT_FALSE(webAddress(other)) << qPrintable(other);
    }
}

TEST(DesktopServices, openWebAddressesAndFolders) {
    Opened opened;
    DesktopServices services;
    services.openAddress(u"https://example.org/a"_s);
    services.revealFolder(u"/a folder/with 100%#"_s);
    ASSERT_EQ(opened.urls.size(), 2);
    EXPECT_EQ(opened.urls[0], QUrl(u"https://example.org/a"_s));
    EXPECT_EQ(opened.urls[1].toLocalFile(), u"/a folder/with 100%#"_s);
}

TEST(DesktopServices, openNoOtherSchemeAndSaySo) {
    Opened opened;
    LogCapture log;
    DesktopServices services;
    services.openAddress(u"file:///etc/passwd"_s);
    EXPECT_TRUE(opened.urls.isEmpty());
    EXPECT_TRUE(log.contains(u"⚠️ Adresse kann nicht geöffnet werden: file:///etc/passwd"_s));
}

TEST(NullDesktopOpener, opensNothing) {
    Opened opened;
    NullDesktopOpener opener;
    opener.openAddress(u"https://example.org/"_s);
    opener.revealFolder(u"/tmp"_s);
    EXPECT_TRUE(opened.urls.isEmpty());
}

TEST(NullFileChooser, neverChooses) {
    NullFileChooser chooser;
    chooser.chooseFile({.title = u"Choose"_s, .suffix = u"json"_s, .startsWith = {}},
                       [](const QString&) { FAIL(); });
    drainEvents();
    EXPECT_EQ(dialogOnScreen(), nullptr);
}

class FileDialogsTest : public ::testing::Test {
  protected:
    FileDialogsTest() {
        QFile made(file);
        EXPECT_TRUE(made.open(QIODevice::WriteOnly));
        // Qt's own dialog: the platform's could not be looked into.
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }

    void choose() {
        dialogs->chooseFile({.title = u"Choose a file"_s, .suffix = u"json"_s, .startsWith = file},
                            [this](const QString& path) { chosen.append(path); });
        dialog = dialogOnScreen();
    }

    QTemporaryDir folder;
    const QString file = folder.filePath(u"account.json"_s);
    std::unique_ptr<FileDialogs> dialogs = std::make_unique<FileDialogs>();
    QFileDialog* dialog = nullptr;
    QStringList chosen;
};

TEST_F(FileDialogsTest, askForOneExistingFileOfTheKind) {
    choose();
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(chosen.isEmpty());
    EXPECT_EQ(dialog->windowTitle(), u"Choose a file"_s);
    EXPECT_EQ(dialog->fileMode(), QFileDialog::ExistingFile);
    EXPECT_EQ(dialog->nameFilters(), QStringList(u"JSON (*.json *.JSON)"_s));
    EXPECT_EQ(dialog->directory().absolutePath(), folder.path());
}

TEST_F(FileDialogsTest, tellTheFilesPath) {
    choose();
    dialog->selectFile(file);
    static_cast<QDialog*>(dialog)->accept();
    EXPECT_EQ(chosen, QStringList(file));
}

TEST_F(FileDialogsTest, sayNothingWhenCancelled) {
    choose();
    dialog->reject();
    drainEvents();
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(FileDialogsTest, areOnlyOpenOnce) {
    choose();
    QFileDialog* first = dialog;
    choose();
    EXPECT_EQ(dialog, first);
    first->reject();
    drainEvents();
    EXPECT_EQ(dialogOnScreen(), nullptr);
}

TEST_F(FileDialogsTest, closeWithTheirOwner) {
    choose();
    dialogs.reset();
    EXPECT_EQ(dialogOnScreen(), nullptr);
    EXPECT_TRUE(chosen.isEmpty());
}

} // namespace

} // namespace orv::test

#include "OpeningTest.moc"
