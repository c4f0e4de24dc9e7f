#pragma once

#include "AudioManager.h"
#include "ControlPanel.h"
#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "Fakes.h"
#include "FieldCombo.h"
#include "L10n.h"
#include "LogCapture.h"
#include "Look.h"
#include "NullAppearance.h"
#include "NullAudioCapture.h"
#include "PortProbe.h"
#include "Quit.h"
#include "RunRecovery.h"
#include "SerialQueue.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"
#include "VmixTracking.h"
#include "WaitUntil.h"

#include <QAbstractButton>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

namespace orv::test {

class FakePortProbe : public PortProbe {
  public:
    std::optional<bool> isPortInUse(quint16 /*port*/) override { return inUse; }

    bool inUse = false;
};

/// The panel with everything it shows and steers, where nothing but stand-ins is reached.
class ControlPanelFixture : public ::testing::Test {
  protected:
    ControlPanelFixture() {
        QObject::connect(&panel, &ControlPanel::settingsWanted, &panel,
                         [this] { ++settingsShown; });
        panel.show();
        drainEvents();
    }

    QString text(const QString& key) const { return l10n.platformText(key); }

    /// The button on screen that shows the text of `key`, or null.
    QAbstractButton* button(const QString& key) {
        for (QAbstractButton* candidate : panel.findChildren<QAbstractButton*>()) {
            if (candidate->isVisible() && candidate->text() == text(key)) {
                return candidate;
            }
        }
        return nullptr;
    }

    FieldCombo* field(const QString& key) {
        for (FieldCombo* candidate : panel.findChildren<FieldCombo*>()) {
            if (candidate->accessibleName() == text(key)) {
                return candidate;
            }
        }
        return nullptr;
    }

    bool shows(const QString& wanted) {
        for (const QLabel* label : panel.findChildren<QLabel*>()) {
            if (label->isVisible() && label->text() == wanted) {
                return true;
            }
        }
        return false;
    }

    /// The slider on screen that is called by the text of `key`, or null.
    QSlider* slider(const QString& key) {
        for (QSlider* candidate : panel.findChildren<QSlider*>()) {
            if (candidate->isVisible() && candidate->accessibleName() == text(key)) {
                return candidate;
            }
        }
        return nullptr;
    }

    /// Presses a key as a person does: whoever has the focus gets it, after the shortcuts.
    void pressKey(Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QTest::keyClick(panel.windowHandle(), key, modifiers);
    }

    /// Adopts a backend that somebody else runs.
    void adoptBackend() {
        probe.inUse = true;
        engine.startBackend();
    }

    static QImage picture(const QIcon& icon) { return icon.pixmap(32, 32).toImage(); }

    /// Types into a field and leaves it.
    static void typeInto(FieldCombo* combo, const QString& typed) {
        combo->lineEdit()->selectAll();
        QTest::keyClicks(combo->lineEdit(), typed);
        QTest::keyClick(combo->lineEdit(), Qt::Key_Return);
    }

    static void choose(FieldCombo* combo, const QString& id) {
        const int index = combo->findData(id);
        combo->setCurrentIndex(index);
        Q_EMIT combo->activated(index);
    }

    NullAppearance appearance;
    Look look{appearance};
    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{QStringLiteral("test.disk")};
    DefaultsStore store{disk, folder.path() + QStringLiteral("/defaults.json")};
    TranslationSettings settings{store};
    L10n l10n{settings.uiLanguage, QStringLiteral("en")};
    const EngineCatalogue engines;
    NullAudioCapture sound;
    FakePortProbe probe;
    FakeDialogs dialogs;
    FakeCapture capture;
    TranslationEngine engine{
        BackendEnvironment{.interpreter = folder.path() + QStringLiteral("/python3"),
                           .script = folder.path() + QStringLiteral("/server.py"),
                           .probe = probe,
                           .dialogs = dialogs,
                           .text = [this](const QString& key) { return text(key); },
                           .networkAccess = [] { return false; }}};
    AudioManager audio{AudioEnvironment{.settings = settings,
                                        .capture = sound,
                                        .engines = engines,
                                        .transcriptFolder = folder.path()}};
    Quit quit{engine, {.panel = std::chrono::milliseconds(1)}};
    TranslationController controller{
        ControllerEnvironment{.settings = settings,
                              .capture = capture,
                              .backend = engine,
                              .dialogs = dialogs,
                              .text = [this](const QString& key) { return text(key); },
                              .quit = quit,
                              .timings = {.captureStart = std::chrono::milliseconds(1)}}};
    RunRecovery recovery{RecoveryEnvironment{
        .settings = settings, .audio = audio, .backend = engine, .controller = controller}};
    VmixTracking vmix{settings};
    int settingsShown = 0;
    ControlPanel panel{{.settings = settings,
                        .engines = engines,
                        .audio = audio,
                        .engine = engine,
                        .controller = controller,
                        .recovery = recovery,
                        .l10n = l10n,
                        .vmix = vmix}};
};

} // namespace orv::test
