#pragma once

// The four lens motors: zoom and focus of camera 1, then of camera 2. Each
// runs over 1..255, jogged by a signed speed byte or sent to a target.

#include <array>

#include "protocol/frame.h"
#include "sim/settings.h"

namespace halvex::sim {

class LensMotor {
  public:
    Byte position() const;
    bool moving() const { return rate_ != 0.0 || hasTarget_; }
    bool hasTarget() const { return hasTarget_; }

    void jog(double unitsPerSecond);
    void moveTo(Byte target);
    void endMove();
    void step(double seconds);

  private:
    double position_ = 128.0;
    double rate_ = 0.0;
    bool hasTarget_ = false;
    double target_ = 0.0;
};

class Lenses {
  public:
    static constexpr int kCount = 4;

    Byte position(int motor) const { return motors_[motor].position(); }
    bool moving() const;
    bool hasTargets() const;

    // The four lens bytes of a jog message: bit 0 direction (1 = positive),
    // bits 1-7 magnitude. A motor on its way to a target keeps going while
    // its jog byte is 0.
    void jog(const std::array<Byte, kCount>& jogBytes, const Settings& settings);
    void moveTo(const std::array<Byte, kCount>& targets, const Settings& settings);
    void endMoves();
    void stop();
    void step(double seconds);

  private:
    // Zoom En (bit 6) or Focus En (bit 3) of the lens configuration.
    static bool enabled(int motor, const Settings& settings);
    static bool reversed(int motor, const Settings& settings);

    std::array<LensMotor, kCount> motors_;
};

}  // namespace halvex::sim
