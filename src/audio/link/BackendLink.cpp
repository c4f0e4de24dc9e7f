#include "BackendLink.h"

#include "BackendSocket.h"
#include "EventLoopThread.h"
#include "PostTarget.h"

#include <QPointer>

#include <atomic>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

/// Created and destroyed with the link, on the owner's thread.
struct BackendLink::Owner {
    Handlers handlers;
    PostTarget target;
};

struct BackendLink::Remote {
    QPointer<BackendSocket> socket; ///< Touched on the link thread only.
    std::atomic<bool> cancelled = false;
};

BackendLink::BackendLink(EventLoopThread& thread, const QUrl& url, Handlers handlers,
                         Timings timings)
    : thread_(thread)
    , owner_(std::make_unique<Owner>())
    , remote_(std::make_shared<Remote>()) {
    owner_->handlers = std::move(handlers);
    // The handlers run only through the target and die with it, so the plain pointer is safe.
    BackendSocket::Events events{
        .message =
            [owner = owner_.get(), target = owner_->target.handle()](DownstreamMessage message) {
                target.post([owner, message = std::move(message)] {
                    const auto handler = owner->handlers.message; // May end the link while it runs.
                    handler(message);
                });
            },
        .failed =
            [owner = owner_.get(), target = owner_->target.handle()](QString error) {
                target.post([owner, error = std::move(error)] {
                    const auto handler = owner->handlers.failed; // May end the link while it runs.
                    handler(error);
                });
            },
    };
    thread_.post([remote = remote_, parent = thread_.context(), url, events = std::move(events),
                  timings]() mutable {
        remote->socket = new BackendSocket(url, std::move(events), timings, parent);
    });
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
