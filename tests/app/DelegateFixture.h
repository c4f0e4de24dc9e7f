#pragma once

#include "AppDelegate.h"
#include "DefaultsStore.h"
#include "Fakes.h"
#include "LogCapture.h"
#include "OverlayServer.h"
#include "Ports.h"
#include "Quit.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"
#include "UpdateChecker.h"

#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace orv::test {

/// A delegate among stand-ins that note what it asks of them. It is made by `launch()`.
class DelegateFixture : public ::testing::Test {
  protected:
    static constexpr std::chrono::milliseconds soon{1};

    void launch(DelegateTimings timings = {.autoStart = soon},
                QuitTimings quitTimings = {.secondStop = soon, .terminate = soon, .panel = soon}) {
        using namespace Qt::StringLiterals;
        updates = std::make_unique<UpdateChecker>(
            UpdateEnvironment{.currentVersion = u"4.9"_s,
                              .updateURLs = updateURLs,
                              .opener = opener,
                              .timings = {.answer = std::chrono::seconds(10)}});
        quit = std::make_unique<Quit>(backend, quitTimings);
        QObject::connect(quit.get(), &Quit::terminationDue, quit.get(), [this] { ++terminations; });
        delegate = std::make_unique<AppDelegate>(
            DelegateEnvironment{.settings = settings,
                                .statusItem = tray,
                                .panel = panel,
                                .translationEngine = backend,
                                .quit = *quit,
                                .updateChecker = *updates,
                                .overlayServer = overlayServer,
                                .userNotifications = userNotifications,
                                .dialogs = dialogs,
                                .opener = opener,
                                .text = keyAsText,
                                .makeSettings =
                                    [this] {
                                        auto window = std::make_unique<QWidget>();
                                        settingsWindows.append(window.get());
                                        return window;
                                    },
                                .timings = timings});
        QObject::connect(delegate.get(), &AppDelegate::trayCameOrWent, delegate.get(),
                         [this](bool available) {
                             panel.calls.append(available ? u"tray came"_s : u"tray went"_s);
                         });
        delegate->applicationDidFinishLaunching();
    }

    /// Lets the user have switched the browser overlay on, at a port of the test's own.
    void enableOverlayServer() {
        settings.obsOverlayEnabled.set(true);
        settings.obsOverlayPort.set(freePort());
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{QStringLiteral("test.disk")};
    DefaultsStore store{disk, folder.path() + QStringLiteral("/defaults.json")};
    bool registered = (registerDefaultSettings(store), true); ///< Before the settings load.
    TranslationSettings settings{store};
    OverlayServer overlayServer;
    FakeTray tray;
    FakePanel panel;
    FakeBackend backend;
    FakeDialogs dialogs;
    FakeOpener opener;
    FakeUserNotifications userNotifications;
    QStringList updateURLs; ///< Without one the checker finds nothing.
    std::unique_ptr<UpdateChecker> updates;
    QList<QWidget*> settingsWindows; ///< As they were made.
    std::unique_ptr<Quit> quit;
    int terminations = 0;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace orv::test
