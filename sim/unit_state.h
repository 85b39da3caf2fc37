#pragma once

// Everything the unit is at one moment, shared by the command handlers.

#include <array>
#include <cstdint>
#include <optional>

#include "protocol/vocabulary_lenses.h"
#include "sim/camera.h"
#include "sim/lenses.h"
#include "sim/message.h"
#include "sim/motion.h"
#include "sim/presets.h"
#include "sim/settings.h"
#include "sim/tour_runner.h"
#include "sim/tours.h"
#include "sim/unit_options.h"

namespace halvex::sim {

// A procedure during which the unit answers nothing, and the reply it sends
// when done.
struct LongProcedure {
    std::int64_t endMs = 0;
    std::vector<Byte> reply;
};

struct UnitState {
    explicit UnitState(const UnitOptions& unitOptions)
        : options(unitOptions),
          cameras{CameraPort(unitOptions.cameras[0]), CameraPort(unitOptions.cameras[1])} {}

    UnitOptions options;
    Settings settings;
    PowerUpSettings powerUp;
    Motion motion;
    Lenses lenses;
    Presets presets;
    Tours tours;
    TourRunner tourRunner;
    std::array<CameraPort, 2> cameras;

    std::int64_t nowMs = 0;
    std::int64_t lastFrameMs = 0;
    std::optional<LongProcedure> procedure;
    // A new address takes effect once the reply has gone with the old one.
    std::optional<Byte> pendingId;

    TourPlant plant() { return TourPlant{tours, presets, settings, motion, lenses}; }

    // Ends moves to a target and any running tour; jogs are left alone.
    void endAutomation() {
        motion.endMoves();
        lenses.endMoves();
        tourRunner.stop();
    }

    LensReading lensOf(int camera) const {
        return {lenses.position(vocab::lenses::zoomOf(camera)),
                lenses.position(vocab::lenses::focusOf(camera))};
    }
};

}  // namespace halvex::sim
