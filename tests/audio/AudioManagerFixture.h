#pragma once

#include "AudioManager.h"
#include "DefaultsStore.h"
#include "EngineCatalogue.h"
#include "FakeEngine.h"
#include "LogCapture.h"
#include "NullAudioCapture.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"
#include "WebSocketPeer.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace orv::test {

/// An audio manager with a microphone played by the test, in front of a scripted backend. Its times
/// are short where a test waits for them to pass, and long where it must not depend on them.
class AudioManagerFixture : public testing::Test {
  protected:
    AudioManagerFixture();

    /// Makes the manager; what the test changes of the environment it changes before.
    void makeManager();

    /// Starts a microphone run and waits until buffers can be delivered.
    void startRun();

    /// Delivers `count` samples of this value in one buffer.
    void deliver(std::size_t count, float value = 0.25F);

    /// The samples that the backend got in its audio messages, one list each.
    QList<QByteArray> receivedAudio();

    /// Stops gracefully and waits for the end.
    void stopAndWait();

    LogCapture log;
    QTemporaryDir folder;
    SerialQueue disk{QStringLiteral("test.disk")};
    DefaultsStore store{disk, folder.filePath(QStringLiteral("defaults.json"))};
    TranslationSettings settings{store};
    NullAudioCapture capture;
    WebSocketPeer backend;
    AudioTimings timings;
    /// Stands in for every direct engine; without it there are the real ones.
    std::shared_ptr<FakeEngine> engine;
    EngineCatalogue engines;
    ServiceEndpoints endpoints; ///< Of the real ones.
    EngineTimings engineTimings;
    std::unique_ptr<AudioManager> manager;

    QList<AudioNotice> notices;
    QStringList fannedOut; ///< "name: original|translation", in the order of arrival.
};

} // namespace orv::test
