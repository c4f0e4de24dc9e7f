#include "SettingsTable.h"

#include "SettingsList.h"

#include <QStringList>

#include <algorithm>

namespace orv::test {

namespace {

const QString heading = u"| Setting | Where | Control | Key | Default |"_s;

QString inWords(SettingPlace place) {
    switch (place) {
    case SettingPlace::General:
        return u"Settings, General"_s;
    case SettingPlace::Engines:
        return u"Settings, Engines"_s;
    case SettingPlace::Whisper:
        return u"Settings, Whisper"_s;
    case SettingPlace::Panel:
        break;
    }
    return u"Panel"_s;
}

QString inWords(const QJsonValue& value) {
    if (value.isBool()) {
        return value.toBool() ? u"on"_s : u"off"_s;
    }
    if (value.isDouble()) {
        return QString::number(value.toDouble());
    }
    return value.toString().isEmpty() ? u"empty"_s : value.toString();
}

/// What holds until somebody chooses; who never chose has the registered value.
QString fallback(const AnySetting& setting) {
    if (setting.note().fallback != nullptr) {
        return QString::fromUtf8(setting.note().fallback);
    }
    const auto registered = setting.registered();
    return inWords(registered ? registered->value : setting.initialJson());
}

QString row(const AnySetting& setting) {
    const SettingNote& note = setting.note();
    const QString key =
        setting.key().isEmpty() ? u"not kept"_s : QString(u'`' + setting.key() + u'`');
    const QStringList cells = {QString::fromUtf8(note.what), inWords(note.place),
                               QString::fromUtf8(note.control), key, fallback(setting)};
    return u"| "_s + cells.join(u" | "_s) + u" |"_s;
}

} // namespace

QString settingsTable() {
    const SettingsList settings;
    std::vector<const AnySetting*> documented;
    std::ranges::copy_if(settings.all(), std::back_inserter(documented),
                         [](const AnySetting* setting) { return setting->note().what != nullptr; });
    std::ranges::stable_sort(documented, {},
                             [](const AnySetting* setting) { return setting->note().place; });
    QStringList lines = {heading, u"|---|---|---|---|---|"_s};
    for (const AnySetting* setting : documented) {
        lines.append(row(*setting));
    }
    return lines.join(u'\n');
}

QString withSettingsTable(const QString& document) {
    const qsizetype begin = document.indexOf(heading);
    const qsizetype end = document.indexOf(u"\n\n"_s, begin);
    if (begin < 0 || end < 0) {
        return {};
    }
    return document.left(begin) + settingsTable() + document.mid(end);
}

} // namespace orv::test
