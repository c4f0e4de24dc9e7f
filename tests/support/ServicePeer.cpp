#include "ServicePeer.h"

#include "WaitUntil.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

#include <csignal>

using namespace Qt::StringLiterals;

namespace orv::test {

ServicePeer::ServicePeer(const QString& script, const QStringList& arguments)
    : process_(QStringList{QStringLiteral(ORVANE_TEST_PEERS) + u"/"_s + script} + arguments) {
    const bool listening = waitUntil([this] { return count(u"listening"_s) == 1; });
    EXPECT_TRUE(listening) << "the service did not start";
    if (listening) {
        port_ = static_cast<quint16>(events_.first()[u"port"_s].toInt());
        certificate_ = events_.first()[u"certificate"_s].toString();
    }
}

ServicePeer::~ServicePeer() {
    thaw(); // A frozen script would never see its input end.
}

QString ServicePeer::url(const QString& scheme) const {
    return scheme + u"://127.0.0.1:"_s + QString::number(port_);
}

void ServicePeer::read() {
    for (const QByteArray& line : process_.readLines()) {
        QJsonObject event = QJsonDocument::fromJson(line).object();
        if (event[u"event"_s].toString() == u"audio") {
            audio_ += QByteArray::fromBase64(event.take(u"data"_s).toString().toLatin1());
        }
        events_.append(event);
    }
}

QList<QJsonObject> ServicePeer::events(const QString& event) {
    read();
    QList<QJsonObject> found;
    for (const QJsonObject& one : events_) {
        if (one[u"event"_s].toString() == event) {
            found.append(one);
        }
    }
    return found;
}

const QByteArray& ServicePeer::audio() {
    read();
    return audio_;
}

void ServicePeer::command(const QJsonObject& command) {
    process_.writeLine(QJsonDocument(command).toJson(QJsonDocument::Compact));
}

void ServicePeer::send(const QString& text) {
    command({{u"send"_s, text}});
}

void ServicePeer::freeze() {
    process_.signal(SIGSTOP);
}

void ServicePeer::thaw() {
    process_.signal(SIGCONT);
}

} // namespace orv::test
