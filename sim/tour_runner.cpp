#include "sim/tour_runner.h"

#include <algorithm>

namespace halvex::sim {

bool TourRunner::start(int tour, std::int64_t nowMs, const TourPlant& plant) {
    if (!Tours::valid(tour) || plant.tours.size(tour) == 0) {
        running_ = false;
        return false;
    }
    running_ = true;
    tour_ = tour;
    step_ = 0;
    beginStep(nowMs, plant);
    return true;
}

void TourRunner::beginStep(std::int64_t nowMs, const TourPlant& plant) {
    const auto step = plant.tours.step(tour_, step_);
    if (!step) {
        running_ = false;
        return;
    }
    dwelling_ = false;
    dwellEndMs_ = nowMs + step->dwellSeconds() * 1000LL;
    if (!Presets::valid(step->presetNumber())) {
        // No such preset: the step is only a wait.
        dwelling_ = true;
        return;
    }
    const Preset& preset = plant.presets.at(step->presetNumber());
    plant.motion.moveToMechanical(preset.pan, preset.tilt, plant.settings);
    if (preset.hasLens()) {
        plant.lenses.moveTo(preset.lens, plant.settings);
    }
}

void TourRunner::advance(std::int64_t nowMs, const TourPlant& plant) {
    if (!running_) {
        return;
    }
    if (plant.motion.panFaulted() || plant.motion.tiltFaulted()) {
        running_ = false;
        return;
    }
    if (!dwelling_) {
        if (plant.motion.hasTargets() || plant.lenses.hasTargets()) {
            return;
        }
        // The dwell counts from arrival.
        const auto step = plant.tours.step(tour_, step_);
        dwelling_ = true;
        dwellEndMs_ = nowMs + (step ? step->dwellSeconds() * 1000LL : 0);
    }
    if (nowMs < dwellEndMs_) {
        return;
    }
    step_ = (step_ + 1) % std::max(plant.tours.size(tour_), 1);
    beginStep(nowMs, plant);
}

std::optional<std::int64_t> TourRunner::dwellEnd() const {
    if (running_ && dwelling_) {
        return dwellEndMs_;
    }
    return std::nullopt;
}

}  // namespace halvex::sim
