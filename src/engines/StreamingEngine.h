#pragma once

#include "AnswerOrder.h"
#include "CloudSTTEngine.h"
#include "EngineTimings.h"
#include "Lifetime.h"
#include "ServiceClient.h"
#include "ServiceEndpoints.h"
#include "ServiceFault.h"
#include "StreamingSocket.h"
#include "TranslationClient.h"

#include <QNetworkRequest>
#include <QStringList>

#include <memory>
#include <optional>
#include <utility>

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

    /// Says farewell, waits for what the service still has to say and for the translation of it,
    /// and closes. What has not left after `EngineTimings::streamFarewell` is dropped; the last
    /// results may take `EngineTimings::lastResults`.
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

    /// The texts that a message makes certain, in their order.
    virtual QStringList finalTranscripts(const QByteArray& message) = 0;

    /// The texts that nothing will make more certain, once the service says no more.
    virtual QStringList lastTranscripts() { return {}; }

    /// Whether the service has said everything with this message, after the farewell.
    virtual bool isLast(const QByteArray& message) const = 0;

    /// The fault that a message tells of; nothing for every other message.
    virtual std::optional<ServiceFault> faultIn(const QByteArray&) const { return std::nullopt; }

    /// Why the service refused a connection, by its answer.
    virtual ServiceFault refusal(const HttpOutcome& answer) const = 0;

    /// Why it closed one.
    virtual ServiceFault closing(int closeCode, const QString& reason) const = 0;

    /// Takes `socket` in place of the one that is open.
    void use(std::unique_ptr<StreamingSocket> socket) { socket_ = std::move(socket); }

    /// Notes what the service says is wrong, for the end of the connection.
    void tell(ServiceFault fault) { told_ = std::move(fault); }

    std::unique_ptr<StreamingSocket> takeSocket() { return std::move(socket_); }

    void report(const QString& status, const QString& message);

  private:
    /// That the service has said its last word. Whoever waits goes on at the latest with the
    /// engine's end.
    struct LastWord {
        ~LastWord() { said.complete(false); }

        Completion<bool> said;
    };

    QCoro::Task<> receiveMessages();
    void take(const QByteArray& message);
    QCoro::Task<> end(StreamingSocket::Message failure);
    QCoro::Task<ServiceFault> whyRefused(StreamingSocket::Message failure);
    void deliverAll(const QStringList& transcripts);
    void reportFault(ServiceFault fault);
    void translateAndDeliver(const QString& transcript);
    QCoro::Task<> translateFirst(QString transcript);
    QCoro::Task<> untilTranslated();
    void deliver(const QString& transcript, const QString& translation);

    const QString product_;
    const ServiceEndpoints endpoints_;
    const EngineTimings timings_;
    QString apiKey_;
    QString googleApiKeyForTranslation_;
    QString targetLang_;
    bool wantsTranslation_ = false;
    bool isConnected_ = false;
    bool isDisconnected_ = false;
    std::optional<ServiceFault> told_; ///< By the service, before it closed.
    LastWord lastWord_;
    QNetworkRequest request_;
    AnswerOrder order_; ///< Of the translations.
    ServiceClient http_;
    TranslationClient translation_;
    std::unique_ptr<StreamingSocket> socket_;
    Lifetime lifetime_; // Last: ends first.
};

} // namespace orv
