#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace orv {

/// Output that waits to be written. While there is no room the newest is left out and counted; once
/// half of the room is free again, one line tells how much it was, in the place where it would have
/// stood, and output is taken again.
///
/// For one thread at a time.
class OutputBacklog {
  public:
    /// `room` in bytes.
    explicit OutputBacklog(qsizetype room)
        : room_(room) {}

    /// Takes in as many of the bytes as there is room for.
    void add(QByteArrayView bytes);

    /// Takes in a line of our own, which ends with a line feed and begins on a line of its own.
    /// There is always room for it: such lines are few and short.
    void addLine(QByteArrayView line);

    bool isEmpty() const { return waiting_.isEmpty(); }

    /// The oldest of what waits, no more than `most` bytes.
    QByteArray front(qsizetype most) const { return waiting_.left(most); }

    /// So many of the oldest bytes have been written.
    void drop(qsizetype count);

  private:
    void append(QByteArrayView bytes);
    void tellLeftOut();

    const qsizetype room_;
    QByteArray waiting_;
    qint64 leftOut_ = 0;
    bool isWithinLine_ = false; ///< The last byte taken in was no line feed.
};

} // namespace orv
