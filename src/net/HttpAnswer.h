#pragma once

#include "HttpHeaders.h"

#include <QByteArray>
#include <QByteArrayView>

#include <cstdint>
#include <optional>

namespace orv {

/// Follows an HTTP/1.x answer to a GET or POST request up to its end. Whatever its status, it is
/// whole once its end has come. Fed with pieces of any size.
class HttpAnswer {
  public:
    enum class State {
        Reading,  ///< More must come.
        Whole,    ///< The answer is complete; what follows is not looked at.
        NotHttp,  ///< This is no HTTP answer, or its head is beyond `maximumHead`.
        CutShort, ///< The connection was closed before the end.
        TooLarge, ///< The content is, or says that it is, beyond what is kept.
    };

    /// The largest head that is taken, interim answers and the lines between chunks included,
    /// bytes.
    static constexpr qsizetype maximumHead = 65536;

    /// Keeps up to `largestBody` bytes of content; without one none, however much there is.
    explicit HttpAnswer(std::optional<std::int64_t> largestBody = {})
        : largestBody_(largestBody) {}

    State read(QByteArrayView bytes);

    /// The server has closed the connection.
    State close();

    State state() const { return state_; }

    int status() const { return status_; }

    const HttpHeaders& headers() const { return headers_; }

    const QByteArray& body() const { return body_; }

    /// Whether the server leaves the connection open for another request after this whole answer.
    bool leavesConnectionOpen() const {
        return state_ == State::Whole && !closes_ && !rest_ && part_ != Part::BodyUntilClose &&
               status_ != 101;
    }

  private:
    enum class Part { Status, Header, SizedBody, ChunkSize, ChunkEnd, Trailer, BodyUntilClose };

    qsizetype readLine(QByteArrayView bytes);
    void lineRead(QByteArrayView line);
    void readStatus(QByteArrayView line);
    void readHeader(QByteArrayView line);
    void headRead();
    void readChunkSize(QByteArrayView line);
    qsizetype takeContent(QByteArrayView bytes);
    void contentTaken();
    void limitContent();

    void fail() { state_ = State::NotHttp; }

    const std::optional<std::int64_t> largestBody_;
    State state_ = State::Reading;
    Part part_ = Part::Status;
    QByteArray line_;
    qsizetype headSize_ = 0;
    int status_ = 0;
    bool chunked_ = false;
    bool closes_ = false; ///< The server has said so, or its version does.
    bool rest_ = false;   ///< Something has come behind the end.
    HttpHeaders headers_;
    QByteArray body_;
    std::int64_t left_ = -1; ///< Of the body or the chunk; negative: unknown.
};

} // namespace orv
