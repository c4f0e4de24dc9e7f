#include "BackendMessageHandler.h"

#include "BackendMessages.h"

#include <utility>
#include <variant>

namespace orv {

namespace {

struct Dispatch {
    BackendLink::Listener& listener;

    void operator()(std::monostate) const {}

    void operator()(const Result& result) const { listener.receiveResult(result); }

    void operator()(const StatusMessage& status) const { listener.receiveStatus(status); }

    void operator()(ProcessedMessage) const { listener.receiveProcessed(); }

    void operator()(FlushedMessage) const { listener.receiveFlushed(); }
};

} // namespace

BackendMessageHandler::BackendMessageHandler(BackendLink::Listener& listener,
                                             PostTarget::Handle owner)
    : listener_(&listener)
    , owner_(std::move(owner)) {}

void BackendMessageHandler::handleTranslation(const QByteArray& utf8) const {
    owner_.post([listener = listener_, message = parseDownstream(utf8)] {
        std::visit(Dispatch{*listener}, message);
    });
}

void BackendMessageHandler::handleFailure(const QString& error) const {
    owner_.post([listener = listener_, error] { listener->linkFailed(error); });
}

} // namespace orv
