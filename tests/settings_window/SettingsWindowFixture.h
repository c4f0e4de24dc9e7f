#pragma once

#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "FileJobs.h"
#include "L10n.h"
#include "LogCapture.h"
#include "Look.h"
#include "NearRecognisers.h"
#include "NullAppearance.h"
#include "OutputCards.h"
#include "SerialQueue.h"
#include "SettingsFakes.h"
#include "SettingsWindow.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"
#include "WhisperModelManager.h"
#include "WhisperPackages.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QTabBar>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace orv::test {

/// The settings window over real settings in a home of their own, every tab made.
class SettingsWindowFixture : public ::testing::Test {
  protected:
    SettingsWindowFixture() {
        paths.home = home.path();
        const LocalSpeechEnvironment speech{.interpreter = paths.backendInterpreter(),
                                            .folder = QFileInfo(paths.backendScript()).path(),
                                            .installer = installer(),
                                            .home = paths.home,
                                            .whisperCache = paths.whisperCache()};
        packages = std::make_unique<WhisperPackages>(speech);
        recognisers = std::make_unique<NearRecognisers>(speech);
        models = std::make_unique<WhisperModelManager>(
            WhisperEnvironment{.programs = {.interpreter = paths.backendInterpreter(),
                                            .script = paths.modelScript(),
                                            .cacheFolder = paths.whisperCache()},
                               .files = modelFiles,
                               .dialogs = dialogs,
                               .text = [this](const QString& key) { return text(key); },
                               .packages = packages.get(),
                               .chosenModel = [this] { return settings.whisperModel.get(); }});
        open();
    }

    /// Makes the window anew.
    void open() {
        window.reset();
        window = makeWindow();
        window->show();
        lookAtEveryTab();
    }

    std::unique_ptr<QWidget> makeWindow() {
        return makeSettingsWindow({.disk = disk,
                                   .settings = settings,
                                   .engines = engines,
                                   .endpoints = endpoints,
                                   .l10n = l10n,
                                   .dialogs = dialogs,
                                   .chooser = chooser,
                                   .opener = opener,
                                   .updates = updates,
                                   .models = *models,
                                   .packages = *packages,
                                   .recognisers = *recognisers,
                                   .paths = paths,
                                   .outputCards = cards});
    }

    static void lookAtEveryTab(QWidget& view) {
        auto* tabs = view.findChild<QTabBar*>();
        for (int tab = tabs->count() - 1; tab >= 0; --tab) {
            tabs->setCurrentIndex(tab);
            drainEvents();
        }
    }

    void lookAtEveryTab() { lookAtEveryTab(*window); }

    QTabBar* tabs() const { return window->findChild<QTabBar*>(); }

    QString text(const QString& key) const { return l10n.platformText(key); }

    /// The control called `name` for assistive programs, or with that text; null if there is none.
    template <typename Control = QWidget>
    static Control* controlIn(const QWidget& view, const QString& name) {
        for (Control* candidate : view.findChildren<Control*>()) {
            const auto* button = qobject_cast<const QAbstractButton*>(candidate);
            const bool isCalledSo = candidate->accessibleName() == name ||
                                    (candidate->accessibleName().isEmpty() && button != nullptr &&
                                     button->text() == name);
            if (isCalledSo) {
                return candidate;
            }
        }
        return nullptr;
    }

    template <typename Control = QWidget>
    Control* control(const QString& name) const {
        return controlIn<Control>(*window, name);
    }

    /// Presses the button `name` as soon as there is one that can be pressed.
    void press(const QString& name) const {
        ASSERT_TRUE(waitUntil([&] {
            const auto* button = control<QAbstractButton>(name);
            return button != nullptr && button->isEnabled();
        })) << qPrintable(name);
        control<QAbstractButton>(name)->click();
    }

    bool shows(const QString& wanted) const { return label(wanted) != nullptr; }

    /// The label that shows `wanted`; null if there is none.
    const QLabel* label(const QString& wanted) const {
        const auto labels = window->findChildren<QLabel*>();
        const auto found = std::ranges::find_if(labels, [&](const QLabel* candidate) {
            return candidate->isVisible() && candidate->text() == wanted;
        });
        return found != labels.end() ? *found : nullptr;
    }

    /// Whether the button `name` comes to show and can be pressed.
    bool isOffered(const QString& name) const {
        return waitUntil([&] {
            const auto* button = control<QAbstractButton>(name);
            return button != nullptr && button->isEnabled() && button->isVisible();
        });
    }

    /// Puts a file where the program of that name is looked for: an executable shell script.
    static void placeProgram(const QString& path, const QByteArray& script) {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script + '\n');
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    /// What installs the speech server and its packages.
    QString installer() const { return home.filePath(QStringLiteral("install-backend")); }

    /// Puts programs of a speech server there that print what they are told to: "status" of
    /// manage_whisper.py and "list" of recognisers.py the files of that name in the home. What else
    /// they are asked is written into the file "asked".
    void placeServer() const {
        const QByteArray folder = home.path().toUtf8();
        placeProgram(paths.backendInterpreter(), "case \"$2\" in status|list) cat '" + folder +
                                                     "'/\"$2\";; "
                                                     "*) shift; echo \"$@\" >> '" +
                                                     folder + "/asked';; esac");
    }

    void placeText(const QString& name, const QByteArray& content) const {
        QFile file(home.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QByteArray textOf(const QString& name) const {
        QFile file(home.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Has the download of models print `output`, and then wait until the file "go" is in the home;
    /// with it there, it fails. The server is one that does not tell what it has.
    void placeDownload(const QByteArray& output) const {
        placeProgram(paths.modelScript(), {});
        placeProgram(paths.backendInterpreter(),
                     "case \"$2\" in status|list) exit 2;; esac; printf '" + output +
                         "'; while [ ! -e '" + home.path().toUtf8() +
                         "/go' ]; do :; done; echo out of luck; exit 1");
    }

    void letDownloadsGo() const { placeProgram(home.filePath(QStringLiteral("go")), {}); }

    void showTab(int tab) const {
        tabs()->setCurrentIndex(tab);
        drainEvents();
    }

    QStringList tabTexts() const {
        QStringList texts;
        for (int tab = 0; tab < tabs()->count(); ++tab) {
            texts.append(tabs()->tabText(tab));
        }
        return texts;
    }

    void pressKey(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const {
        QKeyEvent event(QEvent::KeyPress, key, modifiers);
        QCoreApplication::sendEvent(window.get(), &event);
    }

    LogCapture log;
    QTemporaryDir home;
    NullAppearance appearance;
    Look look{appearance};
    const EngineCatalogue engines;
    ServiceEndpoints endpoints;
    SerialQueue disk{QStringLiteral("test.disk")};
    DefaultsStore store{disk, home.filePath(QStringLiteral("defaults.json"))};
    bool registered = (registerDefaultSettings(store), true); ///< Before the settings load.
    TranslationSettings settings{store};
    L10n l10n{settings.uiLanguage, QStringLiteral("en")};
    AnsweredDialogs dialogs;
    FakeChooser chooser;
    FakeOpener opener;
    FakeUpdates updates;
    UserPaths paths;
    int vrchatTests = 0;
    std::vector<OutputCard> cards = outputCards([this] { ++vrchatTests; });
    FileJobs modelFiles{disk};
    std::unique_ptr<WhisperPackages> packages;
    std::unique_ptr<NearRecognisers> recognisers;
    std::unique_ptr<WhisperModelManager> models;
    std::unique_ptr<QWidget> window;
};

} // namespace orv::test
