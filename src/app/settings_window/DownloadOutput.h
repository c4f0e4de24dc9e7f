#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace orv {

/// What a model's download prints, put together from the pieces in which it arrives: "progress 37"
/// for each percentage, "note ..." for the log, anything else to say what is wrong. A line ends at
/// a line feed or, as progress bars have it, at a carriage return.
class DownloadOutput {
  public:
    /// Takes in a piece of output; returns the notes in it.
    QStringList take(const QByteArray& bytes);

    /// How much is there, of 100; nothing before it was told.
    std::optional<int> percent() const { return percent_; }

    /// The last line for people; empty when there was none.
    QString lastLine() const;

  private:
    /// Returns the note if the line is one.
    std::optional<QString> takeLine(const QByteArray& line);

    QByteArray unfinished_;
    std::optional<int> percent_;
    QByteArray lastLine_;
};

} // namespace orv
