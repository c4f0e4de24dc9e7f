// Pictures of every tab of the settings window, for whoever works on its look:
//   orvane_settings_pictures FOLDER LANGUAGE light|dark
// Tabs that scroll are also painted whole, as "-all".

#include "DefaultsStore.h"
#include "DesktopAppearance.h"
#include "L10n.h"
#include "Look.h"
#include "SettingsFakes.h"
#include "SettingsWindow.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QScrollArea>
#include <QTabBar>
#include <QTemporaryDir>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

class FixedAppearance : public orv::DesktopAppearance {
  public:
    explicit FixedAppearance(orv::ColourScheme scheme)
        : scheme_(scheme) {}

    void setHandler(std::function<void(orv::ColourScheme)> handler) override {
        if (handler) {
            handler(scheme_);
        }
    }

  private:
    orv::ColourScheme scheme_;
};

} // namespace

int main(int argc, char** argv) {
    const QTemporaryDir home;
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 4) {
        std::fputs("usage: orvane_settings_pictures FOLDER LANGUAGE light|dark [ENGINE]\n", stderr);
        return 2;
    }
    FixedAppearance appearance(arguments[3] == u"dark" ? orv::ColourScheme::Dark
                                                       : orv::ColourScheme::Light);
    const orv::Look look(appearance);
    orv::DefaultsStore store(home.filePath(u"defaults.json"_s));
    orv::registerDefaultSettings(store);
    orv::L10n l10n(store, arguments[2]);
    orv::TranslationSettings settings(store);
    if (arguments.size() > 4) {
        settings.sttEngine.set(arguments[4]);
        settings.deepgramApiKey.set(u"0123456789abcdef0123456789abcdef01234567"_s);
        settings.networkAccess.set(true);
    }
    orv::test::AnsweredDialogs dialogs;
    orv::test::FakeChooser chooser;
    orv::test::FakeOpener opener;
    orv::test::FakeUpdates updates;
    updates.available = u"4.3"_s;
    orv::UserPaths paths;
    paths.home = home.path();
    QDir().mkpath(paths.whisperCache());
    QFile model(paths.whisperCache() + u"/base.pt");
    if (model.open(QIODevice::WriteOnly)) {
        model.close();
    }
    const auto window = orv::makeSettingsWindow({.settings = settings,
                                                 .store = store,
                                                 .l10n = l10n,
                                                 .dialogs = dialogs,
                                                 .chooser = chooser,
                                                 .opener = opener,
                                                 .updates = updates,
                                                 .paths = paths,
                                                 .sendVRChatTest = {},
                                                 .appearanceChanged = {},
                                                 .autoStopChanged = {}});
    window->show();
    const QDir folder(arguments[1]);
    auto* tabs = window->findChild<QTabBar*>();
    for (int tab = 0; tab < tabs->count(); ++tab) {
        tabs->setCurrentIndex(tab);
        for (int round = 0; round < 50; ++round) {
            orv::test::drainEvents();
        }
        const QString name = arguments[2] + u'-' + arguments[3] + u'-' + QString::number(tab);
        window->grab().save(folder.filePath(name + u".png"));
        for (const QScrollArea* page : window->findChildren<QScrollArea*>()) {
            if (page->isVisible() && page->widget()->height() > page->height()) {
                page->widget()->grab().save(folder.filePath(name + u"-all.png"));
            }
        }
    }
    return 0;
}
