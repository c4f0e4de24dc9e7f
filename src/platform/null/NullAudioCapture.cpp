#include "NullAudioCapture.h"

#include "Post.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

struct NullAudioCapture::State {
    Answers answers;
    Asked asked;
    Microphone* microphone = nullptr;       ///< The running one.
    ScreenCapture* screenCapture = nullptr; ///< The running one.
};

class NullAudioCapture::Microphone final : public MicrophoneStream {
  public:
    explicit Microphone(std::shared_ptr<State> state)
        : state_(std::move(state)) {}

    ~Microphone() override { release(); }

    void prepare(const QString& deviceId,
                 std::function<void(const MicrophonePreparation&)> done) override {
        ++state_->asked.preparations;
        state_->asked.deviceId = deviceId;
        post(&context_,
             [done = std::move(done), answer = state_->answers.preparation] { done(answer); });
    }

    void start(std::size_t framesPerBuffer, BufferHandler onBuffer, StoppedHandler onStopped,
               std::function<void(const QString& error)> done) override {
        state_->asked.framesPerBuffer = framesPerBuffer;
        onBuffer_ = std::move(onBuffer);
        onStopped_ = std::move(onStopped);
        post(&context_,
             [this, done = std::move(done), error = state_->answers.microphoneStartError] {
                 if (error.isEmpty()) {
                     state_->microphone = this;
                 }
                 done(error);
             });
    }

    void deliver(const MicrophoneBuffer& buffer) { onBuffer_(buffer); }

    void end(const QString& error) {
        release();
        post(&context_, [handler = onStopped_, error] { handler(error); });
    }

  private:
    void release() {
        if (state_->microphone == this) {
            state_->microphone = nullptr;
        }
    }

    std::shared_ptr<State> state_;
    QObject context_;
    BufferHandler onBuffer_;
    StoppedHandler onStopped_;
};

class NullAudioCapture::ScreenCapture final : public ScreenCaptureStream {
  public:
    explicit ScreenCapture(std::shared_ptr<State> state)
        : state_(std::move(state)) {}

    ~ScreenCapture() override { release(); }

    void start(const ScreenCaptureRequest& request, BlockHandler onBlock, StoppedHandler onStopped,
               std::function<void(const ScreenCaptureStart&)> done) override {
        ++state_->asked.screenCaptureStarts;
        state_->asked.screenCapture = request;
        onBlock_ = std::move(onBlock);
        onStopped_ = std::move(onStopped);
        post(&context_, [this, done = std::move(done), answer = state_->answers.screenCapture] {
            if (isOver_) {
                return;
            }
            if (answer.error.isEmpty()) {
                state_->screenCapture = this;
            }
            done(answer);
        });
    }

    void stop(std::function<void(const QString& error)> done) override {
        isOver_ = true;
        release();
        post(&context_, [done = std::move(done), error = state_->answers.screenCaptureStopError] {
            done(error);
        });
    }

    void deliver(std::span<const std::byte> block) { onBlock_(block); }

    void end(const QString& error) {
        release();
        post(&context_, [this, handler = onStopped_, error] {
            if (!isOver_) {
                handler(error);
            }
        });
    }

  private:
    void release() {
        if (state_->screenCapture == this) {
            state_->screenCapture = nullptr;
        }
    }

    std::shared_ptr<State> state_;
    QObject context_;
    bool isOver_ = false;
    BlockHandler onBlock_;
    StoppedHandler onStopped_;
};

NullAudioCapture::Answers::Answers() {
    preparation.failure = MicrophoneFailure::NoInput;
    screenCapture.displayFound = false;
    screenCapture.error = u"Keine Audio-Ausgabe vorhanden"_s;
}

NullAudioCapture::NullAudioCapture()
    : state_(std::make_shared<State>()) {}

NullAudioCapture::~NullAudioCapture() = default;

NullAudioCapture::Answers& NullAudioCapture::answers() {
    return state_->answers;
}

const NullAudioCapture::Asked& NullAudioCapture::asked() const {
    return state_->asked;
}

bool NullAudioCapture::isMicrophoneRunning() const {
    return state_->microphone != nullptr;
}

bool NullAudioCapture::isScreenCaptureRunning() const {
    return state_->screenCapture != nullptr;
}

bool NullAudioCapture::deliver(const MicrophoneBuffer& buffer) {
    if (!isMicrophoneRunning()) {
        return false;
    }
    state_->microphone->deliver(buffer);
    return true;
}

bool NullAudioCapture::deliverBlock(std::span<const std::byte> block) {
    if (!isScreenCaptureRunning()) {
        return false;
    }
    state_->screenCapture->deliver(block);
    return true;
}

bool NullAudioCapture::endMicrophone(const QString& error) {
    if (!isMicrophoneRunning()) {
        return false;
    }
    state_->microphone->end(error);
    return true;
}

bool NullAudioCapture::endScreenCapture(const QString& error) {
    if (!isScreenCaptureRunning()) {
        return false;
    }
    state_->screenCapture->end(error);
    return true;
}

void NullAudioCapture::tellListsChanged() {
    post(&context_, [this] {
        if (onListsChanged_) {
            onListsChanged_();
        }
    });
}

void NullAudioCapture::tellAvailability(bool available) {
    post(&context_, [this, available] {
        if (onAvailability_) {
            onAvailability_(available);
        }
    });
}

void NullAudioCapture::microphoneAuthorization(std::function<void(CaptureAuthorization)> done) {
    post(&context_,
         [done = std::move(done), answer = state_->answers.authorization] { done(answer); });
}

void NullAudioCapture::requestMicrophoneAccess(std::function<void(bool granted)> done) {
    ++state_->asked.accessRequests;
    post(&context_,
         [done = std::move(done), answer = state_->answers.accessGranted] { done(answer); });
}

void NullAudioCapture::listInputDevices(std::function<void(const QList<AudioDevice>&)> done) {
    ++state_->asked.listings;
    post(&context_,
         [done = std::move(done), answer = state_->answers.inputDevices] { done(answer); });
}

void NullAudioCapture::listCapturableApps(
    std::function<void(const std::optional<QList<RunningApp>>&)> done) {
    ++state_->asked.listings;
    post(&context_,
         [done = std::move(done), answer = state_->answers.capturableApps] { done(answer); });
}

void NullAudioCapture::listRunningApps(std::function<void(const QList<RunningApp>&)> done) {
    ++state_->asked.listings;
    post(&context_,
         [done = std::move(done), answer = state_->answers.runningApps] { done(answer); });
}

std::unique_ptr<MicrophoneStream> NullAudioCapture::createMicrophoneStream() {
    return std::make_unique<Microphone>(state_);
}

std::unique_ptr<ScreenCaptureStream> NullAudioCapture::createScreenCaptureStream() {
    return std::make_unique<ScreenCapture>(state_);
}

void NullAudioCapture::setListsChangedHandler(std::function<void()> handler) {
    onListsChanged_ = std::move(handler);
}

void NullAudioCapture::setAvailabilityHandler(std::function<void(bool available)> handler) {
    onAvailability_ = std::move(handler);
}

} // namespace orv
