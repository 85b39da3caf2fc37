#pragma once

// Three tours of up to 63 steps. A step is a preset byte (bits 0-5 preset,
// bits 6-7 camera) and a dwell byte (bits 0-6 seconds, bit 7 blank video).

#include <array>
#include <optional>
#include <vector>

#include "protocol/frame.h"
#include "protocol/vocabulary_tours.h"

namespace halvex::sim {

struct TourStep {
    Byte preset = 0;
    Byte dwell = 0;

    int presetNumber() const { return preset & vocab::maskOf(vocab::tour_step::Step::kPreset); }
    int dwellSeconds() const { return dwell & vocab::maskOf(vocab::tour_step::Step::kDwell); }
    bool operator==(const TourStep&) const = default;
};

class Tours {
  public:
    static constexpr int kCount = 3;
    static constexpr int kMaxSteps = 63;

    static bool valid(int tour) { return tour >= 0 && tour < kCount; }

    int size(int tour) const { return static_cast<int>(tours_.at(tour).size()); }
    std::optional<TourStep> step(int tour, int position) const;
    // Position of the new step, or nothing when the tour is full.
    std::optional<int> append(int tour, TourStep step);
    // Both refuse a position that holds no step (and insert a full tour).
    bool insert(int tour, int position, TourStep step);
    bool replace(int tour, int position, TourStep step);
    std::optional<TourStep> remove(int tour, int position);
    void clear(int tour) { tours_.at(tour).clear(); }

    bool operator==(const Tours&) const = default;

  private:
    bool holds(int tour, int position) const { return position >= 0 && position < size(tour); }

    std::array<std::vector<TourStep>, kCount> tours_;
};

}  // namespace halvex::sim
