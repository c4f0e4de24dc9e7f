#pragma once

#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "L10n.h"
#include "LogCapture.h"
#include "Look.h"
#include "NullAppearance.h"
#include "OutputCards.h"
#include "SerialQueue.h"
#include "SettingsFakes.h"
#include "SettingsWindow.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QAbstractButton>
#include <QCoreApplication>
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
                                   .l10n = l10n,
                                   .dialogs = dialogs,
                                   .chooser = chooser,
                                   .opener = opener,
                                   .updates = updates,
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

    void press(const QString& name) const {
        auto* button = control<QAbstractButton>(name);
        ASSERT_NE(button, nullptr) << qPrintable(name);
        button->click();
    }

    bool shows(const QString& wanted) const {
        const auto labels = window->findChildren<QLabel*>();
        return std::ranges::any_of(labels, [&](const QLabel* label) {
            return label->isVisible() && label->text() == wanted;
        });
    }

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
    std::unique_ptr<QWidget> window;
};

} // namespace orv::test
