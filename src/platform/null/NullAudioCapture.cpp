#include "NullAudioCapture.h"

#include "Post.h"
#include "ThreadChecks.h"

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
    Microphone(std::shared_ptr<State> state, Listener& listener)
        : state_(std::move(state))
        , listener_(listener) {}

    ~Microphone() override { release(); }

    void prepare(const QString& deviceId) override {
        ORV_ON_MAIN();
        ++state_->asked.preparations;
        state_->asked.deviceId = deviceId;
        post(&context_, [this, answer = state_->answers.preparation] {
            listener_.microphonePrepared(answer);
        });
    }

    void start(std::size_t framesPerBuffer) override {
        ORV_ON_MAIN();
        state_->asked.framesPerBuffer = framesPerBuffer;
        post(&context_, [this, error = state_->answers.microphoneStartError] {
            if (error.isEmpty()) {
                state_->microphone = this;
            }
            listener_.microphoneStarted(error);
        });
    }

    void finish() override {
        ORV_ON_MAIN();
        const std::vector<float>& rest = state_->answers.gatheredRest;
        if (state_->microphone == this && !rest.empty()) {
            deliver({.firstChannel = rest.data(), .frames = rest.size(), .stride = 1});
        }
        release();
    }

    void deliver(const MicrophoneBuffer& buffer) { listener_.microphoneBuffer(buffer); }

    void end(const QString& error) {
        release();
        post(&context_, [this, error] { listener_.microphoneStopped(error); });
    }

  private:
    void release() {
        if (state_->microphone == this) {
            state_->microphone = nullptr;
        }
    }

    std::shared_ptr<State> state_;
    Listener& listener_;
    QObject context_;
};

class NullAudioCapture::ScreenCapture final : public ScreenCaptureStream {
  public:
    ScreenCapture(std::shared_ptr<State> state, Listener& listener)
        : state_(std::move(state))
        , listener_(listener) {}

    ~ScreenCapture() override { release(); }

    void start(const ScreenCaptureRequest& request) override {
        ORV_ON_MAIN();
        ++state_->asked.screenCaptureStarts;
        state_->asked.screenCapture = request;
        post(&context_, [this, answer = state_->answers.screenCapture] {
            if (isOver_) {
                return;
            }
            if (answer.error.isEmpty()) {
                state_->screenCapture = this;
            }
            listener_.screenCaptureStarted(answer);
        });
    }

    void stop(Answer<const QString&> done) override {
        ORV_ON_MAIN();
        isOver_ = true;
        release();
        post(&context_, [done = std::move(done), error = state_->answers.screenCaptureStopError] {
            done(error);
        });
    }

    void deliver(std::span<const std::byte> block) { listener_.screenCaptureBlock(block); }

    void end(const QString& error) {
        release();
        post(&context_, [this, error] {
            if (!isOver_) {
                listener_.screenCaptureStopped(error);
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
    Listener& listener_;
    QObject context_;
    bool isOver_ = false;
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
    ORV_ON_MAIN();
    if (!isMicrophoneRunning()) {
        return false;
    }
    state_->microphone->end(error);
    return true;
}

bool NullAudioCapture::endScreenCapture(const QString& error) {
    ORV_ON_MAIN();
    if (!isScreenCaptureRunning()) {
        return false;
    }
    state_->screenCapture->end(error);
    return true;
}

void NullAudioCapture::tellListsChanged() {
    post(&context_, [this] {
        if (listener_) {
            listener_->captureListsChanged();
        }
    });
}

void NullAudioCapture::tellAvailability(bool available) {
    post(&context_, [this, available] {
        if (listener_) {
            listener_->captureAvailabilityChanged(available);
        }
    });
}

void NullAudioCapture::microphoneAuthorization(Answer<CaptureAuthorization> done) {
    ORV_ON_MAIN();
    post(&context_,
         [done = std::move(done), answer = state_->answers.authorization] { done(answer); });
}

void NullAudioCapture::requestMicrophoneAccess(Answer<bool> done) {
    ORV_ON_MAIN();
    ++state_->asked.accessRequests;
    post(&context_,
         [done = std::move(done), answer = state_->answers.accessGranted] { done(answer); });
}

void NullAudioCapture::listInputDevices(Answer<const QList<AudioDevice>&> done) {
    ORV_ON_MAIN();
    ++state_->asked.listings;
    post(&context_,
         [done = std::move(done), answer = state_->answers.inputDevices] { done(answer); });
}

void NullAudioCapture::listCapturableApps(Answer<const std::optional<QList<RunningApp>>&> done) {
    ORV_ON_MAIN();
    ++state_->asked.listings;
    post(&context_,
         [done = std::move(done), answer = state_->answers.capturableApps] { done(answer); });
}

void NullAudioCapture::listRunningApps(Answer<const QList<RunningApp>&> done) {
    ORV_ON_MAIN();
    ++state_->asked.listings;
    post(&context_,
         [done = std::move(done), answer = state_->answers.runningApps] { done(answer); });
}

std::unique_ptr<MicrophoneStream>
NullAudioCapture::createMicrophoneStream(MicrophoneStream::Listener& listener) {
    ORV_ON_MAIN();
    return std::make_unique<Microphone>(state_, listener);
}

std::unique_ptr<ScreenCaptureStream>
NullAudioCapture::createScreenCaptureStream(ScreenCaptureStream::Listener& listener) {
    ORV_ON_MAIN();
    return std::make_unique<ScreenCapture>(state_, listener);
}

void NullAudioCapture::setListener(Listener* listener) {
    ORV_ON_MAIN();
    listener_ = listener;
}

} // namespace orv
