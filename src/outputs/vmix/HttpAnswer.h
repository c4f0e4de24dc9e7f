#pragma once

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>

namespace orv {

/// Follows an HTTP/1.x answer to a GET request up to its end and keeps nothing of it. Status and
/// content do not matter, only whether there is a whole answer. Fed with pieces of any size.
class HttpAnswer {
  public:
    enum class State {
        Reading,  ///< More must come.
        Whole,    ///< The answer is complete; what follows is not looked at.
        NotHttp,  ///< This is no HTTP answer, or its head is beyond `maximumHead`.
        CutShort, ///< The connection was closed before the end.
    };

    /// The largest head that is taken, interim answers and the lines between chunks included,
    /// bytes.
    static constexpr qsizetype maximumHead = 65536;

    State read(QByteArrayView bytes);

    /// The server has closed the connection.
    State close();

    State state() const { return state_; }

  private:
    enum class Part { Status, Header, SizedBody, ChunkSize, ChunkEnd, Trailer, BodyUntilClose };

    qsizetype readLine(QByteArrayView bytes);
    void lineRead(QByteArrayView line);
    void readStatus(QByteArrayView line);
    void readHeader(QByteArrayView line);
    void headRead();
    void readChunkSize(QByteArrayView line);
    qsizetype skip(qsizetype available);

    void fail() { state_ = State::NotHttp; }

    State state_ = State::Reading;
    Part part_ = Part::Status;
    QByteArray line_;
    qsizetype headSize_ = 0;
    int status_ = 0;
    bool chunked_ = false;
    std::int64_t left_ = -1; ///< Of the body or the chunk; negative: unknown.
};

} // namespace orv
