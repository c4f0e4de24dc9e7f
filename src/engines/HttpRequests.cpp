#include "HttpRequests.h"

#include "Completion.h"
#include "Post.h"
#include "ServiceError.h"
#include "ServiceRequests.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <list>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

struct Answer {
    QByteArray body;
    QString error; ///< Empty for a whole answer.
};

/// An answer with an HTTP status of failure is an answer too.
bool isAnswer(QNetworkReply::NetworkError error) {
    constexpr int firstContentError = 200;
    return error == QNetworkReply::NoError ||
           (error > firstContentError && error != QNetworkReply::ProtocolUnknownError &&
            error != QNetworkReply::ProtocolFailure);
}

Answer answerIn(QNetworkReply& reply) {
    if (!isAnswer(reply.error())) {
        return {{}, withoutQuery(reply.errorString(), reply.request().url())};
    }
    return {reply.readAll(), {}};
}

} // namespace

/// Outlives the requests while one of its own events is being handled.
struct HttpRequests::State : std::enable_shared_from_this<State> {
    struct Call {
        QNetworkReply* reply = nullptr;
        Completion<Answer> answer;
        bool ended = false;
    };

    using CallPtr = std::shared_ptr<Call>;

    QNetworkAccessManager network;
    std::list<CallPtr> calls;

    Completion<Answer> start(const QNetworkRequest& request, const QByteArray& body) {
        QNetworkReply* reply = network.post(request, body);
        const auto call = std::make_shared<Call>();
        call->reply = reply;
        calls.push_back(call);
        QObject::connect(reply, &QNetworkReply::readyRead, reply, [this, call] {
            if (call->reply->bytesAvailable() > maximumAnswerSize) {
                endLater(call, {{}, u"Antwort zu groß"_s});
            }
        });
        QObject::connect(reply, &QNetworkReply::finished, reply,
                         [this, call] { endLater(call, answerIn(*call->reply)); });
        return call->answer;
    }

    /// Not from inside the reply's own signal: whoever waits may destroy everything here. The event
    /// owns nothing: one whose turn never comes, at the program's end, is destroyed where no object
    /// of Qt can be.
    void endLater(const CallPtr& call, Answer answer) {
        call->reply->disconnect();
        orv::post(call->reply, [state = weak_from_this(), waiting = std::weak_ptr(call),
                                answer = std::move(answer)] {
            const auto self = state.lock();
            const CallPtr ended = waiting.lock();
            if (self && ended) {
                self->end(ended, answer);
            }
        });
    }

    void end(const CallPtr& call, const Answer& answer) {
        if (std::exchange(call->ended, true)) {
            return;
        }
        calls.remove(call);
        call->reply->disconnect();
        call->reply->abort();
        call->reply->deleteLater();
        call->answer.complete(answer);
    }

    void endAll() {
        while (!calls.empty()) {
            end(CallPtr(calls.front()), {{}, u"Anfrage abgebrochen"_s});
        }
    }
};

HttpRequests::HttpRequests()
    : state_(std::make_shared<State>()) {}

HttpRequests::~HttpRequests() {
    const auto state = state_;
    state->endAll();
}

QCoro::Task<QByteArray> HttpRequests::post(QNetworkRequest request, QByteArray body,
                                           std::chrono::milliseconds timeout) {
    request.setTransferTimeout(static_cast<int>(timeout.count()));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    const Answer answer = co_await state_->start(request, body);
    if (!answer.error.isEmpty()) {
        throw ServiceError(answer.error);
    }
    co_return answer.body;
}

} // namespace orv
