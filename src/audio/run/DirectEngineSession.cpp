#include "DirectEngineSession.h"

#include "AudioSender.h"
#include "DirectEngineTranscriptWriter.h"
#include "Log.h"
#include "ServiceError.h"
#include "ServiceStatus.h"
#include "SpeechQueue.h"
#include "ThreadChecks.h"

#include <chrono>
#include <exception>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

using Clock = SpeechQueue::TimePoint::clock;

/// How much sound is dropped before that is told, as long as none goes through.
constexpr std::chrono::seconds droppedAtOnce(5);

} // namespace

/// What the coroutines hold on to: they may outlive the session, the engine may not go before them.
struct DirectEngineSession::State {
    explicit State(std::chrono::milliseconds oldestSpeech)
        : waiting(oldestSpeech) {}

    enum class Connection { None, Opening, Open };

    std::shared_ptr<CloudSTTEngine> engine;
    QString product;
    std::int64_t sampleRate = 48000;
    SpeechQueue waiting;
    Connection connection = Connection::None;
    int underWay = 0;       ///< Calls of the engine's `sendAudio`.
    bool isPumping = false; ///< Inside `sendWaiting`.
    bool ended = false;
    bool drains = false; ///< Ended; disconnects once nothing waits any more.
    bool disconnected = false;
    bool abandoned = false; ///< The engine goes as soon as it is disconnected.
    std::function<void(const ServiceFault&)> tellFault;
    std::function<void()> blockDone; ///< Told after each block.
    std::function<void()> drained;   ///< Told once.

    std::chrono::milliseconds lengthOf(qsizetype bytes) const {
        return std::chrono::milliseconds(bytes / 2 * 1000 / sampleRate);
    }
};

namespace {

QString describe(const std::exception& error) {
    if (const auto* cloud = dynamic_cast<const CloudEngineError*>(&error)) {
        return cloud->errorDescription();
    }
    return QString::fromUtf8(error.what());
}

void logEngineError(const CloudSTTEngine& engine, const std::exception& error) {
    logLine(u"❌ Direct Engine "_s + engine.name() + u" Fehler: "_s + describe(error));
}

/// The fault behind an error, if there is one that people should know.
std::optional<ServiceFault> faultIn(const std::exception& error) {
    if (const auto* failed = dynamic_cast<const ServiceError*>(&error)) {
        return failed->fault();
    }
    if (const auto* refused = dynamic_cast<const CloudEngineError*>(&error)) {
        return refused->fault();
    }
    return std::nullopt;
}

template <typename StatePtr>
void tellError(StatePtr state, const std::exception& error) {
    logEngineError(*state->engine, error);
    if (const auto fault = faultIn(error)) {
        state->tellFault(*fault);
    }
}

template <typename StatePtr>
void tellDropped(StatePtr state) {
    const auto length = state->lengthOf(state->waiting.takeDropped());
    const QString seconds = QString::number(static_cast<double>(length.count()) / 1000, 'f', 1);
    logLine(u"⚠️ Direct Engine "_s + state->engine->name() + u": "_s + seconds +
            u" s Ton verworfen, der zu lange gewartet hat"_s);
    state->tellFault({ServiceFault::Kind::TooSlow, seconds + u" s"_s});
}

/// Coroutines take what they need by value: a lambda's captures die with the lambda.
template <typename StatePtr>
QCoro::Task<> disconnectEngine(StatePtr state) {
    co_await state->engine->disconnect();
    state->disconnected = true;
    if (state->abandoned) {
        state->engine.reset(); // Gives up what is under way.
    } else {
        state->drained();
    }
}

template <typename StatePtr>
void sendWaiting(StatePtr state, SpeechQueue::TimePoint now = Clock::now());

template <typename StatePtr>
QCoro::Task<> sendBlock(StatePtr state, QByteArray pcm) {
    ++state->underWay;
    try {
        co_await state->engine->sendAudio(pcm);
    } catch (const std::exception& error) {
        if (!state->abandoned) {
            tellError(state, error);
        }
    }
    --state->underWay;
    if (state->abandoned) {
        co_return;
    }
    if (state->blockDone) {
        state->blockDone();
    }
    sendWaiting(state);
}

/// Sends what may go now, and disconnects behind the last of it.
template <typename StatePtr>
void sendWaiting(StatePtr state, SpeechQueue::TimePoint now) {
    using Connection = decltype(state->connection);
    if (std::exchange(state->isPumping, true)) {
        return; // A block that was done at once; the loop below goes on.
    }
    while (state->connection == Connection::Open &&
           state->underWay < state->engine->requestsAtOnce()) {
        auto pcm = state->waiting.take(now);
        if (state->waiting.dropped() > 0) {
            tellDropped(state);
        }
        if (!pcm) {
            break;
        }
        sendBlock(state, *std::move(pcm));
    }
    state->isPumping = false;
    if (state->drains && state->waiting.isEmpty() && state->underWay == 0) {
        state->drains = false;
        disconnectEngine(state);
    }
}

template <typename StatePtr>
QCoro::Task<> connectEngine(StatePtr state, CloudEngineConfig config, DirectEngineSession* session,
                            PostTarget::Handle target) {
    using Connection = decltype(state->connection);
    state->connection = Connection::Opening;
    try {
        co_await state->engine->connect(config);
        if (state->ended && !state->drains) {
            co_return; // Disconnected again.
        }
        logLine(u"✅ Direct Engine "_s + state->engine->name() + u" verbunden"_s);
        state->connection = Connection::Open;
    } catch (const std::exception& error) {
        state->connection = Connection::None;
        if (state->abandoned) {
            co_return;
        }
        tellError(state, error);
        state->waiting.clear();
        if (!state->ended) {
            target.post([session] { Q_EMIT session->openFailed(); });
        }
    }
    sendWaiting(state);
}

/// Brings sound from the send queue to its session.
class Inlet : public PcmSink {
  public:
    Inlet(DirectEngineSession& session, PostTarget::Handle target)
        : session_(&session)
        , target_(std::move(target)) {}

    void take(QByteArray pcm) override {
        target_.post([session = session_, pcm = std::move(pcm)]() mutable {
            session->sendAudio(std::move(pcm));
        });
    }

    void end() override {
        target_.post([session = session_] { session->end(); });
    }

  private:
    DirectEngineSession* const session_; ///< There as long as the target is.
    const PostTarget::Handle target_;
};

} // namespace

DirectEngineSession::DirectEngineSession(
    std::shared_ptr<CloudSTTEngine> engine, QString product, std::chrono::milliseconds oldestSpeech,
    std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter)
    : state_(std::make_shared<State>(oldestSpeech))
    , directTranscriptWriter_(std::move(directTranscriptWriter))
    , target_(std::make_unique<PostTarget>()) {
    ORV_ON_MAIN();
    state_->engine = std::move(engine);
    state_->product = std::move(product);
    state_->tellFault = [this, target = target_->handle(),
                         product = state_->product](const ServiceFault& fault) {
        target.post(
            [this, status = serviceStatus(product, fault)] { Q_EMIT faultArrived(status); });
    };
    state_->drained = [this, target = target_->handle()] {
        target.post([this] { Q_EMIT drained(); });
    };
    state_->engine->onFault = state_->tellFault;
    state_->engine->onTranslation = [this, target = target_->handle(),
                                     transcript = std::weak_ptr(directTranscriptWriter_)](
                                        const QString& original, const QString& translation) {
        // At once: what has been delivered must not be lost on its way to the main thread.
        if (const auto open = transcript.lock()) {
            open->append(original, translation);
        }
        target.post(
            [this, result = Result{original, translation}] { Q_EMIT resultArrived(result); });
    };
    if (!isStreaming()) {
        state_->blockDone = [this, target = target_->handle()] {
            target.post([this] { Q_EMIT blockAccepted(); });
        };
    }
    state_->engine->onStatus = [this, target = target_->handle()](const QString& status,
                                                                  const QString& message) {
        logLine(u"📋 Direct Engine Status: ["_s + status + u"] "_s + message);
        target.post([this, status, message] { Q_EMIT statusArrived(status, message); });
    };
}

DirectEngineSession::~DirectEngineSession() {
    ORV_ON_MAIN();
    target_.reset();
    finish();
    state_->abandoned = true;
    state_->engine->onTranslation = {};
    state_->waiting.clear();
    if (!std::exchange(state_->ended, true) || std::exchange(state_->drains, false)) {
        disconnectEngine(state_);
    }
    if (state_->disconnected) {
        state_->engine.reset();
    }
    if (directTranscriptWriter_) {
        directTranscriptWriter_->close();
    }
}

void DirectEngineSession::open(const CloudEngineConfig& config) {
    ORV_ON_MAIN();
    state_->sampleRate = config.sampleRate;
    connectEngine(state_, config, this, target_->handle());
}

std::shared_ptr<PcmSink> DirectEngineSession::pcmSink() {
    return std::make_shared<Inlet>(*this, target_->handle());
}

void DirectEngineSession::sendAudio(QByteArray pcm) {
    ORV_ON_MAIN();
    if (state_->ended) {
        return;
    }
    const auto now = Clock::now();
    state_->waiting.add(std::move(pcm), now);
    if (state_->lengthOf(state_->waiting.dropped()) >= droppedAtOnce) {
        tellDropped(state_);
    }
    sendWaiting(state_, now);
}

void DirectEngineSession::finish() {
    ORV_ON_MAIN();
    // That its connection is over now is no news.
    state_->engine->onStatus = {};
}

void DirectEngineSession::end() {
    ORV_ON_MAIN();
    if (std::exchange(state_->ended, true)) {
        return;
    }
    if (state_->connection == State::Connection::None) {
        state_->waiting.clear();
    }
    state_->drains = true;
    sendWaiting(state_);
}

bool DirectEngineSession::isStreaming() const {
    return state_->engine->isStreaming();
}

} // namespace orv
