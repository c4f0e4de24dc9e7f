#include "WhisperInventory.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace orv {

namespace {

// Estimates, as the installer tells them; the index of packages decides.
constexpr std::int64_t million = 1'000'000;

Presence presence(const QJsonValue& state) {
    const QString name = state.toString();
    if (name == u"there") {
        return Presence::There;
    }
    if (name == u"partial") {
        return Presence::Partial;
    }
    return name == u"unusable" ? Presence::Unusable : Presence::Missing;
}

StatusMessage reason(const QJsonValue& why) {
    const QJsonObject object = why.toObject();
    return {.status = {},
            .message = object[u"message"_s].toString(),
            .version = {},
            .notice = parseNotice(object)};
}

WhisperPackage package(const QJsonObject& object) {
    return {.name = object[u"package"_s].toString(),
            .presence = presence(object[u"state"_s]),
            .version = object[u"version"_s].toString(),
            .why = reason(object[u"why"_s]),
            .downloadBytes = std::max<qint64>(object[u"download_bytes"_s].toInteger(), 0),
            .diskBytes = std::max<qint64>(object[u"disk_bytes"_s].toInteger(), 0)};
}

WhisperCopy copy(const QJsonObject& object) {
    return {.presence = presence(object[u"state"_s]),
            .package = object[u"package"_s].toString(),
            .canBeFetched = object[u"can_fetch"_s].toBool(),
            .why = reason(object[u"why"_s])};
}

WhisperInventory inventory(const QJsonObject& object) {
    WhisperInventory found;
    const QJsonArray packages = object[u"packages"_s].toArray();
    for (const auto& each : packages) {
        found.packages.append(package(each.toObject()));
    }
    const QJsonArray models = object[u"models"_s].toArray();
    for (const auto& each : models) {
        const QJsonObject model = each.toObject();
        found.models.insert(model[u"model"_s].toString(), copy(model));
    }
    found.serves = object[u"serves"_s].toString();
    const QJsonObject used = object[u"used"_s].toObject();
    found.usedModel = used[u"model"_s].toString();
    found.whyOther = reason(used[u"why"_s]);
    return found;
}

/// The models that the settings call `id`, the newest first.
QStringList modelsCalled(const QString& id) {
    return id == u"large" ? QStringList{u"large-v3"_s, u"large-v2"_s, u"large-v1"_s}
                          : QStringList{id};
}

} // namespace

WhisperCopy copyOf(const WhisperInventory& inventory, const QString& id) {
    const QStringList names = modelsCalled(id);
    for (const QString& name : names) {
        if (WhisperCopy found = inventory.models.value(name); found.presence == Presence::There) {
            return found;
        }
    }
    return inventory.models.value(names.constFirst());
}

bool uses(const WhisperInventory& inventory, const QString& id) {
    return !inventory.usedModel.isEmpty() && modelsCalled(id).contains(inventory.usedModel);
}

WhisperInventory nothingOfWhisper() {
    WhisperInventory none;
    none.packages = {
        {.name = u"faster-whisper"_s, .downloadBytes = 150 * million, .diskBytes = 500 * million},
        {.name = u"openai-whisper"_s,
         .downloadBytes = 3000 * million,
         .diskBytes = 7000 * million}};
    return none;
}

std::optional<WhisperInventory> parseWhisperInventory(const QByteArray& printed) {
    const QList<QByteArray> lines = printed.split('\n');
    for (auto line = lines.crbegin(); line != lines.crend(); ++line) {
        const QJsonObject object = QJsonDocument::fromJson(*line).object();
        if (object[u"packages"_s].isArray()) {
            return inventory(object);
        }
    }
    return std::nullopt;
}

} // namespace orv
