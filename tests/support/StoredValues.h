#pragma once

#include "DefaultsStore.h"

#include <QJsonObject>

namespace orv::test {

/// Puts each of `values`, strings, booleans or numbers, in the store under its key.
void setInStore(DefaultsStore& store, const QJsonObject& values);

} // namespace orv::test
