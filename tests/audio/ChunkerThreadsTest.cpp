// The chunker between its two threads: capture adds buffers, main sends by timer, resets and
// switches modes. The order of the chunks is what the thread that receives them sees.

#include "Chunker.h"

#include "LogCapture.h"
#include "SerialQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;
using orv::Chunk;
using orv::Chunker;
using orv::ProcessedBuffer;

const Chunker::TimePoint start{1000h};

TEST(ChunkerThreads, chunksOfBothThreadsArriveInOrderAndComplete) {
    const orv::test::LogCapture log;
    constexpr std::size_t bufferSize = 4096;
    constexpr std::size_t buffers = 1500;
    std::vector<float> out;
    std::size_t chunks = 0;
    {
        orv::SerialQueue sendQueue(u"io.tavrin.orv.audio-send"_s);
        Chunker* self = nullptr;
        Chunker chunker(
            [&](Chunk&& chunk) {
                auto shared = std::make_shared<Chunk>(std::move(chunk));
                sendQueue.post([&out, &chunks, &self, shared] {
                    ++chunks;
                    out.insert(out.end(), shared->samples.begin(), shared->samples.end());
                    self->recycle(std::move(shared->samples));
                });
            },
            start, 100'000);
        self = &chunker;
        chunker.setConnected(true);

        std::atomic<bool> captured = false;
        std::thread capture([&] {
            std::vector<float> samples(bufferSize);
            Chunker::TimePoint now = start;
            for (std::size_t i = 0; i < buffers; ++i) {
                for (std::size_t j = 0; j < bufferSize; ++j) {
                    samples[j] = static_cast<float>(i * bufferSize + j);
                }
                ProcessedBuffer buffer;
                buffer.samples = samples;
                buffer.levelDb = i % 40 < 20 ? -10.0F : -60.0F;
                chunker.addSamples(buffer, now);
                now += 85ms;
            }
            captured = true;
        });
        for (int i = 0; !captured; ++i) {
            chunker.setVadEnabled(i % 3 != 0);
            chunker.setVadThreshold(i % 2 == 0 ? -35.0F : -30.0F);
            chunker.setVadSilenceDuration(i % 2 == 0 ? 600.0 : 300.0);
            if (i % 5 == 0) {
                chunker.reset(start + i * 1ms);
            }
            chunker.sendAudioChunk();
            std::this_thread::yield();
        }
        capture.join();
        sendQueue.sync([] {});
        const std::vector<float> rest = chunker.takeAll();
        sendQueue.sync([&] { out.insert(out.end(), rest.begin(), rest.end()); });
    }
    EXPECT_GT(chunks, 0U);
    ASSERT_EQ(out.size(), buffers * bufferSize);
    std::size_t misplaced = 0;
    for (std::size_t i = 0; i < out.size(); ++i) {
        misplaced += out[i] == static_cast<float>(i) ? 0U : 1U;
    }
    EXPECT_EQ(misplaced, 0U);
}

} // namespace
