#pragma once

#include <QString>
#include <array>

#include "live_video/field_of_view.h"

namespace halvex {

// What the operator chose for live video: what each output shows, as the
// text a source is given in, and each camera's lens.
struct LiveVideoChoice {
    std::array<QString, 2> sources;
    std::array<FieldOfView, 2> lenses;

    bool operator==(const LiveVideoChoice&) const = default;
};

// Kept in the user's settings. A kept lens table that does not read is the
// default lens; a kept source that does not read is shown as such in its
// pane.
LiveVideoChoice loadLiveVideoChoice();
void saveLiveVideoChoice(const LiveVideoChoice& choice);

}  // namespace halvex
