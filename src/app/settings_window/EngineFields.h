#pragma once

#include "SettingsEnvironment.h"

#include <QString>

namespace orv {

class CardColumn;
struct EngineDescriptor;

/// An engine's name in the language of the interface.
QString engineName(const EngineDescriptor& engine, const Bindings& bindings);

/// A card with what the engine needs to know, which is on screen while the engine is the chosen
/// one. Engines that need nothing get none.
void addEngineFields(CardColumn& column, const TabContext& context, const EngineDescriptor& engine);

} // namespace orv
