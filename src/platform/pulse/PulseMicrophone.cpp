#include "PulseMicrophone.h"

#include "Post.h"
#include "ThreadChecks.h"

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr std::uint32_t wantedRate = 48000;
constexpr std::size_t usualFragment = 4096;

bool runsAtWantedRate(double sampleRate) {
    return std::abs(sampleRate - double(wantedRate)) <= 1.0;
}

} // namespace

PulseMicrophone::PulseMicrophone(std::shared_ptr<PulseConnection> connection,
                                 MicrophoneStream::Listener& listener)
    : connection_(std::move(connection))
    , listener_(listener) {}

PulseMicrophone::~PulseMicrophone() {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    connection_->forget(this);
    stream_.reset();
}

void PulseMicrophone::prepare(const QString& deviceId) {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    connection_->forget(this);
    stream_.reset();
    preparation_ = {};
    isChosen_ = false;
    connection_->whenSettled(this, [this, name = deviceId.toUtf8()](bool ready) {
        if (!ready) {
            finishPreparation(MicrophoneFailure::NoEngine);
        } else if (name.isEmpty()) {
            findDefault();
        } else {
            findChosen(name);
        }
    });
}

void PulseMicrophone::findChosen(const QByteArray& name) {
    connection_->findSource(this, name, [this](const Sources& found) {
        if (!found) {
            finishPreparation(MicrophoneFailure::NoEngine);
        } else if (found->empty()) {
            preparation_.deviceFound = false;
            findDefault();
        } else {
            isChosen_ = true;
            use(found->front());
            preparation_.deviceNumber = QString::number(source_.index);
            if (runsAtWantedRate(source_.sampleRate)) {
                preparation_.rateSwitch = RateSwitch::AlreadyAt48kHz;
                finishPreparation();
            } else {
                askFor48kHz();
            }
        }
    });
}

void PulseMicrophone::findDefault() {
    connection_->findSource(this, "@DEFAULT_SOURCE@", [this](const Sources& found) {
        if (!found) {
            finishPreparation(MicrophoneFailure::NoEngine);
        } else if (found->empty() || found->front().isMonitor) {
            findAny();
        } else {
            use(found->front());
            finishPreparation();
        }
    });
}

void PulseMicrophone::findAny() {
    connection_->listSources(this, [this](const Sources& found) {
        if (!found) {
            finishPreparation(MicrophoneFailure::NoEngine);
            return;
        }
        const auto input = std::find_if(found->begin(), found->end(),
                                        [](const PulseSource& one) { return !one.isMonitor; });
        if (input == found->end()) {
            finishPreparation(MicrophoneFailure::NoInput);
        } else {
            use(*input);
            finishPreparation();
        }
    });
}

void PulseMicrophone::use(const PulseSource& source) {
    source_ = source;
    preparation_.initialFormat = {.sampleRate = source.sampleRate, .channels = source.channels};
    preparation_.format = preparation_.initialFormat;
    preparation_.rateBefore = source.sampleRate;
}

void PulseMicrophone::askFor48kHz() {
    PulseRecording question = recording(wantedRate);
    question.paused = true;
    purpose_ = Purpose::RateQuestion;
    stream_ = PulseRecordStream::open(*connection_, question, *this);
    if (!stream_) {
        cannotAskFor48kHz(connection_->lastError());
    }
}

void PulseMicrophone::cannotAskFor48kHz(const QString& error) {
    connection_->forget(this); // The rate may be being read back: there is one answer only.
    stream_.reset();
    isChosen_ = false;
    preparation_.selectError = error;
    findDefault();
}

void PulseMicrophone::readBack() {
    connection_->findSource(this, source_.name, [this](const Sources& found) {
        stream_.reset();
        if (!found) {
            finishPreparation(MicrophoneFailure::NoEngine);
            return;
        }
        if (found->empty()) {
            preparation_.rateSwitch = RateSwitch::RatesUnreadable;
        } else {
            source_ = found->front();
            preparation_.rateSwitch = runsAtWantedRate(source_.sampleRate)
                                          ? RateSwitch::Switched
                                          : RateSwitch::NotSupported;
            preparation_.format = {.sampleRate = source_.sampleRate, .channels = source_.channels};
        }
        finishPreparation();
    });
}

void PulseMicrophone::finishPreparation(MicrophoneFailure failure) {
    preparation_.failure = failure;
    post(&context_, [this, found = preparation_] { listener_.microphonePrepared(found); });
}

void PulseMicrophone::start(std::size_t framesPerBuffer) {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    framesPerBuffer_ = framesPerBuffer;
    purpose_ = Purpose::Start;
    collector_.emplace(framesPerBuffer, static_cast<std::size_t>(source_.channels));
    PulseRecording wanted = recording(static_cast<std::uint32_t>(preparation_.format.sampleRate));
    wanted.fragmentFrames = framesPerBuffer;
    stream_ = PulseRecordStream::open(*connection_, wanted, *this);
    if (!stream_) {
        captureEnded(connection_->lastError());
    }
}

void PulseMicrophone::recordingReady() {
    if (purpose_ == Purpose::RateQuestion) {
        readBack();
        return;
    }
    purpose_ = Purpose::Capture;
    post(&context_, [this] { listener_.microphoneStarted({}); });
}

void PulseMicrophone::recorded(const float* samples, std::size_t frames) {
    if (purpose_ == Purpose::RateQuestion) {
        return;
    }
    collector_->push(samples, frames, [this](const float* full) {
        listener_.microphoneBuffer({.firstChannel = full, .frames = framesPerBuffer_, .stride = 1});
    });
}

void PulseMicrophone::recordingMoved(const QByteArray& source) {
    if (purpose_ == Purpose::RateQuestion) {
        return;
    }
    connection_->findSource(this, source, [this](const Sources& found) {
        if (found && !found->empty() && found->front().isMonitor) {
            captureEnded(u"Eingabegerät entfernt"_s); // What the machine plays is no microphone.
        }
    });
}

void PulseMicrophone::finish() {
    ORV_ON_MAIN();
    const PulseLock lock(*connection_);
    connection_->forget(this);
    stream_.reset();
    if (collector_) {
        collector_->flush([this](const float* rest, std::size_t frames) {
            listener_.microphoneBuffer({.firstChannel = rest, .frames = frames, .stride = 1});
        });
    }
}

void PulseMicrophone::recordingEnded(const QString& error) {
    if (purpose_ == Purpose::RateQuestion) {
        cannotAskFor48kHz(error);
    } else {
        captureEnded(error);
    }
}

void PulseMicrophone::captureEnded(const QString& error) {
    connection_->forget(this); // It may be being looked up where the recording has been moved.
    stream_.reset();
    if (purpose_ == Purpose::Start) {
        post(&context_, [this, error] { listener_.microphoneStarted(error); });
    } else {
        post(&context_, [this, error] { listener_.microphoneStopped(error); });
    }
}

PulseRecording PulseMicrophone::recording(std::uint32_t sampleRate) const {
    return {
        .source = source_.name,
        .playback = std::nullopt,
        .sampleRate = sampleRate,
        .channels = static_cast<std::uint8_t>(source_.channels),
        .channelMap = source_.channelMap,
        .fragmentFrames = usualFragment,
        .paused = false,
        .mayMove = !isChosen_,
    };
}

} // namespace orv
