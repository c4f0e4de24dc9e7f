#pragma once

#include <QNetworkReply>
#include <QObject>

#include <coroutine>

namespace orv {

/// Awaits the end of an HTTP request, whatever it is: an answer, an error, a time-out or an abort.
/// The coroutine goes on inside the reply's `finished` signal, so that aborting a reply before it
/// is destroyed ends the coroutine too. Main thread only.
class ReplyFinished {
  public:
    explicit ReplyFinished(QNetworkReply& reply)
        : reply_(reply) {}

    bool await_ready() const { return reply_.isFinished(); }

    void await_suspend(std::coroutine_handle<> coroutine) {
        QObject::connect(&reply_, &QNetworkReply::finished, &reply_,
                         [coroutine] { coroutine.resume(); });
    }

    void await_resume() const {}

  private:
    QNetworkReply& reply_;
};

} // namespace orv
