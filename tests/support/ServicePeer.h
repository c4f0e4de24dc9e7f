#pragma once

#include "PeerProcess.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace orv::test {

/// A scripted service in a process of its own; see peers/streaming_service.py and
/// peers/http_service.py. Ends with the object.
class ServicePeer {
  public:
    /// `script` as in the folder peers.
    explicit ServicePeer(const QString& script, const QStringList& arguments = {});
    ~ServicePeer();

    quint16 port() const { return port_; }

    /// The service's address, without a trailing slash.
    QString url(const QString& scheme) const;

    /// The file with the certificate of a service that speaks TLS.
    QString certificate() const { return certificate_; }

    /// Everything of this kind that happened so far, oldest first. Call from a condition of
    /// `waitUntil`.
    QList<QJsonObject> events(const QString& event);

    qsizetype count(const QString& event) { return events(event).size(); }

    /// The audio that came in so far.
    const QByteArray& audio();

    void command(const QJsonObject& command);
    void send(const QString& text);

    /// Takes the service off the network, as it were: it neither reads nor answers nor closes.
    void freeze();
    void thaw();

  private:
    void read();

    PeerProcess process_;
    QList<QJsonObject> events_; ///< Without the audio itself.
    QByteArray audio_;
    quint16 port_ = 0;
    QString certificate_;
};

} // namespace orv::test
