#include "StreamingRun.h"

#include "AssemblyAIMessages.h"
#include "DeepgramMessages.h"

using namespace Qt::StringLiterals;

namespace orv::bench {

ServiceEndpoints endpointsAt(std::uint16_t port) {
    const QString url = u"ws://127.0.0.1:%1"_s.arg(port);
    return {{deepgramHost, url}, {assemblyaiHost, url}, {assemblyaiStreamingHost, url}};
}

StreamingRun::StreamingRun(const QString& engine, std::uint16_t port)
    : store_(disk_, folder_.filePath(u"defaults.json"_s))
    , settings_(store_) {
    MicrophonePreparation microphone;
    microphone.initialFormat = {48000, 1};
    microphone.format = {48000, 1};
    capture_.answers().preparation = microphone;
    settings_.sttEngine.set(engine);
    settings_.deepgramApiKey.set(u"key"_s);
    settings_.assemblyaiApiKey.set(u"key"_s);
    manager_ = std::make_unique<AudioManager>(
        AudioEnvironment{.settings = settings_,
                         .capture = capture_,
                         .engines = engines_,
                         .transcriptFolder = folder_.filePath(u"output"_s),
                         .endpoints = endpointsAt(port),
                         .backendPort = port});
}

StreamingRun::~StreamingRun() = default;

void StreamingRun::start() {
    manager_->sendConfig(u"en"_s, u"es"_s, true, true);
    manager_->startCapture(AudioSourceType::Microphone, {}, {});
}

void StreamingRun::stop() {
    manager_->stopCaptureSync();
}

bool StreamingRun::isRunning() const {
    return capture_.isMicrophoneRunning();
}

void StreamingRun::deliver(std::span<const float> samples) {
    capture_.deliver({.firstChannel = samples.data(), .frames = samples.size(), .stride = 1});
}

} // namespace orv::bench
