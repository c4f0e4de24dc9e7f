#pragma once

// The engines in front of the strict stand-ins of the services as they are today, which were
// written by others from what the services publish.

#include "EngineProbe.h"
#include "LogCapture.h"
#include "ServicePeer.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <initializer_list>

namespace orv::test {

inline constexpr std::int64_t presentRate = 16000;

/// What the stand-ins take, and nothing may quote.
inline const QString presentKey = QStringLiteral("SECRET");

/// A fault of a stand-in, by its name, and what is told of it.
struct FaultCase {
    const char16_t* fault;
    ServiceFault::Kind kind;
};

/// `provoke` meets each fault by its name and returns what was told: this, once, and not the key.
template <typename Provoke>
void expectFaults(std::initializer_list<FaultCase> cases, Provoke provoke) {
    for (const auto& [fault, kind] : cases) {
        const QString name = QString::fromUtf16(fault);
        SCOPED_TRACE(name.toStdString());
        const QList<ServiceFault> told = provoke(name);
        ASSERT_EQ(told.size(), 1);
        EXPECT_EQ(told.first().kind, kind) << qPrintable(told.first().said);
        EXPECT_FALSE(told.first().said.contains(presentKey));
    }
}

/// A stand-in of `tests`, such as "cloud_services.deepgram", that takes `presentKey` alone.
struct PresentService : ServicePeer {
    explicit PresentService(const QString& module, const QStringList& arguments = {})
        : ServicePeer(
              QStringLiteral("cloud_service.py"),
              QStringList{QStringLiteral("tests.") + module, QStringLiteral("--key"), presentKey} +
                  arguments) {}
};

/// 16-bit mono PCM at `presentRate`: a tone, as loud as a voice.
inline QByteArray voice(std::chrono::milliseconds length) {
    const auto samples = static_cast<qsizetype>(length.count() * presentRate / 1000);
    QByteArray pcm(samples * 2, Qt::Uninitialized);
    auto* sample = reinterpret_cast<std::int16_t*>(pcm.data());
    for (qsizetype i = 0; i < samples; ++i) {
        const double angle = 2 * 3.14159265 * 300 * static_cast<double>(i) / presentRate;
        sample[i] = static_cast<std::int16_t>(9000 * std::sin(angle));
    }
    return pcm;
}

inline QByteArray quiet(std::chrono::milliseconds length) {
    return QByteArray(static_cast<qsizetype>(length.count() * presentRate / 1000 * 2), '\0');
}

/// So many things said, with a pause after each.
inline QByteArray utterances(int count) {
    using namespace std::chrono_literals;
    return QByteArray(voice(400ms) + quiet(600ms)).repeated(count);
}

/// What the stand-ins make of the first `count`: "Sentence number one." and so on, as they are
/// written by a service that was asked for punctuation; each with its translation, which is itself.
inline QStringList said(const QStringList& numbers) {
    QStringList lines;
    for (const QString& number : numbers) {
        const QString line = QStringLiteral("sentence number ") + number + QLatin1Char('.');
        lines.append(line + QLatin1Char('|') + line);
    }
    return lines;
}

/// Hands `pcm` to the engine in the buffers that a microphone brings.
template <typename Engine>
void speak(Engine& engine, const QByteArray& pcm) {
    constexpr qsizetype buffer = presentRate / 1000 * 85 * 2;
    for (qsizetype at = 0; at < pcm.size(); at += buffer) {
        finish(engine.sendAudio(pcm.mid(at, buffer)));
    }
}

/// What any stream may meet.
inline constexpr std::initializer_list<FaultCase> brokenStreams = {
    {u"drop", ServiceFault::Kind::NetworkFailed},
    {u"reset", ServiceFault::Kind::NetworkFailed},
    {u"drop-open", ServiceFault::Kind::NetworkFailed},
    {u"garbage", ServiceFault::Kind::ServiceFailed},
    {u"bad-utf8", ServiceFault::Kind::ServiceFailed},
    {u"huge-length", ServiceFault::Kind::ServiceFailed}};

/// What is told of a stand-in's fault while something is said to it.
template <typename Stream>
QList<ServiceFault> faultsWhileSpeaking(const QString& fault) {
    Stream session({QStringLiteral("--fault"), fault});
    session.connect();
    speak(*session.engine, utterances(2));
    EXPECT_TRUE(session.waitForFault());
    return session.reports.faults;
}

inline CloudEngineConfig spoken(const QString& language, const QString& key) {
    return {.sourceLang = language,
            .targetLang = QStringLiteral("en"),
            .apiKey = key,
            .region = QStringLiteral("westeurope"),
            .sampleRate = presentRate};
}

} // namespace orv::test
