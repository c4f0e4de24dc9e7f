#pragma once

#include "AudioManager.h"
#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "Fakes.h"
#include "LogCapture.h"
#include "NullAudioCapture.h"
#include "PortProbe.h"
#include "Quit.h"
#include "RunRecovery.h"
#include "SerialQueue.h"
#include "TranslationController.h"
#include "TranslationEngine.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"
#include "WebSocketPeer.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <vector>

namespace orv::test {

class ToldPortProbe : public PortProbe {
  public:
    std::optional<bool> isPortInUse(quint16 /*port*/) override { return inUse; }

    bool inUse = true;
};

/// A run between a microphone that the test plays and a speech server that it scripts. The server
/// runs already, and is looked at again only when somebody doubts that it does.
class RecoveryFixture : public ::testing::Test {
  protected:
    RecoveryFixture() {
        MicrophonePreparation microphone;
        microphone.initialFormat = {48000, 1};
        microphone.format = {48000, 1};
        sound.answers().preparation = microphone;
        backend.startBackend();
        make();
    }

    void make(const std::vector<std::chrono::milliseconds>& pauses = {
                  std::chrono::milliseconds(1)}) {
        recovery.emplace(RecoveryEnvironment{.settings = settings,
                                             .audio = audio,
                                             .backend = backend,
                                             .controller = controller,
                                             .timings = {.pauses = pauses}});
        QObject::connect(&*recovery, &RunRecovery::interrupted, &*recovery,
                         [this] { told.append(recovery->interruption().trouble); });
    }

    void startRun() {
        controller.startTranslation();
        listenTo(1);
    }

    /// Waits until the speech server has been asked for a run for the `count`th time, and plays
    /// something to it.
    void listenTo(qsizetype count) {
        ASSERT_TRUE(
            waitUntil([&] { return server.messages(QStringLiteral("config")).size() >= count; }));
        ASSERT_TRUE(waitUntil([this] { return play(); }));
        ASSERT_TRUE(waitUntil([this] { return audio.progress().soundArrived.has_value(); }));
    }

    bool play() {
        const std::vector<float> samples(4096, 0.25F);
        return sound.deliver({.firstChannel = samples.data(), .frames = 4096, .stride = 1});
    }

    void breakLink() {
        server.command({{QStringLiteral("abort"), true}});
        ASSERT_TRUE(waitUntil([this] { return recovery->isInterrupted(); }));
    }

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{QStringLiteral("test.disk")};
    DefaultsStore store{disk, folder.filePath(QStringLiteral("defaults.json"))};
    TranslationSettings settings{store};
    NullAudioCapture sound;
    WebSocketPeer server;
    const EngineCatalogue engines;
    ToldPortProbe probe;
    FakeDialogs dialogs;
    TranslationEngine backend{
        BackendEnvironment{.interpreter = folder.filePath(QStringLiteral("python3")),
                           .script = folder.filePath(QStringLiteral("server.py")),
                           .probe = probe,
                           .dialogs = dialogs,
                           .text = keyAsText,
                           .networkAccess = [] { return false; },
                           .timings = {.modelLoading = std::chrono::milliseconds(1),
                                       .portRecheck = std::chrono::milliseconds(1),
                                       .stopPause = std::chrono::milliseconds(1),
                                       .doubt = std::chrono::milliseconds(1)}}};
    AudioManager audio{
        AudioEnvironment{.settings = settings,
                         .capture = sound,
                         .engines = engines,
                         .transcriptFolder = folder.path(),
                         .backendPort = server.port(),
                         .timings = {.linkReady = std::chrono::milliseconds(1),
                                     .meterRefresh = std::chrono::milliseconds(1),
                                     .progressRefresh = std::chrono::milliseconds(1),
                                     .watch = {.noSound = std::chrono::seconds(1)}}}};
    Quit quit{backend, {.panel = std::chrono::milliseconds(1)}};
    TranslationController controller{
        ControllerEnvironment{.settings = settings,
                              .capture = audio,
                              .backend = backend,
                              .dialogs = dialogs,
                              .text = keyAsText,
                              .quit = quit,
                              .timings = {.captureStart = std::chrono::milliseconds(1)}}};
    std::optional<RunRecovery> recovery;
    QList<RunTrouble> told;
};

} // namespace orv::test
