#include "views/widgets/gauge_scale.h"

#include <algorithm>
#include <cmath>

namespace halvex {

namespace {

// Guards against drawing thousands of ticks for a range the numbers cannot resolve.
constexpr int kMaxTicks = 200;

double roundStep(double rough) {
    const double magnitude = std::pow(10.0, std::floor(std::log10(rough)));
    const double mantissa = rough / magnitude;
    const double nice = mantissa < 1.5 ? 1.0 : mantissa < 3.0 ? 2.0 : mantissa < 7.0 ? 5.0 : 10.0;
    return nice * magnitude;
}

// Multiples of step in [low, high]; values within rounding noise of zero become zero.
std::vector<double> multiples(double step, double low, double high) {
    std::vector<double> out;
    const double first = std::ceil(low / step - 1e-9);
    const double last = std::floor(high / step + 1e-9);
    if (!(last - first < kMaxTicks)) {
        return out;
    }
    // Counted with an integer: far from zero, adding 1.0 to first may not change it.
    const int count = static_cast<int>(last - first) + 1;
    for (int i = 0; i < count; ++i) {
        const double tick = (first + i) * step;
        out.push_back(std::abs(tick) < step * 1e-9 ? 0.0 : tick);
    }
    return out;
}

}  // namespace

GaugeTicks gaugeTicks(double from, double to, int wanted) {
    GaugeTicks ticks;
    const double low = std::min(from, to);
    const double high = std::max(from, to);
    const double span = high - low;
    if (!std::isfinite(span) || !(span > 0.0) || wanted < 1) {
        return ticks;
    }
    const double step = roundStep(span / wanted);
    if (!(std::isfinite(step) && step > 0.0)) {
        return ticks;
    }
    ticks.step = step;
    ticks.major = multiples(step, low, high);
    // A step of 2 splits into four, 1 and 5 into five.
    const double mantissa = step / std::pow(10.0, std::floor(std::log10(step)));
    const double minorStep = step / (std::abs(mantissa - 2.0) < 0.5 ? 4.0 : 5.0);
    for (double tick : multiples(minorStep, low, high)) {
        const double offset = std::remainder(tick, step);
        if (std::abs(offset) > minorStep * 1e-6) {
            ticks.minor.push_back(tick);
        }
    }
    return ticks;
}

}  // namespace halvex
