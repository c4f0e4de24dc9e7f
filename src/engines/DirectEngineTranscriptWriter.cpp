#include "DirectEngineTranscriptWriter.h"

#include "Log.h"

#include <QFile>
#include <QLocale>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr double cueSeconds = 3.0;

QString localStamp(const QDateTime& time, QStringView format) {
    return QLocale::c().toString(time.toLocalTime(), format);
}

} // namespace

QString transcriptEntry(const QString& original, const QString& translation,
                        const QDateTime& timestamp) {
    return u"["_s + QLocale::c().toString(timestamp.toUTC(), u"yyyy-MM-dd'T'HH:mm:ss.zzz'Z'") +
           u"]\nOriginal: "_s + original + u"\nTranslation: "_s + translation + u"\n\n"_s;
}

QString transcriptHeader(const QString& sourceLang, const QString& targetLang,
                         const QDateTime& opened) {
    return u"Live Audio Translation\nSession: "_s + localStamp(opened, u"yyyy-MM-dd HH:mm:ss") +
           u"\nSource: "_s + sourceLang + u"\nTarget: "_s + targetLang + u"\n"_s +
           QString(60, u'=') + u"\n\n"_s;
}

QString formatSRTTime(double seconds) {
    // Times come from whole milliseconds; a fraction that binary floating point puts just below
    // one must not lose it.
    constexpr double roundingSlack = 1e-9;
    const double time = std::max(seconds, 0.0) + roundingSlack;
    const auto whole = static_cast<std::int64_t>(time);
    const auto milliseconds =
        static_cast<std::int64_t>((time - static_cast<double>(whole)) * 1000.0);
    return QString::asprintf("%02lld:%02lld:%02lld,%03lld", static_cast<long long>(whole / 3600),
                             static_cast<long long>(whole % 3600 / 60),
                             static_cast<long long>(whole % 60),
                             static_cast<long long>(milliseconds));
}

QString subtitleCue(std::int64_t index, double startSeconds, const QString& original,
                    const QString& translation) {
    return QString::number(index) + u"\n"_s + formatSRTTime(startSeconds) + u" --> "_s +
           formatSRTTime(startSeconds + cueSeconds) + u"\n"_s + original + u"\n"_s + translation +
           u"\n\n"_s;
}

namespace {

/// Makes a file with this content, in place of any other of that name.
bool createFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered) &&
           file.write(content) == content.size();
}

} // namespace

struct DirectEngineTranscriptWriter::Files {
    struct Output {
        QFile file;
        qint64 size = 0; ///< Of everything that was written whole.
        bool failing = false;

        /// For writing at the end of a file that is there.
        bool open(const QString& path, qint64 length) {
            size = length;
            file.setFileName(path);
            return file.open(QIODevice::Append | QIODevice::ExistingOnly | QIODevice::Unbuffered);
        }

        /// Whether all of it is in the file.
        bool write(const QString& text) {
            const QByteArray bytes = text.toUtf8();
            const bool written = file.write(bytes) == bytes.size();
            if (!written && !failing) {
                logLine(u"❌ DirectEngineTranscriptWriter: Schreiben fehlgeschlagen: "_s +
                        file.errorString());
            }
            failing = !written;
            if (written) {
                size += bytes.size();
            } else { // A disk that is full may have taken a part.
                file.resize(size);
            }
            return written;
        }
    };

    Output txtHandle;
    Output srtHandle;
    QDateTime startTime; ///< In UTC: the time zone may change while the files are open.
    std::int64_t srtIndex = 0;
};

std::shared_ptr<DirectEngineTranscriptWriter>
DirectEngineTranscriptWriter::open(const QString& folder, const QString& sourceLang,
                                   const QString& targetLang, const QDateTime& opened) {
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(folder).toStdString(), error);
    if (error) {
        logLine(u"❌ DirectEngineTranscriptWriter: outputDir konnte nicht erstellt werden: "_s +
                QString::fromStdString(error.message()));
        return nullptr;
    }
    const QString stamp = localStamp(opened, u"yyyyMMdd_HHmmss");
    const QString txt = folder + u"/transcript_"_s + stamp + u".txt"_s;
    const QString srt = folder + u"/subtitles_"_s + stamp + u".srt"_s;
    const QByteArray header = transcriptHeader(sourceLang, targetLang, opened).toUtf8();
    if (!createFile(txt, header) || !createFile(srt, {})) {
        logLine(u"❌ DirectEngineTranscriptWriter: Datei-Erstellung fehlgeschlagen");
        return nullptr;
    }
    auto files = std::make_unique<Files>();
    files->startTime = opened.toUTC();
    if (!files->txtHandle.open(txt, header.size()) || !files->srtHandle.open(srt, 0)) {
        logLine(u"❌ DirectEngineTranscriptWriter: FileHandle konnte nicht geöffnet werden");
        return nullptr;
    }
    logLine(u"💾 DirectEngineTranscriptWriter: "_s + txt + u", "_s + srt);
    return std::shared_ptr<DirectEngineTranscriptWriter>(
        new DirectEngineTranscriptWriter(std::move(files)));
}

DirectEngineTranscriptWriter::DirectEngineTranscriptWriter(std::unique_ptr<Files> files)
    : files_(std::move(files))
    , queue_(u"io.tavrin.orv.transcript"_s) {}

DirectEngineTranscriptWriter::~DirectEngineTranscriptWriter() = default;

void DirectEngineTranscriptWriter::append(const QString& original, const QString& translation,
                                          const QDateTime& timestamp) {
    append(original, translation, timestamp,
           std::chrono::milliseconds(files_->startTime.msecsTo(timestamp)));
}

void DirectEngineTranscriptWriter::append(const QString& original, const QString& translation) {
    using std::chrono::milliseconds;
    const auto passed = std::chrono::steady_clock::now() - openedAt_;
    append(original, translation, QDateTime::currentDateTimeUtc(),
           std::chrono::duration_cast<milliseconds>(passed));
}

void DirectEngineTranscriptWriter::append(const QString& original, const QString& translation,
                                          const QDateTime& timestamp,
                                          std::chrono::milliseconds sinceOpened) {
    // Never locked: the last owner must not be the queue, which joins its thread.
    queue_.post([writer = weak_from_this(), files = files_.get(), original, translation,
                 timestamp = timestamp.toUTC(), sinceOpened] {
        if (writer.expired() || !files->txtHandle.file.isOpen()) {
            return;
        }
        files->txtHandle.write(transcriptEntry(original, translation, timestamp));
        const double start = static_cast<double>(sinceOpened.count()) / 1000.0;
        const std::int64_t index = files->srtIndex + 1;
        if (files->srtHandle.write(subtitleCue(index, start, original, translation))) {
            files->srtIndex = index;
        }
    });
}

void DirectEngineTranscriptWriter::close() {
    queue_.sync([files = files_.get()] {
        files->txtHandle.file.close();
        files->srtHandle.file.close();
    });
}

} // namespace orv
