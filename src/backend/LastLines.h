#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

namespace orv {

/// The end of what a program has printed, kept to tell why it ended. However much it prints, and
/// however long its lines are, no more than twice `kept` bytes are held.
class LastLines {
  public:
    static constexpr qsizetype kept = 16384;
    static constexpr qsizetype mostLines = 10;
    static constexpr qsizetype longestLine = 300; ///< In UTF-16 units.

    /// A piece of output as it was read, not cut at line or character borders.
    void take(QByteArrayView bytes);

    /// The last lines with something on them, the latest at the end, for people: without colours
    /// and other control characters, what is no UTF-8 replaced, and dots where a part is missing.
    /// Of a line that was written over again and again, as progress is, the last state counts.
    QStringList lines() const;

    /// The last of them that holds a letter or a digit; empty when there is none.
    QString lastWords() const;

    /// How many bytes are held.
    qsizetype size() const { return tail_.size(); }

  private:
    QByteArray tail_;
    bool isCut_ = false; ///< Something stood before `tail_` in its first line.
};

} // namespace orv
