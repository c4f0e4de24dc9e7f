#include "StoredValues.h"

namespace orv::test {

void setInStore(DefaultsStore& store, const QJsonObject& values) {
    for (auto entry = values.begin(); entry != values.end(); ++entry) {
        const QJsonValue value = entry.value();
        if (value.isBool()) {
            store.setBool(entry.key(), value.toBool());
        } else if (value.isDouble()) {
            store.setDouble(entry.key(), value.toDouble());
        } else {
            store.setString(entry.key(), value.toString());
        }
    }
}

} // namespace orv::test
