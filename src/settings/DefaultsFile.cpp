#include "DefaultsFile.h"

#include "Log.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

FileProblem parse(const QByteArray& content, QJsonObject& values) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(content, &error);
    if (document.isObject()) {
        values = document.object();
        return {};
    }
    return error.error == QJsonParseError::NoError ? u"no JSON object"_s : error.errorString();
}

} // namespace

DefaultsFile::DefaultsFile(const QString& path)
    : path_(followLinks(path)) {
    sweepTemporaryFiles(path_);
}

QJsonObject DefaultsFile::load() {
    keepFromOthers(path_);
    const FileContent file = readFile(path_);
    if (file.problem && !file.isFilesFault) {
        isUnread_ = true;
        logLine(u"⚠️ Einstellungsdatei %1 zur Zeit nicht lesbar (%2): sie bleibt unverändert, "
                "Standardwerte gelten"_s.arg(path_, *file.problem));
        return {};
    }
    QJsonObject values;
    FileProblem problem = file.problem;
    if (file.content) {
        problem = parse(*file.content, values);
    }
    if (problem) {
        keepUnusableFile(*problem);
    }
    return values;
}

FileProblem DefaultsFile::prepare(const std::function<void(const QJsonObject& values)>& found) {
    if (isUnread_) {
        if (FileProblem problem = readLate(found)) {
            return problem;
        }
    }
    if (mustKeepFirst_) {
        if (FileProblem problem = keepAsCorrupt(path_)) {
            return problem;
        }
        mustKeepFirst_ = false;
    }
    return {};
}

FileProblem DefaultsFile::replace(const QJsonObject& values) const {
    return replaceFile(path_, QJsonDocument(values).toJson());
}

void DefaultsFile::report(const FileProblem& problem) {
    if (problem && !isRefused_) {
        logLine(
            u"❌ Einstellungen nicht gespeichert (%1): %2 – sie gelten bis zum Programmende"_s.arg(
                path_, *problem));
    } else if (!problem && isRefused_) {
        logLine(u"✅ Einstellungen wieder gespeichert: %1"_s.arg(path_));
    }
    isRefused_ = problem.has_value();
}

FileProblem DefaultsFile::readLate(const std::function<void(const QJsonObject& values)>& found) {
    const FileContent file = readFile(path_);
    if (file.problem) {
        return file.problem;
    }
    QJsonObject values;
    if (file.content && parse(*file.content, values)) {
        mustKeepFirst_ = true;
    }
    isUnread_ = false;
    found(values);
    return {};
}

void DefaultsFile::keepUnusableFile(const QString& problem) {
    const FileProblem refused = keepAsCorrupt(path_);
    mustKeepFirst_ = refused.has_value();
    if (refused) {
        logLine(u"⚠️ Einstellungsdatei %1 unlesbar (%2) und nicht zu sichern (%3): sie bleibt "
                "unverändert, Standardwerte gelten"_s.arg(path_, problem, *refused));
    } else {
        logLine(u"⚠️ Einstellungsdatei unlesbar (%1), gesichert als %2.corrupt, Standardwerte "
                "gelten"_s.arg(problem, path_));
    }
}

} // namespace orv
