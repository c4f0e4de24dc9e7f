#include "DesktopEntry.h"

#include <QHash>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

QHash<QString, QString> mainGroup(const QByteArray& contents) {
    QHash<QString, QString> values;
    bool inside = false;
    for (const QString& raw : QString::fromUtf8(contents).split(u'\n')) {
        const QString line = raw.trimmed();
        if (line.startsWith(u'[')) {
            inside = line == u"[Desktop Entry]"_s;
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (inside && equals > 0 && !line.startsWith(u'#')) {
            values.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
        }
    }
    return values;
}

/// The first word of a command line that is a program: "env" and its assignments are passed over.
QString programOf(const QString& command) {
    QString word;
    QStringList words;
    bool quoted = false;
    for (const QChar c : QString(command + u' ')) {
        if (c == u'"') {
            quoted = !quoted;
        } else if (c == u' ' && !quoted) {
            if (!word.isEmpty()) {
                words.append(word);
            }
            word.clear();
        } else {
            word.append(c);
        }
    }
    for (const QString& candidate : words) {
        QString file = candidate.mid(candidate.lastIndexOf(u'/') + 1);
        if (file != u"env" && !candidate.contains(u'=')) {
            return file;
        }
    }
    return {};
}

} // namespace

std::optional<DesktopEntry> parseDesktopEntry(const QByteArray& contents) {
    const QHash<QString, QString> values = mainGroup(contents);
    if (values.value(u"Type"_s) != u"Application" || values.value(u"Hidden"_s) == u"true" ||
        values.value(u"NoDisplay"_s) == u"true" || values.value(u"Terminal"_s) == u"true") {
        return std::nullopt;
    }
    DesktopEntry entry = {.name = values.value(u"Name"_s),
                          .binary = programOf(values.value(u"Exec"_s))};
    if (entry.name.isEmpty() || entry.binary.isEmpty()) {
        return std::nullopt;
    }
    return entry;
}

} // namespace orv
