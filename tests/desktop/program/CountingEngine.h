#pragma once

#include "EngineDescriptor.h"
#include "TranslationSettings.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace orv::test {

/// A cloud engine as somebody would add one, in a file of its own: it understands of each chunk
/// only which one it is.
class CountingEngine : public CloudSTTEngine {
  public:
    QString id() const override { return QStringLiteral("counting"); }

    QString name() const override { return QStringLiteral("CountingEngine"); }

    bool isStreaming() const override { return false; }

    bool supportsTranslation() const override { return true; }

    void setTranslationKey(const QString&) override {}

    QCoro::Task<> connect(CloudEngineConfig config) override {
        if (config.apiKey != QStringLiteral("abacus")) {
            throw CloudEngineError(CloudEngineError::Kind::MissingApiKey,
                                   QStringLiteral("Counting API Key falsch"));
        }
        onStatus(QStringLiteral("connected"), QStringLiteral("Counting ready"));
        co_return;
    }

    QCoro::Task<> disconnect() override { co_return; }

    QCoro::Task<> sendAudio(QByteArray) override {
        const QString number = QString::number(++chunks_);
        onTranslation(QStringLiteral("chunk ") + number, QStringLiteral("Stück ") + number);
        co_return;
    }

  private:
    int chunks_ = 0;
};

inline EngineDescriptor countingEngine() {
    return {.id = QStringLiteral("counting"),
            .name = QStringLiteral("Abacus"),
            .detailKey = QStringLiteral("settings.engine.azure.detail"),
            .hintKey = QStringLiteral("settings.engine.azure.hint"),
            .icon = QStringLiteral("cloud"),
            .infoText = QStringLiteral("STT: Zählen (direkt) · Kein Backend nötig"),
            .translator = QStringLiteral("Abacus"),
            .fields = {{.kind = EngineField::Kind::Key,
                        .text = &TranslationSettings::azureApiKey,
                        .isRequired = true,
                        .message = QStringLiteral("engineApiKey"),
                        .config = &CloudEngineConfig::apiKey}},
            .make = [](const ServiceEndpoints&, const EngineTimings&) {
                return std::make_shared<CountingEngine>();
            }};
}

} // namespace orv::test
