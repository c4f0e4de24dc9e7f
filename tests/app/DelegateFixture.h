#pragma once

#include "AppDelegate.h"
#include "DefaultsStore.h"
#include "Fakes.h"
#include "LogCapture.h"
#include "NotificationCentre.h"
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

    void launch(DelegateTimings timings = {
                    .autoStart = soon, .quitSecondStop = soon, .quitTerminate = soon}) {
        using namespace Qt::StringLiterals;
        updates = std::make_unique<UpdateChecker>(
            UpdateEnvironment{.currentVersion = u"4.9"_s,
                              .updateURLs = updateURLs,
                              .opener = opener,
                              .timings = {.answer = std::chrono::seconds(10)}});
        delegate = std::make_unique<AppDelegate>(DelegateEnvironment{
            .settings = settings,
            .notifications = centre,
            .tray = tray,
            .panel = panel,
            .backend = backend,
            .updates = *updates,
            .userNotifications = userNotifications,
            .dialogs = dialogs,
            .opener = opener,
            .text = keyAsText,
            .applyOverlaySettings = [this] { overlay.append(u"apply"_s); },
            .stopOverlayServer = [this] { overlay.append(u"stop"_s); },
            .showSubtitles =
                [this](const QString& original, const QString& translation) {
                    overlay.append(u"window '%1' '%2'"_s.arg(original, translation));
                },
            .broadcast =
                [this](const QString& original, const QString& translation) {
                    overlay.append(u"broadcast '%1' '%2'"_s.arg(original, translation));
                },
            .sendToVRChat =
                [this](const QString& original, const QString& translation) {
                    overlay.append(u"VRChat '%1' '%2'"_s.arg(original, translation));
                },
            .terminate = [this] { ++terminations; },
            .makeSettings =
                [this] {
                    auto window = std::make_unique<QWidget>();
                    settingsWindows.append(window.get());
                    return window;
                },
            .trayChanged =
                [this](bool available) {
                    panel.calls.append(available ? u"tray came"_s : u"tray went"_s);
                },
            .panelQuits = [this] { return panelQuits; },
            .timings = timings});
        delegate->applicationDidFinishLaunching();
    }

    void postBackend(const QVariantMap& info) {
        centre.post(notifications::backendStatusChanged, info);
    }

    void postTranslation(bool translating) {
        using namespace Qt::StringLiterals;
        centre.post(notifications::translationStatusChanged, {{u"isTranslating"_s, translating}});
    }

    LogCapture log;
    QTemporaryDir folder;
    DefaultsStore store{folder.path() + QStringLiteral("/defaults.json")};
    bool registered = (registerDefaultSettings(store), true); ///< Before the settings load.
    TranslationSettings settings{store};
    NotificationCentre centre;
    FakeTray tray;
    FakePanel panel;
    FakeBackend backend;
    FakeDialogs dialogs;
    FakeOpener opener;
    FakeUserNotifications userNotifications;
    QStringList updateURLs; ///< Without one the checker finds nothing.
    std::unique_ptr<UpdateChecker> updates;
    QList<QWidget*> settingsWindows; ///< As they were made.
    QStringList overlay;
    bool panelQuits = false;
    int terminations = 0;
    std::unique_ptr<AppDelegate> delegate;
};

} // namespace orv::test
