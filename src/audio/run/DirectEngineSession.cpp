#include "DirectEngineSession.h"

#include "AudioSender.h"
#include "DirectEngineTranscriptWriter.h"
#include "Log.h"
#include "ServiceError.h"
#include "ServiceStatus.h"
#include "ThreadChecks.h"

#include <deque>
#include <exception>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// Bytes that wait for the engine: over five minutes of sound at 48 kHz. A service that is slower
/// than speech must not fill the memory.
constexpr qsizetype mostWaiting = qsizetype(32) << 20;

} // namespace

/// What the coroutines hold on to: they may outlive the session, the engine may not go before them.
struct DirectEngineSession::State {
    std::shared_ptr<CloudSTTEngine> engine;
    QString product;
    std::function<void(const ServiceFault&)> tellFault;
    std::deque<QByteArray> waiting;
    qsizetype waitingBytes = 0;
    bool connected = false;
    bool sending = false;
    bool ended = false;
    bool drains = false; ///< Ended; disconnects once nothing waits any more.
    bool disconnected = false;
    std::function<void()> blockDone; ///< Told after each block.
    bool abandoned = false;          ///< The engine goes as soon as it is disconnected.

    void enqueue(QByteArray pcm) {
        waitingBytes += pcm.size();
        waiting.push_back(std::move(pcm));
    }

    QByteArray dequeue() {
        QByteArray pcm = std::move(waiting.front());
        waiting.pop_front();
        waitingBytes -= pcm.size();
        return pcm;
    }

    void dropWaiting() {
        waiting.clear();
        waitingBytes = 0;
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
    const auto fault = faultIn(error);
    if (fault && state->tellFault) {
        state->tellFault(*fault);
    }
}

/// Coroutines take what they need by value: a lambda's captures die with the lambda.
template <typename StatePtr>
QCoro::Task<> disconnectEngine(StatePtr state) {
    co_await state->engine->disconnect();
    state->disconnected = true;
    if (state->abandoned) {
        state->engine.reset(); // Gives up what is under way.
    }
}

template <typename StatePtr>
QCoro::Task<> sendWaiting(StatePtr state) {
    if (!state->connected || state->sending) {
        co_return;
    }
    state->sending = true;
    while (!state->waiting.empty()) {
        try {
            co_await state->engine->sendAudio(state->dequeue());
        } catch (const std::exception& error) {
            if (!state->abandoned) {
                tellError(state, error);
            }
        }
        if (state->blockDone) {
            state->blockDone();
        }
    }
    state->sending = false;
    if (std::exchange(state->drains, false)) {
        disconnectEngine(state);
    }
}

template <typename StatePtr>
QCoro::Task<> connectEngine(StatePtr state, CloudEngineConfig config, DirectEngineSession* session,
                            PostTarget::Handle target) {
    try {
        co_await state->engine->connect(config);
        if (state->ended) {
            co_return;
        }
        logLine(u"✅ Direct Engine "_s + state->engine->name() + u" verbunden"_s);
        state->connected = true;
        sendWaiting(state);
    } catch (const std::exception& error) {
        if (state->ended) {
            co_return;
        }
        tellError(state, error);
        target.post([session] { Q_EMIT session->openFailed(); });
    }
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
    std::shared_ptr<CloudSTTEngine> engine, QString product,
    std::shared_ptr<DirectEngineTranscriptWriter> directTranscriptWriter)
    : state_(std::make_shared<State>())
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
    end();
    state_->abandoned = true;
    state_->dropWaiting();
    if (std::exchange(state_->drains, false)) {
        disconnectEngine(state_);
    }
    if (state_->disconnected) {
        state_->engine.reset();
    }
}

void DirectEngineSession::open(const CloudEngineConfig& config) {
    ORV_ON_MAIN();
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
    state_->enqueue(std::move(pcm));
    if (state_->waitingBytes > mostWaiting) {
        state_->dequeue();
        logLine(u"⚠️ Direct Engine "_s + state_->engine->name() +
                u": Rückstau, ältester Block verworfen"_s);
    }
    sendWaiting(state_);
}

void DirectEngineSession::finish() {
    ORV_ON_MAIN();
    // That its connection is over now is no news.
    state_->engine->onStatus = {};
    if (directTranscriptWriter_) {
        directTranscriptWriter_->close();
        directTranscriptWriter_.reset();
    }
    if (isStreaming()) {
        end();
    }
}

void DirectEngineSession::end() {
    ORV_ON_MAIN();
    if (std::exchange(state_->ended, true)) {
        return;
    }
    if (isStreaming() || !state_->connected) {
        state_->dropWaiting();
    }
    state_->drains = !state_->waiting.empty();
    if (!state_->drains) {
        disconnectEngine(state_);
    }
}

bool DirectEngineSession::isStreaming() const {
    return state_->engine->isStreaming();
}

} // namespace orv
