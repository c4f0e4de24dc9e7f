#pragma once

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace orv {

/// A connection to whichever of a host's addresses takes it first. They are tried in their order,
/// each when the one before has failed or has had its head start, so that an address behind which
/// everything is swallowed does not use up the time of the others (RFC 8305, section 5). Lives on
/// the main thread.
class ConnectionRace : public QObject {
    Q_OBJECT

  public:
    /// Makes a socket that is connecting to `address`.
    using Connect = std::function<std::unique_ptr<QTcpSocket>(const QHostAddress& address)>;

    static constexpr std::chrono::milliseconds usualHeadStart{250};

    /// `addresses` is not empty.
    ConnectionRace(QList<QHostAddress> addresses, Connect connect,
                   std::chrono::milliseconds headStart = usualHeadStart);

    /// Gives up whatever is connecting.
    ~ConnectionRace() override;

    /// Begins; the signals come later.
    void start();

    /// The connected socket, once `won` has been told.
    std::unique_ptr<QTcpSocket> takeWinner() { return std::move(winner_); }

  Q_SIGNALS:
    // One of them comes, once. Whoever hears of it must not destroy the race within the call.
    void won();
    void lost(const QString& error); ///< Of the last address that was tried.

  private:
    void tryNext();
    void connected(QTcpSocket* socket);
    void failed(QTcpSocket* socket);
    std::unique_ptr<QTcpSocket> take(const QTcpSocket* socket);

    QList<QHostAddress> addresses_; ///< Those not tried yet.
    const Connect connect_;
    const std::chrono::milliseconds headStart_;
    QTimer next_; ///< Rings when the next address is to be tried.
    std::vector<std::unique_ptr<QTcpSocket>> running_;
    std::vector<std::unique_ptr<QTcpSocket>> failed_; ///< They are inside their own signal.
    std::unique_ptr<QTcpSocket> winner_;
};

} // namespace orv
