#pragma once

#include "CloudSTTEngine.h"
#include "EngineTimings.h"
#include "Lifetime.h"
#include "ServiceEndpoints.h"
#include "StreamingSocket.h"
#include "TranslationClient.h"

#include <memory>

namespace orv {

/// What the streaming engines have in common: one WebSocket, one receive loop, and the translation
/// of final transcripts. Callbacks run on the main thread; each of them may release the engine.
class StreamingEngine : public CloudSTTEngine {
  public:
    bool isStreaming() const override { return true; }

    bool supportsTranslation() const override { return false; }

    void setTranslationKey(const QString& key) override { googleApiKeyForTranslation_ = key; }

    /// From a successful connect until disconnect or the end of the connection.
    bool isConnected() const { return isConnected_; }

    /// Says farewell and closes. Whatever has not left after `EngineTimings::streamFarewell` is
    /// dropped.
    QCoro::Task<> disconnect() override;

    /// Sends the block and waits until the network has taken it. Throws `ServiceError` when it
    /// cannot be sent; does nothing while not connected.
    QCoro::Task<> sendAudio(QByteArray pcm) override;

  protected:
    /// `product` is the service's name in messages.
    StreamingEngine(QString product, ServiceEndpoints endpoints, EngineTimings timings);

    const ServiceEndpoints& endpoints() const { return endpoints_; }

    const EngineTimings& timings() const { return timings_; }

    /// Opens the connection with `key` as the header "Authorization", after `prefix`.
    void open(const QUrl& url, const QString& prefix, const CloudEngineConfig& config);

    /// The open connection; null before the first connect.
    StreamingSocket* socket() const { return socket_.get(); }

    Lifetime::Observer observe() const { return lifetime_.observe(); }

    /// Whether the session was ended again, perhaps while it was still being connected.
    bool isDisconnected() const { return isDisconnected_; }

    /// The connect step's end: starts the receive loop and reports success.
    void begin();

    /// Sends one block in the service's form.
    virtual Completion<QString> sendBlock(StreamingSocket& socket, const QByteArray& pcm) = 0;

    /// The message that ends a session.
    virtual QString farewell() const = 0;

    /// The text of a message with a final transcript; empty for every other message.
    virtual QString finalTranscript(const QByteArray& message) const = 0;

    void report(const QString& status, const QString& message);

  private:
    QCoro::Task<> receiveMessages();
    void end(const QString& reason);
    void translateAndDeliver(const QString& transcript);
    QCoro::Task<> translateFirst(QString transcript);
    void deliver(const QString& transcript, const QString& translation);

    const QString product_;
    const ServiceEndpoints endpoints_;
    const EngineTimings timings_;
    QString apiKey_;
    QString googleApiKeyForTranslation_;
    QString targetLang_;
    bool isConnected_ = false;
    bool isDisconnected_ = false;
    TranslationClient translation_;
    std::unique_ptr<StreamingSocket> socket_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
