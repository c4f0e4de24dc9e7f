#include "WebSocketPeer.h"

#include "WaitUntil.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv::test {

WebSocketPeer::WebSocketPeer()
    : process_({QStringLiteral(ORVANE_TEST_PEERS) + u"/websocket_peer.py"_s}) {
    const bool listening = waitUntil([this] { return count(u"listening"_s) == 1; });
    EXPECT_TRUE(listening) << "the WebSocket peer did not start";
    port_ = listening ? static_cast<quint16>(events_.first()[u"port"_s].toInt()) : quint16{0};
}

void WebSocketPeer::read() {
    for (const QByteArray& line : process_.readLines()) {
        events_.append(QJsonDocument::fromJson(line).object());
    }
}

const QList<QJsonObject>& WebSocketPeer::events() {
    read();
    return events_;
}

QList<QJsonObject> WebSocketPeer::messages() {
    QList<QJsonObject> found;
    for (const QJsonObject& event : events()) {
        if (event[u"event"_s] == u"text"_s) {
            found.append(QJsonDocument::fromJson(event[u"data"_s].toString().toUtf8()).object());
        }
    }
    return found;
}

QList<QJsonObject> WebSocketPeer::messages(const QString& type) {
    QList<QJsonObject> found = messages();
    found.removeIf([&](const QJsonObject& message) { return message[u"type"_s] != type; });
    return found;
}

qsizetype WebSocketPeer::count(const QString& event) {
    const auto& all = events();
    return std::count_if(all.begin(), all.end(),
                         [&](const QJsonObject& one) { return one[u"event"_s] == event; });
}

void WebSocketPeer::send(const QByteArray& text) {
    command({{u"send"_s, QString::fromUtf8(text)}});
}

void WebSocketPeer::command(const QJsonObject& command) {
    process_.writeLine(QJsonDocument(command).toJson(QJsonDocument::Compact));
}

} // namespace orv::test
