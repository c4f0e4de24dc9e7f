#pragma once

#include "CloudSTTEngine.h"
#include "ServiceError.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace orv::test {

/// A direct engine that does what the test tells it and remembers what it was asked.
class FakeEngine : public CloudSTTEngine {
  public:
    FakeEngine(QString id, QString name, bool streaming, bool translates)
        : id_(std::move(id))
        , name_(std::move(name))
        , streaming_(streaming)
        , translates_(translates) {}

    QString id() const override { return id_; }

    QString name() const override { return name_; }

    bool isStreaming() const override { return streaming_; }

    bool supportsTranslation() const override { return translates_; }

    void setTranslationKey(const QString& key) override { translationKey = key; }

    QCoro::Task<> connect(CloudEngineConfig config) override {
        connectedWith = config;
        if (connectError) {
            throw CloudEngineError(CloudEngineError::Kind::MissingApiKey, *connectError,
                                   connectFault);
        }
        onStatus(QStringLiteral("connected"), name_ + QStringLiteral(" ready"));
        co_return;
    }

    QCoro::Task<> disconnect() override {
        ++disconnects;
        if (onDisconnect) {
            onDisconnect();
        }
        co_return;
    }

    QCoro::Task<> sendAudio(QByteArray pcm) override {
        audio.append(pcm);
        if (sendFault) {
            throw ServiceError(*sendError, *sendFault);
        }
        if (sendError) {
            throw std::runtime_error(sendError->toStdString());
        }
        co_return;
    }

    QString translationKey;
    std::optional<CloudEngineConfig> connectedWith;
    std::optional<QString> connectError;
    std::optional<ServiceFault> connectFault; ///< Beside `connectError`.
    std::optional<QString> sendError;
    std::optional<ServiceFault> sendFault; ///< Beside `sendError`.
    QList<QByteArray> audio;
    int disconnects = 0;
    std::function<void()> onDisconnect;

  private:
    QString id_;
    QString name_;
    bool streaming_;
    bool translates_;
};

} // namespace orv::test
