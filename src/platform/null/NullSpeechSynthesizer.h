#pragma once

#include "SpeechSynthesizer.h"

namespace orv {

/// The speech of a machine that has none.
class NullSpeechSynthesizer : public SpeechSynthesizer {
  public:
    void prepare() override {}

    void speak(const QString& /*text*/) override {}

    void stop() override {}
};

} // namespace orv
