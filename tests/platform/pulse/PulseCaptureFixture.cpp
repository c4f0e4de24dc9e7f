#include "PulseCaptureFixture.h"

#include <algorithm>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace orv::test {

QStringList PulseCaptureFixture::modules() {
    return {u"module-null-sink sink_name=speakers rate=48000"_s,
            u"module-null-sink sink_name=cable rate=48000"_s,
            u"module-null-sink sink_name=slow rate=44100"_s,
            u"module-remap-source source_name=mic master=cable.monitor "
            "source_properties=device.description=Studio"_s,
            u"module-remap-source source_name=mic44 master=cable.monitor rate=44100"_s};
}

PulseCaptureFixture::PulseCaptureFixture()
    : pulse(modules()) {
    pulse.pactl({u"set-default-source"_s, u"mic"_s});
    options.server = pulse.server();
    options.firstReconnect = 20ms;
    options.longestReconnect = 200ms;
    options.retake = 20ms;
    capture = std::make_unique<PulseAudioCapture>(disk, PulseConnection::create(options),
                                                  RunningAppPlaces{});
}

std::unique_ptr<MicrophoneStream> PulseCaptureFixture::createMicrophone() {
    return capture->createMicrophoneStream(*this);
}

std::unique_ptr<ScreenCaptureStream> PulseCaptureFixture::createScreenCapture() {
    return capture->createScreenCaptureStream(*this);
}

MicrophonePreparation PulseCaptureFixture::prepare(MicrophoneStream& stream,
                                                   const QString& device) {
    preparation.reset();
    stream.prepare(device);
    EXPECT_FALSE(preparation) << "answers come later";
    EXPECT_TRUE(waitUntil([&] { return preparation.has_value(); }));
    return preparation.value_or(MicrophonePreparation{});
}

QString PulseCaptureFixture::start(MicrophoneStream& stream) {
    microphoneStart.reset();
    stream.start(4096);
    EXPECT_TRUE(waitUntil([&] { return microphoneStart.has_value(); }));
    return microphoneStart.value_or(u"no answer"_s);
}

ScreenCaptureStart PulseCaptureFixture::start(ScreenCaptureStream& stream,
                                              const ScreenCaptureRequest& request) {
    screenCaptureStart.reset();
    stream.start(request);
    EXPECT_TRUE(waitUntil([&] { return screenCaptureStart.has_value(); }));
    return screenCaptureStart.value_or(ScreenCaptureStart{});
}

void PulseCaptureFixture::microphonePrepared(const MicrophonePreparation& found) {
    preparation = found;
    ++preparations;
}

void PulseCaptureFixture::microphoneStarted(const QString& error) {
    microphoneStart = error;
}

void PulseCaptureFixture::microphoneBuffer(const MicrophoneBuffer& buffer) {
    EXPECT_EQ(buffer.frames, 4096U);
    EXPECT_EQ(buffer.stride, 1U);
    heard.add({buffer.firstChannel, buffer.frames});
}

void PulseCaptureFixture::microphoneStopped(const QString& error) {
    stops.append(error);
}

void PulseCaptureFixture::screenCaptureStarted(const ScreenCaptureStart& outcome) {
    screenCaptureStart = outcome;
}

void PulseCaptureFixture::screenCaptureBlock(std::span<const std::byte> bytes) {
    EXPECT_EQ(bytes.size(), blockFloats * sizeof(float));
    std::vector<float> block(bytes.size() / sizeof(float));
    std::memcpy(block.data(), bytes.data(), bytes.size());
    heard.add(std::span(block).first(channelFloats));
    blocks.add(block);
}

void PulseCaptureFixture::screenCaptureStopped(const QString& error) {
    stops.append(error);
}

void PulseCaptureFixture::captureListsChanged() {
    ++listChanges;
}

void PulseCaptureFixture::captureAvailabilityChanged(bool available) {
    availability.append(available);
}

QList<AudioDevice> PulseCaptureFixture::inputDevices() {
    std::optional<QList<AudioDevice>> result;
    capture->listInputDevices([&](const QList<AudioDevice>& devices) { result = devices; });
    EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
    return result.value_or(QList<AudioDevice>());
}

std::optional<QList<RunningApp>> PulseCaptureFixture::capturableApps() {
    std::optional<std::optional<QList<RunningApp>>> result;
    capture->listCapturableApps([&](const auto& apps) { result = apps; });
    EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
    return result.value_or(std::nullopt);
}

bool PulseCaptureFixture::hears(const std::vector<int>& present, const std::vector<int>& absent,
                                double sampleRate) {
    return waitUntil([&] {
        const auto count = static_cast<std::size_t>(sampleRate / 5);
        const std::vector<float> newest = heard.newest(count);
        const auto amplitude = [&](int tone) { return toneAmplitude(newest, tone, sampleRate); };
        return newest.size() == count &&
               std::all_of(present.begin(), present.end(),
                           [&](int tone) { return amplitude(tone) > 0.4; }) &&
               std::all_of(absent.begin(), absent.end(),
                           [&](int tone) { return amplitude(tone) < 0.01; });
    });
}

bool PulseCaptureFixture::hearsMore(std::size_t samples) {
    return waitUntil([this, goal = heard.size() + samples] { return heard.size() >= goal; });
}

} // namespace orv::test
