#include "BackendMessageHandler.h"

#include "Log.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

BackendMessageHandler::BackendMessageHandler(Actions actions)
    : actions_(std::move(actions)) {}

void BackendMessageHandler::handle(const DownstreamMessage& message) {
    if (const auto* result = std::get_if<Result>(&message)) {
        if (!result->original.isEmpty()) {
            logLine(u"📥 Original: "_s + result->original);
        }
        if (!result->translation.isEmpty()) {
            logLine(u"📥 Übersetzung: "_s + result->translation);
            actions_.publishResult(*result);
        } else if (actions_.translatesOnClient()) {
            actions_.translateOnClient(result->original);
        }
    } else if (const auto* status = std::get_if<StatusMessage>(&message)) {
        handleStatus(*status);
    } else if (std::holds_alternative<FlushedMessage>(message)) {
        logLine(u"✓ Flush-Bestätigung vom Backend empfangen");
        actions_.flushed();
    }
}

void BackendMessageHandler::handleStatus(const StatusMessage& status) {
    if (status.status != u"backend_version") {
        logLine(u"📋 Backend Status: ["_s + status.status + u"] "_s + status.message);
        actions_.publishStatus(status);
        return;
    }
    const std::int64_t version = status.version.value_or(0);
    if (version >= requiredBackendVersion) {
        logLine(u"✓ Backend-Version OK: v"_s + QString::number(version));
        return;
    }
    logLine(u"⚠️ Backend veraltet: v"_s + QString::number(version) + u", erwartet v"_s +
            QString::number(requiredBackendVersion));
    actions_.showNotice({AudioNotice::Kind::BackendOutdated, QString::number(version)});
}

} // namespace orv
