#pragma once

#include "CloudSTTEngine.h"
#include "Completion.h"
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

    int requestsAtOnce() const override { return atOnce; }

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
        if (isSlow) {
            const Completion<bool> answer = answers.emplace_back();
            co_await Completion(answer);
        }
    }

    /// A result, if anybody is left who wants it.
    void bring(const QString& original, const QString& translation) {
        if (const auto callback = onTranslation) {
            callback(original, translation);
        }
    }

    QString translationKey;
    std::optional<CloudEngineConfig> connectedWith;
    std::optional<QString> connectError;
    std::optional<ServiceFault> connectFault; ///< Beside `connectError`.
    std::optional<QString> sendError;
    std::optional<ServiceFault> sendFault; ///< Beside `sendError`.
    int atOnce = 1;
    bool isSlow = false; ///< Each block is done with once its answer is completed.
    QList<Completion<bool>> answers;
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
