#pragma once

#include "SerialQueue.h"

#include <QDateTime>
#include <QString>

#include <chrono>
#include <cstdint>
#include <memory>

namespace orv {

/// "[timestamp] / Original / Translation" entry of a transcript; `timestamp` is shown in UTC with
/// milliseconds (ISO 8601).
QString transcriptEntry(const QString& original, const QString& translation,
                        const QDateTime& timestamp);

/// The head of a transcript; `opened` is shown in local time.
QString transcriptHeader(const QString& sourceLang, const QString& targetLang,
                         const QDateTime& opened);

/// A point in time of a SubRip file, "hh:mm:ss,mmm"; negative times become 0.
QString formatSRTTime(double seconds);

/// One SubRip cue of three seconds.
QString subtitleCue(std::int64_t index, double startSeconds, const QString& original,
                    const QString& translation);

/// Writes the results of one direct-engine run into a transcript and a subtitle file. Every entry
/// is handed to the operating system by the time its write returns. Lives on the main thread; the
/// files are touched only on the queue "io.tavrin.orv.transcript".
class DirectEngineTranscriptWriter
    : public std::enable_shared_from_this<DirectEngineTranscriptWriter> {
  public:
    /// Creates both files in `folder` (made when missing), named after the local time `opened`.
    /// Null, after a log line, when that fails.
    static std::shared_ptr<DirectEngineTranscriptWriter>
    open(const QString& folder, const QString& sourceLang, const QString& targetLang,
         const QDateTime& opened = QDateTime::currentDateTime());

    /// Closes both files once the write under way has ended; entries that still wait are not
    /// written any more. Whoever wants them calls `close` first.
    ~DirectEngineTranscriptWriter();

    /// Appends one result to both files; returns at once. An entry that cannot be written whole is
    /// left out of its file; each stretch of such entries costs one log line and nothing else.
    void append(const QString& original, const QString& translation, const QDateTime& timestamp);

    /// The same for a result that has come just now: its cue begins as long after the opening as
    /// has really passed, also when somebody has set the clock meanwhile.
    void append(const QString& original, const QString& translation);

    /// Waits until every earlier append has been written and closes both files.
    void close();

  private:
    struct Files;

    explicit DirectEngineTranscriptWriter(std::unique_ptr<Files> files);

    void append(const QString& original, const QString& translation, const QDateTime& timestamp,
                std::chrono::milliseconds sinceOpened);

    const std::chrono::steady_clock::time_point openedAt_ = std::chrono::steady_clock::now();
    std::unique_ptr<Files> files_; // Outlives the queue that uses it.
    SerialQueue queue_;
};

} // namespace orv
