#pragma once

// Runs a tour: moves to each step's preset, waits its dwell once there, goes
// on to the next step and starts again after the last, until stopped.

#include <cstdint>
#include <optional>

#include "sim/lenses.h"
#include "sim/motion.h"
#include "sim/presets.h"
#include "sim/settings.h"
#include "sim/tours.h"

namespace halvex::sim {

// What a running tour acts on.
struct TourPlant {
    const Tours& tours;
    const Presets& presets;
    const Settings& settings;
    Motion& motion;
    Lenses& lenses;
};

class TourRunner {
  public:
    bool running() const { return running_; }
    int tour() const { return tour_; }
    int stepIndex() const { return step_; }

    // Starts tour t at its first step; false when the tour is empty.
    bool start(int tour, std::int64_t nowMs, const TourPlant& plant);
    void stop() { running_ = false; }
    void advance(std::int64_t nowMs, const TourPlant& plant);
    // When the tour next needs the clock while it waits out a dwell.
    std::optional<std::int64_t> dwellEnd() const;

  private:
    void beginStep(std::int64_t nowMs, const TourPlant& plant);

    bool running_ = false;
    bool dwelling_ = false;
    int tour_ = 0;
    int step_ = 0;
    std::int64_t dwellEndMs_ = 0;
};

}  // namespace halvex::sim
