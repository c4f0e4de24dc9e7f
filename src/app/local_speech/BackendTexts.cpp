#include "BackendTexts.h"

#include "LanguageManager.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

/// What a service said itself can be a whole page.
constexpr qsizetype longestParameter = 300;
constexpr int longestWord = 32;

/// The catalogue's name for a language, also where the code names a variant of it; else the code.
QString languageName(const QString& code) {
    const QString base = code.section(u'-', 0, 0);
    const QString* name = &code;
    for (const Language& language : LanguageManager::allLanguages()) {
        if (language.code == code) {
            return language.name;
        }
        if (language.code == base) {
            name = &language.name;
        }
    }
    return *name;
}

QString shownParameter(const QString& name, const QString& value) {
    if (name == u"language" || name == u"source" || name == u"target") {
        return languageName(value);
    }
    const QString line = value.simplified();
    return line.size() > longestParameter ? line.left(longestParameter) + u"..."_s : line;
}

/// `pattern` with every "{name}" replaced once; nothing when a parameter is missing.
std::optional<QString> filled(const QString& pattern, const QMap<QString, QString>& parameters) {
    static const QRegularExpression placeholder(u"\\{([a-z_]+)\\}"_s);
    QString result;
    qsizetype end = 0;
    auto found = placeholder.globalMatch(pattern);
    while (found.hasNext()) {
        const QRegularExpressionMatch match = found.next();
        const auto value = parameters.constFind(match.captured(1));
        if (value == parameters.constEnd()) {
            return std::nullopt;
        }
        result += QStringView(pattern).mid(end, match.capturedStart() - end);
        result += shownParameter(value.key(), value.value());
        end = match.capturedEnd();
    }
    return result + QStringView(pattern).mid(end);
}

/// The text of a code, if the tables have one: a lookup answers an unknown key with itself.
QString patternOf(const BackendNotice& notice, const TextLookup& text) {
    const bool isOfService = notice.code.startsWith(u"service.");
    const QString key = isOfService ? notice.code : u"backend."_s + notice.code;
    // Whisper is the one engine that the settings window can install.
    if (notice.parameters.value(u"engine"_s).contains(u"whisper"_s, Qt::CaseInsensitive)) {
        const QString ofWhisper = key + u".whisper"_s;
        if (QString pattern = text(ofWhisper); pattern != ofWhisper) {
            return pattern;
        }
    }
    const QString pattern = text(key);
    return pattern == key ? QString() : pattern;
}

/// Who serves: nobody translates where the speech server does not.
std::optional<BackendText> servingText(const BackendNotice& notice, const TextLookup& text) {
    const QString recogniser = notice.parameters.value(u"recogniser"_s);
    if (!recogniser.isEmpty() && notice.parameters.value(u"translator"_s).isEmpty()) {
        return BackendText{.summary = recogniser};
    }
    return backendText(notice, text);
}

/// Why nobody recognises stands before what to do about it.
QString detailWithReasons(const StatusMessage& status, const BackendText& main,
                          const TextLookup& text) {
    QStringList reasons;
    for (const BackendNotice& reason : status.recognition) {
        if (const auto told = backendText(reason, text)) {
            reasons.append(told->summary.endsWith(u'.') ? told->summary : told->summary + u'.');
        }
    }
    QStringList lines = {reasons.join(u' '), main.detail};
    if (reasons.isEmpty()) {
        lines.first() = status.notice.parameters.value(u"reason"_s).simplified();
    }
    lines.removeAll(QString());
    return lines.join(u'\n');
}

/// What is told of who serves, although nothing is missing: who translates otherwise, and why this
/// recogniser serves. That a translator is loading is over before anybody has read it. Another
/// recogniser on this computer is worth a word only where the one that is always there serves.
bool isQuiet(const BackendNotice& notice, const QString& recogniser,
             const QString& sourceLanguage) {
    static constexpr std::array<QStringView, 5> quiet = {
        u"translation.by_client", u"translation.awaits_language", u"translation.same",
        u"translation.loading", u"recognition.near_serves"};
    return std::find(quiet.begin(), quiet.end(), notice.code) != quiet.end() ||
           (notice.code == u"recognition.near_found" && recogniser != u"PocketSphinx") ||
           (notice.code == u"recognition.only_english" && sourceLanguage == u"en");
}

/// That nobody translates names the server that is silent, too, and says what it is for.
bool isToldBy(const BackendNotice& notice, const QList<BackendNotice>& others) {
    const auto saysSo = [&notice](const BackendNotice& other) {
        return other.code == u"translation.none" &&
               other.parameters.value(u"address"_s) == notice.parameters.value(u"address"_s);
    };
    return notice.code == u"translation.silent" &&
           std::any_of(others.begin(), others.end(), saysSo);
}

} // namespace

std::optional<BackendText> backendText(const BackendNotice& notice, const TextLookup& text) {
    const QString pattern = patternOf(notice, text);
    if (notice.code.isEmpty() || pattern.isEmpty()) {
        return std::nullopt;
    }
    const auto summary = filled(pattern.section(u'\n', 0, 0), notice.parameters);
    const auto detail = filled(pattern.section(u'\n', 1), notice.parameters);
    if (!summary || !detail) {
        return std::nullopt;
    }
    const int times = notice.parameters.value(u"times"_s).toInt();
    const QString counted =
        times > 1 ? QString(*summary + u" (" + QString::number(times) + u"×)") : *summary;
    return BackendText{.summary = counted, .detail = detail->trimmed()};
}

BackendText backendText(const StatusMessage& status, const TextLookup& text) {
    const bool isServing = status.notice.code == u"engine.serving";
    auto told = isServing ? servingText(status.notice, text) : backendText(status.notice, text);
    if (!told) {
        return {.summary = status.message};
    }
    if (status.notice.code.startsWith(u"engine.none")) {
        told->detail = detailWithReasons(status, *told, text);
    }
    return *told;
}

QList<BackendText> backendConcerns(const BackendNews& news, const QString& sourceLanguage,
                                   const TextLookup& text) {
    QList<BackendText> concerns;
    const auto add = [&concerns](const BackendText& told) {
        if (!told.summary.isEmpty() && !concerns.contains(told)) {
            concerns.append(told);
        }
    };
    for (const StatusMessage& status : news.disturbances) {
        add(backendText(status, text));
    }
    if (!news.serving) {
        return concerns;
    }
    const QString recogniser = news.serving->notice.parameters.value(u"recogniser"_s);
    const QList<BackendNotice> notices = news.serving->recognition + news.serving->translation;
    for (const BackendNotice& notice : notices) {
        if (!isQuiet(notice, recogniser, sourceLanguage) && !isToldBy(notice, notices)) {
            // What is not known stands in the whole message.
            add(backendText(notice, text).value_or(BackendText{.summary = news.serving->message}));
        }
    }
    return concerns;
}

QString withBreaks(const QString& text) {
    constexpr QChar breakHere(0x200B);
    QString result;
    int length = 0;
    for (const QChar character : text) {
        length = character.isSpace() ? 0 : length + 1;
        result += character;
        if (length >= longestWord && !character.isHighSurrogate()) {
            result += breakHere;
            length = 0;
        }
    }
    return result;
}

} // namespace orv
