#pragma once

#include "PeerProcess.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>

namespace orv::test {

/// A scripted speech server in a process of its own, on a WebSocket library that others wrote; see
/// peers/websocket_peer.py. Ends with the object.
class WebSocketPeer {
  public:
    WebSocketPeer();

    quint16 port() const { return port_; }

    /// Everything that happened so far, oldest first. Call from a condition of `waitUntil`.
    const QList<QJsonObject>& events();

    /// The text frames received so far, as JSON objects.
    QList<QJsonObject> messages();

    /// The text frames with this "type".
    QList<QJsonObject> messages(const QString& type);

    /// How often this event happened.
    qsizetype count(const QString& event);

    void send(const QByteArray& text);
    void command(const QJsonObject& command);

  private:
    void read();

    PeerProcess process_;
    QList<QJsonObject> events_;
    quint16 port_ = 0;
};

} // namespace orv::test
