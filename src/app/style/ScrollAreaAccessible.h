#pragma once

namespace orv {

/// Makes scroll areas known to assistive programs in a way that stands up to their questions: Qt's
/// own reads beyond its list of children when it is asked for a scroll bar that has just gone, and
/// takes the program down. Here scroll bars stay children while they are hidden. Called on the main
/// thread; harmless to call again.
void installScrollAreaAccessibility();

} // namespace orv
