#include "ThreadedSpeech.h"

#include "EventLoopThread.h"
#include "Log.h"

#include <QThread>

#include <future>
#include <mutex>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

struct ThreadedSpeech::Request {
    enum class Kind { Prepare, Speak, Stop };

    Kind kind = Kind::Prepare;
    QString text = {};
};

/// What the speech thread works on. Shared with it, since a hung thread outlives the synthesiser.
class ThreadedSpeech::Worker {
  public:
    explicit Worker(EngineMaker maker)
        : maker_(std::move(maker)) {}

    /// Leaves `request` in place of what waits. True when the thread has to be told.
    bool leave(Request request) {
        const std::lock_guard lock(mutex_);
        const bool empty = !waiting_.has_value();
        if (empty || request.kind != Request::Kind::Prepare) {
            waiting_ = std::move(request);
        }
        return empty;
    }

    /// On the speech thread.
    void work() {
        if (const std::optional<Request> request = take()) {
            switch (request->kind) {
            case Request::Kind::Prepare:
                tried_ = false;
                makeEngine();
                break;
            case Request::Kind::Stop:
                if (engine_) {
                    engine_->stop();
                }
                break;
            case Request::Kind::Speak:
                say(request->text);
                break;
            }
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
        if (abandoned_) {
            QThread::currentThread()->quit();
        }
    }

    /// Nobody waits for the thread any more. False when it has come to its end after all.
    bool abandon() {
        const std::lock_guard lock(mutex_);
        waiting_.reset();
        abandoned_ = !ended_;
        return abandoned_;
    }

  private:
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
            }
        }
    }

    void makeEngine() {
        if (engine_ || std::exchange(tried_, true)) {
            return;
        }
        engine_ = maker_();
        if (!engine_ && !std::exchange(complained_, true)) {
            logLine(u"⚠️ Keine Sprachausgabe verfügbar - Übersetzungen werden nicht vorgelesen");
        }
    }

    const EngineMaker maker_;
    std::mutex mutex_;
    std::optional<Request> waiting_;
    bool ended_ = false;
    bool abandoned_ = false;

    // The speech thread's own.
    std::unique_ptr<SpeechEngine> engine_;
    bool tried_ = false;
    bool complained_ = false;
};

ThreadedSpeech::ThreadedSpeech(EngineMaker maker, SpeechTimings timings)
    : worker_(std::make_shared<Worker>(std::move(maker)))
    , timings_(timings) {}

ThreadedSpeech::~ThreadedSpeech() {
    if (!thread_) {
        return;
    }
    const auto ended = std::make_shared<std::promise<void>>();
    thread_->post([worker = worker_, ended] {
        worker->end();
        ended->set_value();
    });
    if (ended->get_future().wait_for(timings_.farewell) == std::future_status::timeout &&
        worker_->abandon()) {
        logLine(u"⚠️ Sprachausgabe antwortet nicht - wird nicht abgewartet");
        // Deliberately given up: destroying it would wait.
        static_cast<void>(thread_.release());
    }
}

void ThreadedSpeech::prepare() {
    request({.kind = Request::Kind::Prepare});
}

void ThreadedSpeech::speak(const QString& text) {
    request({.kind = Request::Kind::Speak, .text = text});
}

void ThreadedSpeech::stop() {
    if (thread_) {
        request({.kind = Request::Kind::Stop});
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
