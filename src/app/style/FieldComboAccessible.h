#pragma once

namespace orv {

/// Makes combo boxes of the control panel known to assistive programs by their label. Harmless to
/// call again.
void installFieldComboAccessibility();

} // namespace orv
