#include "sim/state_file.h"

#include <cstdio>
#include <fstream>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace halvex::sim {

namespace {

constexpr const char* kHeader = "halvex-unit-state 1";

using Values = std::vector<long>;

// Visits every stored field with its name, so that reading and writing
// cannot drift apart.
template <typename Visitor>
void visitSettings(Visitor& v, Settings& s, PowerUpSettings& p) {
    v("id", s.unitId);
    v("pan-rates", s.panRates.safe, s.panRates.ramp, s.panRates.decel);
    v("tilt-rates", s.tiltRates.safe, s.tiltRates.ramp, s.tiltRates.decel);
    v("top", s.panTop, s.tiltTop);
    v("jog-top", s.panJogTop, s.tiltJogTop);
    v("pan-min-max", s.panMin, s.panMax);
    v("tilt-min-max", s.tiltMin, s.tiltMax);
    v("directions", s.directions);
    v("encoders", s.panEncoder, s.tiltEncoder);
    v("comm-timeout", s.commTimeoutSeconds);
    v("heater", s.heater);
    v("soft-limits", s.softLimits[0], s.softLimits[1], s.softLimits[2], s.softLimits[3]);
    v("offsets", s.panOffset, s.tiltOffset);
    v("resolver-centre", s.panResolverCentre, s.tiltResolverCentre);
    v("lens-config", s.lensConfig[0], s.lensConfig[1]);
    v("zoom-min", s.zoomMinSpeed[0], s.zoomMinSpeed[1]);
    v("focus-min", s.focusMinSpeed[0], s.focusMinSpeed[1]);
    v("camera-comm", s.cameraComm[0], s.cameraComm[1]);
    v("camera-timeout", s.cameraTimeout[0], s.cameraTimeout[1]);
    v("legacy-video", s.legacyVideo);
    v("aux", s.aux);
    auto& n = s.siteName;
    v("site-name", n[0], n[1], n[2], n[3], n[4], n[5], n[6], n[7], n[8], n[9], n[10], n[11]);
    v("power-up-video", p.videoMode, p.videoPower);
    v("power-up-displays", p.angleDisplay, p.nameDisplay);
}

struct Writer {
    std::ostringstream out;

    template <typename... Fields>
    void operator()(const char* name, Fields&... fields) {
        out << name;
        ((out << ' ' << static_cast<long>(fields)), ...);
        out << '\n';
    }
};

struct Reader {
    const std::map<std::string, Values>& lines;

    template <typename T>
    static bool fits(long value) {
        return value >= static_cast<long>(std::numeric_limits<T>::min()) &&
               value <= static_cast<long>(std::numeric_limits<T>::max());
    }

    template <typename... Fields>
    void operator()(const char* name, Fields&... fields) {
        const auto found = lines.find(name);
        if (found == lines.end() || found->second.size() != sizeof...(Fields)) {
            return;
        }
        const Values& values = found->second;
        std::size_t i = 0;
        const bool allFit = (fits<Fields>(values[i++]) && ...);
        if (!allFit) {
            return;
        }
        i = 0;
        ((fields = static_cast<Fields>(values[i++])), ...);
    }
};

std::map<std::string, Values> parseLines(std::istream& in) {
    std::map<std::string, Values> lines;
    std::string line;
    while (std::getline(in, line)) {
        std::istringstream words(line);
        std::string name;
        words >> name;
        Values values;
        long value = 0;
        while (words >> value) {
            values.push_back(value);
        }
        if (words.eof() && !name.empty()) {
            lines[name] = values;
        }
    }
    return lines;
}

void writePresetsAndTours(Writer& writer, const Presets& presets, const Tours& tours) {
    for (int n = 0; n < Presets::kCount; ++n) {
        const Preset& p = presets.at(n);
        writer.out << "preset-" << n << ' ' << p.pan << ' ' << p.tilt;
        for (Byte lens : p.lens) {
            writer.out << ' ' << static_cast<int>(lens);
        }
        writer.out << '\n';
    }
    for (int t = 0; t < Tours::kCount; ++t) {
        writer.out << "tour-" << t;
        for (int s = 0; s < tours.size(t); ++s) {
            const TourStep step = *tours.step(t, s);
            writer.out << ' ' << static_cast<int>(step.preset) << ' '
                       << static_cast<int>(step.dwell);
        }
        writer.out << '\n';
    }
}

bool isByte(long value) {
    return value >= 0 && value <= 255;
}

void readPresetsAndTours(const std::map<std::string, Values>& lines, Presets& presets,
                         Tours& tours) {
    for (int n = 0; n < Presets::kCount; ++n) {
        const auto found = lines.find("preset-" + std::to_string(n));
        if (found == lines.end() || found->second.size() != 6) {
            continue;
        }
        const Values& v = found->second;
        if (v[0] < -(1 << 23) || v[0] >= (1 << 23) || v[1] < -(1 << 23) || v[1] >= (1 << 23) ||
            !isByte(v[2]) || !isByte(v[3]) || !isByte(v[4]) || !isByte(v[5])) {
            continue;
        }
        Preset& p = presets.at(n);
        p.pan = static_cast<std::int32_t>(v[0]);
        p.tilt = static_cast<std::int32_t>(v[1]);
        for (int i = 0; i < 4; ++i) {
            p.lens[i] = static_cast<Byte>(v[2 + i]);
        }
    }
    for (int t = 0; t < Tours::kCount; ++t) {
        const auto found = lines.find("tour-" + std::to_string(t));
        if (found == lines.end() || found->second.size() % 2 != 0) {
            continue;
        }
        const Values& v = found->second;
        for (std::size_t i = 0; i + 1 < v.size(); i += 2) {
            if (isByte(v[i]) && isByte(v[i + 1])) {
                tours.append(t, TourStep{static_cast<Byte>(v[i]), static_cast<Byte>(v[i + 1])});
            }
        }
    }
}

}  // namespace

std::optional<StoredState> loadState(const std::string& path) {
    std::ifstream in(path);
    std::string header;
    if (!in || !std::getline(in, header) || header != kHeader) {
        return std::nullopt;
    }
    const auto lines = parseLines(in);
    StoredState state;
    Reader reader{lines};
    visitSettings(reader, state.settings, state.powerUp);
    readPresetsAndTours(lines, state.presets, state.tours);
    return state;
}

bool saveState(const std::string& path, const StoredState& state) {
    StoredState copy = state;
    Writer writer;
    writer.out << kHeader << '\n';
    visitSettings(writer, copy.settings, copy.powerUp);
    writePresetsAndTours(writer, copy.presets, copy.tours);
    const std::string temporary = path + ".new";
    {
        std::ofstream out(temporary, std::ios::trunc);
        out << writer.out.str();
        if (!out.flush()) {
            return false;
        }
    }
    return std::rename(temporary.c_str(), path.c_str()) == 0;
}

}  // namespace halvex::sim
