// A message to a WebSocket on loopback, from the bytes that the program has to the last byte at the
// receiver: by our own frames, and by the socket's own way.

#include "Receiver.h"
#include "WebSocketSender.h"

#include <QCoreApplication>
#include <QWebSocket>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using orv::WebSocketFrameKind;
using orv::bench::Receiver;

/// An open connection.
class Connection {
  public:
    Connection() {
        socket_.open(QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(receiver_.port())));
        while (socket_.state() != QAbstractSocket::ConnectedState) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    /// Calls `write` and waits until the receiver has the whole message.
    template <typename Write>
    void send(Write write) {
        write(socket_, sender_);
        socket_.flush();
        while (socket_.bytesToWrite() > 0) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        receiver_.waitFor(++sent_);
    }

  private:
    Receiver receiver_;
    QWebSocket socket_;
    orv::WebSocketSender sender_{socket_};
    std::uint64_t sent_ = 0;
};

/// Eight seconds of sound as the speech server gets them: base64 in a text message.
const QByteArray chunk(1'024'096, 'A');

/// A microphone's buffer as a streaming service gets it.
const QByteArray buffer(8192, '\x5a');

template <typename Write>
void measure(benchmark::State& state, Write write) {
    Connection connection;
    for (const auto& round : state) {
        static_cast<void>(round);
        connection.send(write);
    }
}

void textOurs(benchmark::State& state) {
    measure(state, [](QWebSocket&, orv::WebSocketSender& sender) {
        sender.send(WebSocketFrameKind::Text, chunk);
    });
}

void textTheirs(benchmark::State& state) {
    measure(state, [](QWebSocket& socket, orv::WebSocketSender&) {
        socket.sendTextMessage(QString::fromUtf8(chunk));
    });
}

void bufferOurs(benchmark::State& state) {
    measure(state, [](QWebSocket&, orv::WebSocketSender& sender) {
        sender.send(WebSocketFrameKind::Binary, buffer);
    });
}

void bufferTheirs(benchmark::State& state) {
    measure(state,
            [](QWebSocket& socket, orv::WebSocketSender&) { socket.sendBinaryMessage(buffer); });
}

BENCHMARK(textOurs)->Unit(benchmark::kMicrosecond);
BENCHMARK(textTheirs)->Unit(benchmark::kMicrosecond);
BENCHMARK(bufferOurs)->Unit(benchmark::kMicrosecond);
BENCHMARK(bufferTheirs)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
