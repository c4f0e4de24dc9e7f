#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <mutex>
#include <numbers>
#include <span>
#include <vector>

namespace orv::test {

/// One second of a sine tone at 48 kHz. A whole number of Hz repeats without a seam.
inline std::vector<qint16> toneSamples(int frequency, double amplitude = 0.5) {
    std::vector<qint16> samples(48000);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double phase = 2 * std::numbers::pi * frequency * double(i) / 48000;
        samples[i] = static_cast<qint16>(std::lround(amplitude * 32767 * std::sin(phase)));
    }
    return samples;
}

/// Amplitude of one frequency in the samples, by Goertzel's method.
inline double toneAmplitude(std::span<const float> samples, double frequency, double sampleRate) {
    const double omega = 2 * std::numbers::pi * frequency / sampleRate;
    const double coefficient = 2 * std::cos(omega);
    double last = 0;
    double beforeLast = 0;
    for (const float sample : samples) {
        const double next = double(sample) + coefficient * last - beforeLast;
        beforeLast = last;
        last = next;
    }
    const double power = last * last + beforeLast * beforeLast - coefficient * last * beforeLast;
    return samples.empty() ? 0 : 2 * std::sqrt(std::max(power, 0.0)) / double(samples.size());
}

/// Collects samples on one thread for another one to look at.
class SampleCollector {
  public:
    void add(std::span<const float> samples) {
        const std::lock_guard lock(mutex_);
        samples_.insert(samples_.end(), samples.begin(), samples.end());
    }

    std::size_t size() const {
        const std::lock_guard lock(mutex_);
        return samples_.size();
    }

    std::vector<float> all() const {
        const std::lock_guard lock(mutex_);
        return samples_;
    }

    /// The newest `count` samples; fewer when there are fewer.
    std::vector<float> newest(std::size_t count) const {
        const std::lock_guard lock(mutex_);
        return {samples_.end() - static_cast<std::ptrdiff_t>(std::min(count, samples_.size())),
                samples_.end()};
    }

    void clear() {
        const std::lock_guard lock(mutex_);
        samples_.clear();
    }

  private:
    mutable std::mutex mutex_;
    std::vector<float> samples_;
};

} // namespace orv::test
