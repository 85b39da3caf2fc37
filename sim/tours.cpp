#include "sim/tours.h"

namespace halvex::sim {

std::optional<TourStep> Tours::step(int tour, int position) const {
    if (!holds(tour, position)) {
        return std::nullopt;
    }
    return tours_.at(tour)[position];
}

std::optional<int> Tours::append(int tour, TourStep step) {
    auto& steps = tours_.at(tour);
    if (steps.size() >= kMaxSteps) {
        return std::nullopt;
    }
    steps.push_back(step);
    return static_cast<int>(steps.size()) - 1;
}

bool Tours::insert(int tour, int position, TourStep step) {
    auto& steps = tours_.at(tour);
    if (!holds(tour, position) || steps.size() >= kMaxSteps) {
        return false;
    }
    steps.insert(steps.begin() + position, step);
    return true;
}

bool Tours::replace(int tour, int position, TourStep step) {
    if (!holds(tour, position)) {
        return false;
    }
    tours_.at(tour)[position] = step;
    return true;
}

std::optional<TourStep> Tours::remove(int tour, int position) {
    if (!holds(tour, position)) {
        return std::nullopt;
    }
    auto& steps = tours_.at(tour);
    const TourStep removed = steps[position];
    steps.erase(steps.begin() + position);
    return removed;
}

}  // namespace halvex::sim
