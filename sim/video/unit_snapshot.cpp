#include "sim/video/unit_snapshot.h"

namespace halvex::sim::video {

VideoSnapshot videoSnapshotOf(const UnitState& state) {
    const Settings& settings = state.settings;
    VideoSnapshot snapshot;
    snapshot.pan = state.motion.reportedPan(settings) / 100.0;
    snapshot.tilt = state.motion.reportedTilt(settings) / 100.0;
    for (int camera = 0; camera < 2; ++camera) {
        const LensReading lens = state.lensOf(camera);
        snapshot.lenses[static_cast<std::size_t>(camera)] = {lens.zoom, lens.focus};
    }
    snapshot.videoMode = settings.videoMode;
    snapshot.videoPower = settings.videoPower;
    snapshot.angleDisplay = settings.angleDisplay;
    snapshot.nameDisplay = settings.nameDisplay;
    snapshot.siteName = settings.siteName;
    return snapshot;
}

}  // namespace halvex::sim::video
