#include "OverlayServer.h"

#include "Log.h"
#include "OverlayConnections.h"
#include "SettingsList.h"
#include "ThreadChecks.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <utility>
#include <variant>

namespace orv {

using namespace Qt::StringLiterals;

namespace {

QString text(const std::error_code& error) {
    return QString::fromStdString(error.message());
}

} // namespace

std::uint16_t overlayPort(std::int64_t stored) {
    constexpr std::int64_t highestPort = std::numeric_limits<std::uint16_t>::max();
    return static_cast<std::uint16_t>(stored < 1 ? defaultOverlayPort
                                                 : std::min(stored, highestPort));
}

OverlayServing OverlayServing::fromSettings(const SettingsList& settings) {
    return {.enabled = settings.obsOverlayEnabled.get(), .port = settings.obsOverlayPort.get()};
}

OverlayServer::OverlayServer(OverlayLimits limits)
    : limits_(limits)
    , queue_(u"io.tavrin.orv.overlayserver"_s) {
    setAppearance(OverlayAppearance::fromSettings(SettingsList()));
}

OverlayServer::~OverlayServer() {
    queue_.sync([this] {
        connections_.reset();
        listener_.reset();
    });
}

OverlayServer& OverlayServer::shared() {
    return SharedInstance<OverlayServer>::get();
}

void OverlayServer::applySettings(const OverlayServing& serving) {
    {
        const std::lock_guard guard(lock_);
        serving_ = serving;
    }
    queue_.post([this] { reconcile(); });
}

void OverlayServer::setAppearance(const OverlayAppearance& appearance) {
    const std::lock_guard guard(lock_);
    result_.appearance = appearance;
}

void OverlayServer::start(std::uint16_t port) {
    queue_.post([this, port] { startNow(port); });
}

void OverlayServer::stop() {
    queue_.post([this] { stopNow(); });
}

void OverlayServer::broadcast(const Result& result) {
    const std::chrono::duration<double> sinceEpoch =
        std::chrono::system_clock::now().time_since_epoch();
    const std::lock_guard guard(lock_);
    result_.original = result.original;
    result_.translation = result.translation;
    result_.lastUpdate = sinceEpoch.count();
}

HttpResponse OverlayServer::response(QByteArrayView path) const {
    switch (overlayRoute(path)) {
    case OverlayRoute::Text:
        return latestResult();
    case OverlayRoute::Page:
        return pageResponse(overlayHTML());
    case OverlayRoute::NotFound:
        break;
    }
    return notFoundResponse();
}

QByteArray OverlayServer::overlayHTML() const {
    OverlayAppearance appearance;
    {
        const std::lock_guard guard(lock_);
        appearance = result_.appearance;
        if (encodedPage_.source == appearance) {
            return encodedPage_.bytes;
        }
    }
    QByteArray html = overlayPage(appearance);
    const std::lock_guard guard(lock_);
    encodedPage_ = {std::move(appearance), html};
    return html;
}

HttpResponse OverlayServer::latestResult() const {
    OverlayResult result;
    {
        const std::lock_guard guard(lock_);
        result = result_;
        if (encodedResult_.source == result) {
            return textResponse(encodedResult_.bytes);
        }
    }
    const QByteArray json = result.toJson();
    const std::lock_guard guard(lock_);
    encodedResult_ = {std::move(result), json};
    return textResponse(json);
}

QByteArray OverlayServer::answerTo(QByteArrayView path) const {
    ORV_ON(queue_);
    return response(path).bytes();
}

void OverlayServer::reconcile() {
    ORV_ON(queue_);
    OverlayServing serving;
    {
        const std::lock_guard guard(lock_);
        serving = serving_;
    }
    if (!serving.enabled) {
        stopNow();
        return;
    }
    const std::uint16_t port = overlayPort(serving.port);
    if (!isRunning_ || activePort_ != port) {
        startNow(port);
    }
}

void OverlayServer::startNow(std::uint16_t port) {
    ORV_ON(queue_);
    stopNow();
    auto opened = OverlayListener::open(port, limits_.acceptDeferral);
    if (const auto* error = std::get_if<std::error_code>(&opened)) {
        logLine(u"❌ OBS-Overlay-Server start failed: %1"_s.arg(text(*error)));
        return;
    }
    listener_ = std::move(std::get<OverlayListener>(opened));
    activePort_ = listener_->port();
    isRunning_ = true;
    if (!connections_ || !connections_->isOpen()) {
        OverlayRequestHandler& handler = *this;
        connections_ = std::make_unique<OverlayConnections>(limits_, handler);
    }
    logLine(u"✓ OBS-Overlay-Server läuft auf http://localhost:%1/overlay"_s.arg(activePort_));
    connections_->listenOn(listener_->sockets());
}

void OverlayServer::stopNow() {
    ORV_ON(queue_);
    if (connections_) {
        connections_->stopListening();
    }
    listener_.reset();
    isRunning_ = false;
}

void OverlayServer::listenerFailed(std::error_code error) {
    ORV_ON(queue_);
    listener_.reset();
    isRunning_ = false;
    logLine(u"❌ OBS-Overlay-Server fehlgeschlagen: %1"_s.arg(text(error)));
}

} // namespace orv
