// How long sound takes from the call that brings it to its last byte at a streaming service, beside
// a bare send() of the same bytes, and what a streaming run costs. bench/cloud/run judges.
//
//   orvane_cloud_bench delay ROUNDS PACE_MS     orvane_cloud_bench cost ENGINE SECONDS
//
// Prints one JSON object. All times are of one clock in one process, at both ends.

#include "EngineCatalogue.h"
#include "Log.h"
#include "Post.h"
#include "Receiver.h"
#include "SerialQueue.h"
#include "StreamingRun.h"

#include <QCoreApplication>

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <numbers>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

using orv::bench::Clock;
using orv::bench::Receiver;
using orv::bench::StreamingRun;

constexpr std::size_t frames = 4096; // Of a buffer, as a microphone delivers it.
constexpr qsizetype pcmSize = 2 * frames;
// {"audio_data":"…"} with base64 in it.
constexpr std::size_t jsonSize = 17 + (pcmSize + 2) / 3 * 4;
constexpr int warmUpRounds = 10;

std::vector<float> tone() {
    std::vector<float> samples(frames);
    for (std::size_t i = 0; i < frames; ++i) {
        samples[i] =
            static_cast<float>(0.2 * std::sin(0.0576 * static_cast<double>(i) * std::numbers::pi));
    }
    return samples;
}

/// A masked frame with so much content, below 64 KiB.
std::string frameOf(std::size_t size) {
    std::string frame = {'\x82', '\xFE', static_cast<char>(size >> 8U), static_cast<char>(size)};
    frame.append(4 + size, 'x');
    return frame;
}

/// One way of sending a buffer; `send` is called on the thread that plays the capture thread and
/// calls back, or returns, with the time at which the buffer arrived where the delay begins.
struct Way {
    std::string name;
    std::function<void(std::atomic<Clock::time_point>& begin)> send;
    std::vector<double> delays = {}; ///< Microseconds.
};

/// Runs `work` on the main thread and takes the time right before it.
template <typename Work>
auto onMainThread(QObject* main, Work work) {
    return [main, work](std::atomic<Clock::time_point>& begin) {
        orv::post(main, [work, &begin] {
            begin = Clock::now();
            work();
        });
    };
}

void measure(std::vector<Way>& ways, const Receiver& receiver, int rounds,
             std::chrono::milliseconds pace) {
    std::atomic<Clock::time_point> begin;
    for (int round = -warmUpRounds; round < rounds; ++round) {
        for (std::size_t i = 0; i < ways.size(); ++i) {
            Way& way = ways[(i + static_cast<std::size_t>(round + warmUpRounds)) % ways.size()];
            const std::uint64_t before = receiver.count();
            way.send(begin);
            receiver.waitFor(before + 1);
            if (round >= 0) {
                way.delays.push_back(
                    std::chrono::duration<double, std::micro>(receiver.latest() - begin.load())
                        .count());
            }
            std::this_thread::sleep_for(pace);
        }
    }
}

double quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

/// Handles events until `done`.
template <typename Condition>
void wait(Condition done) {
    while (!done()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

std::shared_ptr<orv::CloudSTTEngine> connectedEngine(const QString& id, const Receiver& receiver) {
    auto engine =
        orv::EngineCatalogue().find(id)->make(orv::bench::endpointsAt(receiver.port()), {});
    bool ready = false;
    engine->onStatus = [&](const QString&, const QString&) { ready = true; };
    const std::uint64_t before = receiver.handshakes();
    engine->connect(
        {.sourceLang = u"en"_s, .targetLang = u"es"_s, .apiKey = u"key"_s, .region = {}});
    wait([&] { return ready && receiver.handshakes() > before; });
    engine->onStatus = {};
    return engine;
}

std::unique_ptr<StreamingRun> runningRun(const QString& id, const Receiver& receiver) {
    auto run = std::make_unique<StreamingRun>(id, receiver.port());
    run->start();
    const std::uint64_t before = receiver.handshakes();
    wait([&] { return run->isRunning() && receiver.handshakes() >= before + 2; });
    return run;
}

int measureDelay(int rounds, std::chrono::milliseconds pace) {
    const Receiver receiver;
    QObject main;
    const std::vector<float> samples = tone();
    const QByteArray pcm(pcmSize, 'x');
    const std::string binary = frameOf(pcmSize);
    const std::string text = frameOf(jsonSize);
    const int socket = orv::bench::connectTo(receiver.port());
    const auto deepgram = connectedEngine(u"deepgram"_s, receiver);
    const auto assemblyai = connectedEngine(u"assemblyai"_s, receiver);
    const auto deepgramRun = runningRun(u"deepgram"_s, receiver);
    const auto assemblyaiRun = runningRun(u"assemblyai"_s, receiver);
    orv::SerialQueue queue(u"bench"_s);

    const auto bare = [socket](const std::string& bytes) {
        return [socket, &bytes] { orv::bench::sendAll(socket, bytes); };
    };
    const auto handedOver = [&](const std::string& bytes) {
        return [&, send = bare(bytes)](std::atomic<Clock::time_point>& begin) {
            begin = Clock::now();
            queue.post([&main, send] { orv::post(&main, send); });
        };
    };
    const auto captured = [&samples](StreamingRun& run) {
        return [&](std::atomic<Clock::time_point>& begin) {
            begin = Clock::now();
            run.deliver(samples);
        };
    };
    std::vector<Way> ways = {
        {"bare/deepgram", onMainThread(&main, bare(binary))},
        {"engine/deepgram", onMainThread(&main, [&] { deepgram->sendAudio(pcm); })},
        {"handedOver/deepgram", handedOver(binary)},
        {"captured/deepgram", captured(*deepgramRun)},
        {"bare/assemblyai", onMainThread(&main, bare(text))},
        {"engine/assemblyai", onMainThread(&main, [&] { assemblyai->sendAudio(pcm); })},
        {"handedOver/assemblyai", handedOver(text)},
        {"captured/assemblyai", captured(*assemblyaiRun)},
    };
    std::thread capture([&] {
        measure(ways, receiver, rounds, pace);
        orv::post(&main, [] { QCoreApplication::quit(); });
    });
    QCoreApplication::exec();
    capture.join();
    const char* separator = "{";
    for (const Way& way : ways) {
        std::cout << separator << '"' << way.name << R"(": {"median": )"
                  << quantile(way.delays, 0.5) << R"(, "p99": )" << quantile(way.delays, 0.99)
                  << "}";
        separator = ",\n ";
    }
    std::cout << "}\n";
    return 0;
}

double processorSeconds() {
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The processor time of everything but the receiver, while sound comes in as a microphone's does.
int measureCost(const QString& engine, int seconds) {
    const Receiver receiver;
    QObject main;
    const std::vector<float> samples = tone();
    const auto run = runningRun(engine, receiver);
    const auto used = [&receiver] {
        return processorSeconds() - std::chrono::duration<double>(receiver.cpuTime()).count();
    };
    constexpr std::chrono::nanoseconds buffer =
        std::chrono::nanoseconds(std::chrono::seconds(frames)) / 48000;
    double cost = 0.0;
    double elapsed = 0.0;
    const std::uint64_t before = receiver.count();
    std::uint64_t sent = 0;
    std::thread capture([&] {
        const double usedBefore = used();
        const Clock::time_point begin = Clock::now();
        for (Clock::time_point due = begin; due < begin + std::chrono::seconds(seconds); ++sent) {
            run->deliver(samples);
            due += buffer;
            std::this_thread::sleep_until(due);
        }
        receiver.waitFor(before + sent);
        cost = used() - usedBefore;
        elapsed = std::chrono::duration<double>(Clock::now() - begin).count();
        orv::post(&main, [] { QCoreApplication::quit(); });
    });
    QCoreApplication::exec();
    capture.join();
    std::cout << R"({"buffers": )" << sent << R"(, "seconds": )" << elapsed
              << R"(, "processorSeconds": )" << cost << "}\n";
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    orv::setLogSink([](const QString&) {});
    const std::string_view what = argc == 4 ? argv[1] : "";
    if (what == "delay") {
        return measureDelay(QByteArray(argv[2]).toInt(),
                            std::chrono::milliseconds(QByteArray(argv[3]).toInt()));
    }
    if (what == "cost") {
        return measureCost(QString::fromUtf8(argv[2]), QByteArray(argv[3]).toInt());
    }
    std::cerr << "delay ROUNDS PACE_MS, or cost ENGINE SECONDS\n";
    return 2;
}
