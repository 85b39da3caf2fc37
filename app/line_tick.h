#pragma once

namespace halvex {

// The time between frames for the command line's own runs (--headless,
// --save-unit, --restore-unit): the unit expects Link::kTickMs; a virtual
// unit on a pseudo-terminal keeps up with less, given in $HALVEX_TICK_MS
// (1 to 99). Any other value, or none, leaves the unit's own tick.
int lineTickMs();

}  // namespace halvex
