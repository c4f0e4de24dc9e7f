// The one place that speaks to the X server itself.

#include "DesktopComposition.h"

#include <QByteArray>
#include <QGuiApplication>
#include <QWindow>

#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace orv {

namespace {

struct FreeReply {
    void operator()(void* reply) const { std::free(reply); }
};

template <typename Reply>
using ReplyPtr = std::unique_ptr<Reply, FreeReply>;

/// Null where the windows are not on an X server.
xcb_connection_t* connectionToServer() {
    const auto* server = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return server != nullptr ? server->connection() : nullptr;
}

xcb_atom_t atomOf(xcb_connection_t* connection, const QByteArray& name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
    const ReplyPtr<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection, cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

int screenNumber() {
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (xcb_parse_display(nullptr, &host, &display, &screen) != 0) {
        std::free(host);
    }
    return screen;
}

} // namespace

bool isDesktopComposited() {
    xcb_connection_t* connection = connectionToServer();
    if (connection == nullptr) {
        return true;
    }
    // Whoever composites holds this selection.
    const xcb_atom_t selection =
        atomOf(connection, "_NET_WM_CM_S" + QByteArray::number(screenNumber()));
    const ReplyPtr<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, selection), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

void declareOwnShadow(QWindow& window, int margin) {
    xcb_connection_t* connection = connectionToServer();
    if (connection == nullptr) {
        return;
    }
    std::array<std::uint32_t, 4> extents = {};
    extents.fill(static_cast<std::uint32_t>(std::lround(margin * window.devicePixelRatio())));
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE,
                        static_cast<xcb_window_t>(window.winId()),
                        atomOf(connection, "_GTK_FRAME_EXTENTS"), XCB_ATOM_CARDINAL, 32,
                        extents.size(), extents.data());
}

} // namespace orv
