#pragma once

namespace orv {

/// Makes level meters known to assistive programs. Harmless to call again.
void installLevelBarAccessibility();

} // namespace orv
