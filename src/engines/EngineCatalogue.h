#pragma once

#include "EngineDescriptor.h"

#include <QString>

#include <span>
#include <vector>

namespace orv {

/// The engines that the program offers, in their order. Immutable once made.
class EngineCatalogue {
  public:
    /// All engines of the program.
    EngineCatalogue();

    /// A choice of one's own, not empty; the first one is the fallback.
    explicit EngineCatalogue(std::vector<EngineDescriptor> engines);

    std::span<const EngineDescriptor> engines() const { return engines_; }

    /// The engine with this identifier; null when there is none.
    const EngineDescriptor* find(const QString& id) const;

    /// Who recognises in the place of an engine that lacks its credentials.
    const EngineDescriptor& fallback() const { return engines_.front(); }

  private:
    std::vector<EngineDescriptor> engines_;
};

/// One line on who recognises, who translates and whether the speech server is needed; empty for an
/// unknown engine.
QString engineInfoText(const EngineCatalogue& catalogue, const QString& id);

} // namespace orv
