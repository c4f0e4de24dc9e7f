#pragma once

#include "DefaultsStore.h"
#include "LogCapture.h"
#include "OverlayServer.h"
#include "SerialQueue.h"
#include "TranslationSettings.h"
#include "WaitUntil.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace orv::test {

/// A server and settings of its own, whose look it follows. Ports are chosen by the system, so that
/// tests can run beside each other.
class OverlayServerFixture : public testing::Test {
  protected:
    OverlayServerFixture() {
        watchOverlayAppearance(settings, &settings, [this](const OverlayAppearance& appearance) {
            server->setAppearance(appearance);
        });
    }

    /// Has `asked` run or not, as the settings say.
    void applySettings(OverlayServer& asked) {
        asked.applySettings(OverlayServing::fromSettings(settings));
    }

    /// Limits of tests that look at silent clients: those are to be accepted at once.
    static OverlayLimits withoutDeferral() {
        OverlayLimits limits;
        limits.acceptDeferral = {};
        return limits;
    }

    void replaceServer(OverlayLimits limits) { server = std::make_unique<OverlayServer>(limits); }

    /// Starts a server that does not run yet; gives its port.
    std::uint16_t startAnywhere() {
        server->start(0);
        EXPECT_TRUE(waitUntil([this] { return server->isRunning(); }));
        return server->activePort();
    }

    void stopAndWait() {
        server->stop();
        ASSERT_TRUE(waitUntil([this] { return !server->isRunning(); }));
    }

    QTemporaryDir folder;
    SerialQueue disk{QStringLiteral("test.disk")};
    DefaultsStore store{disk, folder.filePath(QStringLiteral("defaults.json"))};
    TranslationSettings settings{store};
    LogCapture log;
    std::unique_ptr<OverlayServer> server = std::make_unique<OverlayServer>();
};

} // namespace orv::test
