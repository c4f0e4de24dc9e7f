#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <span>

namespace orv {

/// A model of the speech recognition that runs on this computer.
struct WhisperModel {
    QString id;        ///< The value stored as the chosen model; also the start of its file's name.
    QString name;      ///< For people, the same in every language.
    QString detailKey; ///< Key of a line on its quality and how much memory it takes.
    int megabytes;     ///< About how large the download is, in millions of bytes.
};

/// From the smallest to the largest.
std::span<const WhisperModel> whisperModels();

/// The names of the files that hold the model `id` in the recognition library's cache: one, but for
/// "large", which has also had versions of its own. Nothing for an id that is no model.
QStringList whisperModelFiles(const QString& id);

/// What a download that is not over keeps beside the file `name` of a model: the part that has
/// come, and what it is a part of. The speech server's download script gives them these names.
QStringList whisperPartFiles(const QString& name);

/// Which models are there, from the names of the files in the cache. Any of a model's files counts,
/// but for one with a part beside it: the script removes what is not whole before it begins, and
/// its part when it is done, so somebody else has put the file there and may be about to.
QSet<QString> downloadedWhisperModels(const QStringList& fileNames);

/// The Python script that makes the recognition library fetch the model `id` into its cache.
QString whisperDownloadScript(const QString& id);

/// The Python script that makes the library load the model `id` that it has just got:
/// faster-whisper where that can be imported, as the download script prefers it, too.
QString whisperProofScript(const QString& id);

/// The last line of what a program printed that says something, for people: lines may be cut short
/// by carriage returns, as progress bars are, and may be anything but text.
QString lastLine(const QByteArray& output);

} // namespace orv
