#pragma once

// The 32 stored positions (31 is home). Angles are mechanical, so a change of
// the angle offsets changes what a preset reads, not where it points. A lens
// byte of 0 means no lens position is stored.

#include <array>
#include <cstdint>
#include <optional>

#include "protocol/frame.h"

namespace halvex::sim {

struct Preset {
    std::int32_t pan = 0;
    std::int32_t tilt = 0;
    std::array<Byte, 4> lens{};

    bool hasLens() const { return lens != std::array<Byte, 4>{}; }
    bool operator==(const Preset&) const = default;
};

class Presets {
  public:
    static constexpr int kCount = 32;
    static constexpr int kHome = 31;

    static bool valid(int number) { return number >= 0 && number < kCount; }

    const Preset& at(int number) const { return presets_.at(number); }
    Preset& at(int number) { return presets_.at(number); }
    void clearAll() { presets_.fill(Preset{}); }

    bool operator==(const Presets&) const = default;

  private:
    std::array<Preset, kCount> presets_{};
};

}  // namespace halvex::sim
