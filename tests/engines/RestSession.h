#pragma once

#include "AzureMessages.h"
#include "EngineProbe.h"
#include "GoogleCloudMessages.h"
#include "LogCapture.h"
#include "ServicePeer.h"
#include "TranslationMessages.h"

#include <QJsonObject>

#include <gtest/gtest.h>

#include <memory>

namespace orv::test {

inline CloudEngineConfig languages(const QString& source, const QString& target) {
    return {.sourceLang = source,
            .targetLang = target,
            .apiKey = QStringLiteral("SECRET"),
            .region = QStringLiteral("westeurope"),
            .sampleRate = 48000};
}

/// One engine that sends chunks, in front of its services in a process of their own.
template <typename Engine>
struct RestSession {
    explicit RestSession(EngineTimings timings = {}, const QStringList& arguments = {},
                         const QString& scheme = QStringLiteral("http"))
        : service(QStringLiteral("http_service.py"), arguments)
        , engine(std::make_unique<Engine>(
              ServiceEndpoints{
                  {translationHost, service.url(scheme) + QStringLiteral("/translate")},
                  {googleRecognitionHost, service.url(scheme)},
                  {azureRecognitionHost, service.url(scheme) + QStringLiteral("/{region}/stt")},
                  {azureTranslationHost, service.url(scheme) + QStringLiteral("/{region}/s2s")},
                  {azureTranslatorHost, service.url(scheme) + QStringLiteral("/translator")}},
              timings))
        , reports(*engine) {}

    void connect(const QString& source, const QString& target) {
        EXPECT_FALSE(finish(engine->connect(languages(source, target))).error);
    }

    void always(int status, const QString& body) {
        service.command({{QStringLiteral("always"), true},
                         {QStringLiteral("status"), status},
                         {QStringLiteral("body"), body}});
    }

    void answer(int id, const QString& body) {
        service.command({{QStringLiteral("answer"), id}, {QStringLiteral("body"), body}});
    }

    bool waitForRequests(int count) {
        return waitUntil(
            [this, count] { return service.count(QStringLiteral("request")) == count; });
    }

    QJsonObject request(int index) {
        return service.events(QStringLiteral("request")).value(index);
    }

    QByteArray body(int index) {
        return QByteArray::fromBase64(request(index)[QStringLiteral("body")].toString().toLatin1());
    }

    LogCapture log;
    ServicePeer service;
    std::unique_ptr<Engine> engine;
    EngineReports reports;
};

inline const QByteArray chunk(96000, 'x');

inline QString azureTranslation(const QString& text, const QString& translation) {
    return QStringLiteral(
               R"({"RecognitionStatus":"Success","Offset":1,"Duration":2,"DisplayText":"%1",)"
               R"("Translations":[{"Language":"de","Text":"%2"}]})")
        .arg(text, translation);
}

inline QString azureRecognition(const QString& text) {
    return QStringLiteral(
               R"({"RecognitionStatus":"Success","DisplayText":"%1","NBest":[{"Display":"%1"}]})")
        .arg(text);
}

inline QString googleRecognition(const QString& text) {
    return QStringLiteral(
               R"({"results":[{"alternatives":[{"transcript":"%1","confidence":0.9}]}]})")
        .arg(text);
}

inline QString googleTranslation(const QString& text) {
    return QStringLiteral(R"({"data":{"translations":[{"translatedText":"%1"}]}})").arg(text);
}

} // namespace orv::test
