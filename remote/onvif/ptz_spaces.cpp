#include "remote/onvif/ptz_spaces.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <string>

namespace halvex::onvif {

namespace {
// A client's 1.0 may come as 1.0000001.
constexpr double kRounding = 1e-6;
constexpr double kDayMs = 24.0 * 3600.0 * 1000.0;
}  // namespace

PanTiltRange rangeFromLimits(float panMin, float panMax, float tiltMin, float tiltMax,
                             bool panContinuous) {
    PanTiltRange range{static_cast<double>(panMin), static_cast<double>(panMax),
                       static_cast<double>(tiltMin), static_cast<double>(tiltMax)};
    if (panContinuous) {
        range.panMin = -180.0;
        range.panMax = 180.0;
    }
    return range;
}

double genericToAngle(double x, double min, double max) {
    return min + (std::clamp(x, -1.0, 1.0) + 1.0) / 2.0 * (max - min);
}

double angleToGeneric(double angle, double min, double max) {
    if (!(max > min)) {
        return 0.0;
    }
    return std::clamp(2.0 * (angle - min) / (max - min) - 1.0, -1.0, 1.0);
}

double genericToDelta(double x, double min, double max) {
    return x * (max - min) / 2.0;
}

bool inGenericRange(double x, double low, double high) {
    return std::isfinite(x) && x >= low - kRounding && x <= high + kRounding;
}

AxisDemand velocityToAxis(double v) {
    const double speed = std::round(std::min(std::abs(v), 1.0) * 255.0);
    AxisDemand axis;
    axis.speed = static_cast<Byte>(speed);
    if (axis.speed > 0) {
        axis.direction = v > 0.0;
    }
    return axis;
}

Byte zoomVelocityToLensByte(double v) {
    return lensJogByte(static_cast<int>(std::round(std::clamp(v, -1.0, 1.0) * 127.0)));
}

int zoomToLensPosition(double zoom) {
    return static_cast<int>(std::round(std::clamp(zoom, 0.0, 1.0) * 255.0));
}

double lensPositionToZoom(Byte position) {
    return static_cast<double>(position) / 255.0;
}

std::optional<int> durationMs(std::string_view text) {
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.front())) != 0) {
        text.remove_prefix(1);
    }
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())) != 0) {
        text.remove_suffix(1);
    }
    if (!text.starts_with('P') || text.size() == 1) {
        return std::nullopt;
    }
    text.remove_prefix(1);
    double total = 0.0;
    bool inTime = false;
    // Each unit once, in order: days, then T, hours, minutes, seconds.
    std::string_view units = "D";
    while (!text.empty()) {
        if (text.front() == 'T') {
            if (inTime) {
                return std::nullopt;
            }
            inTime = true;
            units = "HMS";
            text.remove_prefix(1);
            if (text.empty()) {
                return std::nullopt;
            }
            continue;
        }
        std::size_t digits = 0;
        bool point = false;
        while (digits < text.size() &&
               (std::isdigit(static_cast<unsigned char>(text[digits])) != 0 ||
                (text[digits] == '.' && !point))) {
            point = point || text[digits] == '.';
            ++digits;
        }
        if (digits == 0 || digits == text.size() || digits > 12 || text[0] == '.') {
            return std::nullopt;
        }
        const char unit = text[digits];
        const std::size_t at = units.find(unit);
        if (at == std::string_view::npos || (point && unit != 'S')) {
            return std::nullopt;
        }
        const double value = std::strtod(std::string(text.substr(0, digits)).c_str(), nullptr);
        static constexpr double kUnitMs[] = {3600e3, 60e3, 1e3};
        total += value * (inTime ? kUnitMs[3 - units.size() + at] : 24.0 * 3600e3);
        units.remove_prefix(at + 1);
        text.remove_prefix(digits + 1);
    }
    if (total > kDayMs) {
        return std::nullopt;
    }
    return static_cast<int>(std::llround(total));
}

}  // namespace halvex::onvif
