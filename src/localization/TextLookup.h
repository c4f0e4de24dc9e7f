#pragma once

#include <QString>

#include <functional>

namespace orv {

/// Gives the text of a key in the language of the interface. Called on the main thread.
using TextLookup = std::function<QString(const QString& key)>;

} // namespace orv
