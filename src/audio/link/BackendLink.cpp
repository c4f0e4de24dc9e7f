#include "BackendLink.h"

#include "BackendMessageHandler.h"
#include "BackendSocket.h"
#include "EventLoopThread.h"
#include "PostTarget.h"

#include <QPointer>

#include <atomic>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

struct BackendLink::Remote {
    QPointer<BackendSocket> socket; ///< Touched on the link thread only.
    std::atomic<bool> cancelled = false;
};

BackendLink::BackendLink(EventLoopThread& thread, const QUrl& url, Listener& listener,
                         Timings timings)
    : thread_(thread)
    , owner_(std::make_unique<PostTarget>())
    , remote_(std::make_shared<Remote>()) {
    thread_.post([remote = remote_, &thread, url,
                  handler = BackendMessageHandler(listener, owner_->handle()),
                  timings] { remote->socket = new BackendSocket(thread, url, handler, timings); });
}

BackendLink::~BackendLink() {
    cancel();
}

BackendLink::Sender BackendLink::sender() const {
    Sender sender;
    sender.thread_ = &thread_;
    sender.remote_ = remote_;
    return sender;
}

bool BackendLink::Sender::send(QByteArray message, Sent sent) const {
    if (!remote_ || remote_->cancelled) {
        return false;
    }
    thread_->post(
        [remote = remote_, message = std::move(message), sent = std::move(sent)]() mutable {
            if (remote->socket) {
                remote->socket->send(std::move(message), std::move(sent));
            } else if (sent) {
                sent(u"Verbindung geschlossen"_s);
            }
        });
    return true;
}

void BackendLink::cancel() {
    owner_.reset();
    remote_->cancelled = true;
    thread_.post([remote = remote_] {
        if (remote->socket) {
            remote->socket->close();
        }
    });
}

} // namespace orv
