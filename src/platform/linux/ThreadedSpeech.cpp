#include "ThreadedSpeech.h"

#include "EventLoopThread.h"
#include "Log.h"
#include "ThreadChecks.h"

#include <QCoreApplication>

#include <future>
#include <mutex>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

/// Everything that is asked of the speech thread; a later request is merged into one that waits.
struct ThreadedSpeech::Request {
    bool prepare = false;
    bool stop = false;
    std::optional<QString> text = {}; ///< To be spoken; that stops what is being spoken.
};

/// What the speech thread works on. Shared with it, since a hung thread outlives the synthesiser.
class ThreadedSpeech::Worker {
  public:
    explicit Worker(EngineMaker maker)
        : maker_(std::move(maker)) {}

    /// Adds `request` to what waits. True when the thread has to be told.
    bool leave(Request request) {
        const std::lock_guard lock(mutex_);
        if (!waiting_) {
            waiting_ = std::move(request);
            return true;
        }
        waiting_->prepare |= request.prepare;
        if (request.stop || request.text) {
            waiting_->stop = request.stop;
            waiting_->text = std::move(request.text);
        }
        return false;
    }

    /// On the speech thread.
    void work() {
        const std::optional<Request> request = take();
        if (!request) {
            return;
        }
        if (request->prepare) {
            tried_ = false;
            makeEngine();
        }
        if (request->stop && engine_) {
            engine_->stop();
        }
        if (request->text) {
            say(*request->text);
        }
    }

    /// On the speech thread, as its last work.
    void end() {
        if (engine_) {
            engine_->stop();
        }
        engine_.reset();
        const std::lock_guard lock(mutex_);
        ended_ = true;
        dispose();
    }

    /// Takes a thread that nobody waits for; it goes when it comes to its end.
    void adopt(std::unique_ptr<EventLoopThread> thread) {
        const std::lock_guard lock(mutex_);
        waiting_.reset();
        adopted_ = thread.release();
        if (ended_) {
            dispose();
        }
    }

  private:
    /// A thread cannot join itself, so the main thread does it. After the program's end the system
    /// does.
    void dispose() {
        if (adopted_ != nullptr && QCoreApplication::instance() != nullptr) {
            post(QCoreApplication::instance(),
                 [thread = std::exchange(adopted_, nullptr)] { delete thread; });
        }
    }

    std::optional<Request> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(waiting_, std::nullopt);
    }

    void say(const QString& text) {
        makeEngine();
        if (engine_) {
            engine_->stop();
        }
        if (engine_ && !engine_->say(text)) {
            // The service went away since; it may have come back.
            engine_.reset();
            tried_ = false;
            makeEngine();
            if (engine_ && !engine_->say(text)) {
                engine_.reset();
                complain();
            }
        }
    }

    void makeEngine() {
        if (engine_ || std::exchange(tried_, true)) {
            return;
        }
        engine_ = maker_();
        if (!engine_) {
            complain();
        }
    }

    /// Says that nothing will be heard until the next attempt; the first time only.
    void complain() {
        if (!std::exchange(complained_, true)) {
            logLine(
                u"⚠️ Keine Sprachausgabe verfügbar - Übersetzungen werden nicht vorgelesen");
        }
    }

    const EngineMaker maker_;
    std::mutex mutex_;
    std::optional<Request> waiting_;
    bool ended_ = false;
    EventLoopThread* adopted_ = nullptr; ///< Owned, but the end of the program need not wait.

    // The speech thread's own.
    std::unique_ptr<SpeechEngine> engine_;
    bool tried_ = false;
    bool complained_ = false;
};

ThreadedSpeech::ThreadedSpeech(EngineMaker maker, SpeechTimings timings)
    : worker_(std::make_shared<Worker>(std::move(maker)))
    , timings_(timings) {}

ThreadedSpeech::~ThreadedSpeech() {
    ORV_ON_MAIN();
    if (!thread_) {
        return;
    }
    const auto ended = std::make_shared<std::promise<void>>();
    thread_->post([worker = worker_, ended] {
        worker->end();
        ended->set_value();
    });
    if (ended->get_future().wait_for(timings_.farewell) == std::future_status::timeout) {
        logLine(u"⚠️ Sprachausgabe antwortet nicht - wird nicht abgewartet");
        worker_->adopt(std::move(thread_));
    }
}

void ThreadedSpeech::prepare() {
    ORV_ON_MAIN();
    request({.prepare = true});
}

void ThreadedSpeech::speak(const QString& text) {
    ORV_ON_MAIN();
    request({.text = text});
}

void ThreadedSpeech::stop() {
    ORV_ON_MAIN();
    if (thread_) {
        request({.stop = true});
    }
}

void ThreadedSpeech::request(Request request) {
    if (!worker_->leave(std::move(request))) {
        return;
    }
    if (!thread_) {
        thread_ = std::make_unique<EventLoopThread>(u"io.tavrin.orv.speech"_s);
    }
    thread_->post([worker = worker_] { worker->work(); });
}

} // namespace orv
