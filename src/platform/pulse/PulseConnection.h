#pragma once

#include "PulseHandles.h"
#include "PulseObjects.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace orv {

/// Where the sound server is, and the fixed times of talking to it.
struct PulseOptions {
    QByteArray server;                                ///< Address; empty: the user's own server.
    std::chrono::milliseconds firstReconnect{500};    ///< Pause before the first new try.
    std::chrono::milliseconds longestReconnect{5000}; ///< The pause doubles up to this.
    std::chrono::milliseconds retake{250}; ///< Pause before a lost monitor stream is opened again.
};

/// What may change at the sound server.
enum class PulseChange { Sources, Sinks, Playbacks, PlaybackMoved, Server };

/// Who follows what happens at the sound server. Called on the loop's thread with the loop's lock
/// held.
class PulseListener {
  public:
    virtual void pulseReady() {}

    virtual void pulseLost() {}

    virtual void pulseChanged(PulseChange /*change*/) {}

  protected:
    ~PulseListener() = default;
};

/// A one-shot timer on the loop's thread, which allocates only the first time it is scheduled.
/// Everything with the loop's lock held.
class PulseTimer {
  public:
    /// What is done when the time has come, on the loop's thread. It may schedule the timer again
    /// or cancel it, but not destroy it.
    using Action = std::function<void()>;

    PulseTimer(pa_mainloop_api* api, Action action)
        : api_(api)
        , action_(std::move(action)) {}

    ~PulseTimer() { cancel(); }

    PulseTimer(const PulseTimer&) = delete;
    PulseTimer& operator=(const PulseTimer&) = delete;

    /// Replaces what was scheduled before. `context` only lends its loop.
    void schedule(pa_context* context, std::chrono::microseconds delay);
    void cancel();

    bool isScheduled() const { return scheduled_; }

  private:
    static void fired(pa_mainloop_api* api, pa_time_event* event, const timeval* when, void* self);

    pa_mainloop_api* api_;
    pa_time_event* event_ = nullptr;
    bool scheduled_ = false;
    const Action action_;
};

/// The connection to the sound server with a thread of its own, made again whenever it breaks.
///
/// Made and destroyed on the main thread (never on the loop's). Everything else is called
/// on the loop's thread or with a `PulseLock` held, and every callback comes on the loop's thread
/// with that lock held. `owner` is only a mark by which `forget` withdraws callbacks.
class PulseConnection {
  public:
    template <typename Value>
    using ListDone = std::function<void(const std::optional<std::vector<Value>>& values)>;
    using SettledDone = std::function<void(bool ready)>;

    /// Null when the system has no descriptors left for the loop.
    static std::shared_ptr<PulseConnection> create(PulseOptions options);

    ~PulseConnection();
    PulseConnection(const PulseConnection&) = delete;
    PulseConnection& operator=(const PulseConnection&) = delete;

    const PulseOptions& options() const { return options_; }

    pa_threaded_mainloop* loop() const { return loop_.get(); }

    /// True on the loop's thread, which is the capture thread.
    bool isCurrent() const { return pa_threaded_mainloop_in_thread(loop_.get()) != 0; }

    pa_mainloop_api* api() const { return pa_threaded_mainloop_get_api(loop_.get()); }

    pa_context* context() const { return context_.get(); }

    /// What became of the connection before is not told again; see `isReady`.
    void addListener(PulseListener* listener);
    void removeListener(PulseListener* listener);

    bool isReady() const { return ready_; }

    /// Tells whether the server can be used, at once or when the try under way has come to an end.
    void whenSettled(const void* owner, SettledDone done);

    // Questions to the server. No value: the connection is not there or broke. A name that does
    // not exist yields an empty list.
    void listSources(const void* owner, ListDone<PulseSource> done);
    void findSource(const void* owner, const QByteArray& name, ListDone<PulseSource> done);
    void findSink(const void* owner, const QByteArray& name, ListDone<PulseSink> done);
    void listPlaybacks(const void* owner, ListDone<PulsePlayback> done);

    /// No callback for `owner` runs after this.
    void forget(const void* owner);

    /// Why the last operation failed, for people.
    QString lastError() const;

  private:
    PulseConnection(PulseMainloopHandle loop, PulseOptions options);

    struct Request {
        explicit Request(const void* theOwner)
            : owner(theOwner) {}

        virtual ~Request() = default;
        virtual void lost() = 0;
        const void* owner;
        PulseOperationHandle operation;
    };
    template <typename Info, typename Value, Value (*Convert)(const Info&)>
    struct ListRequest;

    template <typename Req, typename Start>
    void ask(std::unique_ptr<Req> request, Start start);
    std::unique_ptr<Request> take(const Request* request);

    void connect();
    void contextChanged();
    void ready();
    void failed();
    void subscribed(pa_subscription_event_type_t type);
    void settle(bool ready);

    const PulseOptions options_;
    PulseMainloopHandle loop_;
    PulseContextHandle context_;
    std::unique_ptr<PulseTimer> reconnect_;
    std::chrono::milliseconds pause_;
    bool ready_ = false;
    bool settled_ = false; ///< The first try, or a later one, has come to an end.
    std::vector<PulseListener*> listeners_;
    std::list<std::unique_ptr<Request>> requests_;
    std::list<std::pair<const void*, SettledDone>> waiting_;
};

/// Holds the loop's lock, so that nothing happens on its thread. Only for moments: the capture
/// thread waits meanwhile.
class PulseLock {
  public:
    explicit PulseLock(const PulseConnection& connection)
        : loop_(connection.loop()) {
        pa_threaded_mainloop_lock(loop_);
    }

    ~PulseLock() { pa_threaded_mainloop_unlock(loop_); }

    PulseLock(const PulseLock&) = delete;
    PulseLock& operator=(const PulseLock&) = delete;

  private:
    pa_threaded_mainloop* loop_;
};

} // namespace orv
