#pragma once

#include "BackendControl.h"
#include "CaptureControl.h"

#include <memory>

namespace orv {

class AudioManager;
class TranslationEngine;

/// The controls that the real objects give. The references outlive them.
std::unique_ptr<CaptureControl> makeCaptureControl(AudioManager& audio);
std::unique_ptr<BackendControl> makeBackendControl(TranslationEngine& engine);

} // namespace orv
