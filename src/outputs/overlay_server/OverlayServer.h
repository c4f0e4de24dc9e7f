#pragma once

#include "EventLoopThread.h"
#include "Output.h"
#include "OverlayContent.h"
#include "OverlayLimits.h"
#include "OverlayListener.h"
#include "OverlayPage.h"
#include "OverlayRequestHandler.h"
#include "Result.h"
#include "SharedInstance.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <system_error>

namespace orv {

class OverlayConnections;
class SettingsList;

/// The port to listen on for a stored one: below 1 it is `defaultOverlayPort`, above 65535 it is
/// 65535.
std::uint16_t overlayPort(std::int64_t stored);

/// Whether and where the server is to run.
struct OverlayServing {
    bool enabled = false;
    std::int64_t port = 0; ///< As it is stored: see `overlayPort`.

    static OverlayServing fromSettings(const SettingsList& settings);
};

/// A small HTTP server on a local port for browser sources: a transparent subtitle page, and the
/// latest result as JSON, which that page polls.
///
/// The listener and its connections live on a thread of their own. `applySettings`, `start` and
/// `stop` only post to it and return at once; they take effect in the order of the calls, and
/// `isRunning` follows. They may be called from any thread. The results outlive stop and start.
///
/// Of results only the latest is kept: a page sees the one that is the latest at its poll, and none
/// of those between two polls.
class OverlayServer : public Output, private OverlayRequestHandler {
  public:
    /// Looks as the defaults say. Nothing runs until `applySettings` or `start`.
    explicit OverlayServer(OverlayLimits limits = {});

    /// Closes the listener and every connection and joins the thread. No line says so.
    ~OverlayServer() override;

    OverlayServer(const OverlayServer&) = delete;
    OverlayServer& operator=(const OverlayServer&) = delete;

    /// The process-wide instance: the one there is. Nothing inside the libraries asks for it.
    static OverlayServer& shared();

    /// Makes the server what the last `serving` says by the time its thread gets to it: running on
    /// that port, or stopped. Does nothing when it already is.
    void applySettings(const OverlayServing& serving);

    /// How the page looks from now on; pages that are open follow with their next poll. Callable
    /// from any thread.
    void setAppearance(const OverlayAppearance& appearance);

    /// Stops a running listener and opens one on `port` of every interface; the log tells whether
    /// that worked. Port 0 lets the system choose.
    void start(std::uint16_t port);

    /// Closes the listener. Requests that were accepted before are still answered.
    void stop();

    void take(const Result& result) override { broadcast(result); }

    /// Keeps the result as the latest one, whether the server runs or not. Callable from any
    /// thread.
    void broadcast(const Result& result);

    /// Whether connections are accepted. Callable from any thread.
    bool isRunning() const { return isRunning_; }

    /// The port of the listener that runs, or ran last; 0 before the first. Callable from any
    /// thread.
    std::uint16_t activePort() const { return activePort_; }

    /// What `path` is answered with now. Callable from any thread.
    HttpResponse response(QByteArrayView path) const;

    /// The page with the latest appearance. Callable from any thread.
    QByteArray overlayHTML() const;

  private:
    void reconcile();
    void startNow(std::uint16_t port);
    void stopNow();
    QByteArray answerTo(QByteArrayView path) const override;
    void listenerFailed(std::error_code error) override;
    HttpResponse latestResult() const;

    const OverlayLimits limits_;
    std::optional<OverlayListener> listener_;
    std::unique_ptr<OverlayConnections> connections_; ///< None before the first start.
    EventLoopThread queue_;                           ///< Owns the two above.

    mutable std::mutex lock_; ///< Guards what follows, up to the two encodings.
    OverlayServing serving_;
    OverlayResult result_; ///< The latest one, with the latest appearance.

    /// What was served last and what it was made from. As long as that is the same, and for most
    /// polls it is, so are the bytes.
    template <typename Source>
    struct Encoded {
        std::optional<Source> source;
        QByteArray bytes;
    };

    mutable Encoded<OverlayResult> encodedResult_;
    mutable Encoded<OverlayAppearance> encodedPage_;

    std::atomic<bool> isRunning_ = false;
    std::atomic<std::uint16_t> activePort_ = 0;
    SharedInstance<OverlayServer> sharedInstance_{*this};
};

} // namespace orv
