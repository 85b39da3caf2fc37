#pragma once

// One motor axis: position and velocity in hundredths of a degree, driven
// either by a jog velocity or towards a target, always through the ramp.

namespace halvex::sim {

struct AxisDynamics {
    double accel = 1.0;  // hundredths per second squared, speeding up
    double decel = 1.0;  // hundredths per second squared, slowing down
};

// Where the axis must stop. A wrapping axis has no ends.
struct AxisTravel {
    double min = 0.0;
    double max = 0.0;
    bool wraps = false;
};

enum class TravelStop { None, AtMin, AtMax };

class Axis {
  public:
    double position() const { return position_; }
    double velocity() const { return velocity_; }
    double target() const { return target_; }
    bool hasTarget() const { return mode_ == Mode::Move; }
    // +1 moving up or CW, -1 down or CCW, 0 still. An axis that has just
    // been given a target or a jog speed counts as moving before its first
    // step.
    int direction() const;

    void placeAt(double position);
    void jog(double velocity);
    void moveTo(double target, double speed);
    // Ends a move: the axis ramps down where it is.
    void endMove();
    // Stops dead, as a motor fault does.
    void halt();

    TravelStop step(double seconds, const AxisDynamics& dynamics, const AxisTravel& travel);

  private:
    enum class Mode { Jog, Move };

    double desiredVelocity(const AxisDynamics& dynamics) const;

    Mode mode_ = Mode::Jog;
    double position_ = 0.0;
    double velocity_ = 0.0;
    double jogVelocity_ = 0.0;
    double target_ = 0.0;
    double moveSpeed_ = 0.0;
};

}  // namespace halvex::sim
