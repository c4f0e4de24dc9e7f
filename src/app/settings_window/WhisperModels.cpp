#include "WhisperModels.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

constexpr qsizetype longestLine = 300;

bool isModel(const QString& id) {
    return std::ranges::any_of(whisperModels(),
                               [&](const WhisperModel& model) { return model.id == id; });
}

} // namespace

std::span<const WhisperModel> whisperModels() {
    static const WhisperModel models[] = {
        {u"tiny"_s, u"Tiny"_s, u"settings.whisper.tiny"_s, 75},
        {u"base"_s, u"Base"_s, u"settings.whisper.base"_s, 145},
        {u"small"_s, u"Small"_s, u"settings.whisper.small"_s, 484},
        {u"medium"_s, u"Medium"_s, u"settings.whisper.medium"_s, 1500},
        {u"large"_s, u"Large"_s, u"settings.whisper.large"_s, 3100},
    };
    return models;
}

QStringList whisperModelFiles(const QString& id) {
    if (!isModel(id)) {
        return {};
    }
    QStringList files = {id + u".pt"_s};
    if (id == "large"_L1) {
        files += {u"large-v1.pt"_s, u"large-v2.pt"_s, u"large-v3.pt"_s};
    }
    return files;
}

QStringList whisperPartFiles(const QString& name) {
    return {name + u".part"_s, name + u".part.source"_s};
}

QSet<QString> downloadedWhisperModels(const QStringList& fileNames) {
    QSet<QString> downloaded;
    for (const WhisperModel& model : whisperModels()) {
        const QStringList files = whisperModelFiles(model.id);
        if (std::ranges::any_of(files, [&](const QString& file) {
                return fileNames.contains(file) &&
                       !fileNames.contains(whisperPartFiles(file).constFirst());
            })) {
            downloaded.insert(model.id);
        }
    }
    return downloaded;
}

QString whisperDownloadScript(const QString& id) {
    return u"import whisper; whisper.load_model('"_s + id + u"')"_s;
}

QString whisperProofScript(const QString& id) {
    return u"try:\n"
           "  import faster_whisper\n"
           "except Exception:\n  "_s +
           whisperDownloadScript(id) +
           u"\nelse:\n"
           "  faster_whisper.WhisperModel('"_s +
           id + u"', device='cpu', compute_type='int8', local_files_only=True)"_s;
}

QString lastLine(const QByteArray& output) {
    QString text = QString::fromUtf8(output);
    text.replace(u'\r', u'\n');
    const QStringList lines = text.split(u'\n');
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        if (const QString said = line->simplified(); !said.isEmpty()) {
            return said.left(longestLine);
        }
    }
    return {};
}

} // namespace orv
