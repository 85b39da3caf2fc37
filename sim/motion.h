#pragma once

// Pan and tilt together: the two axes, the offsets that turn mechanical
// angles into reported ones, soft and hard limits, continuous pan, faults and
// the status bits of the position report.

#include <array>
#include <cstdint>

#include "protocol/frame.h"
#include "protocol/vocabulary.h"
#include "sim/axis.h"
#include "sim/settings.h"

namespace halvex::sim {

enum class Fault { PanTimeout, TiltTimeout, PanDirection, TiltDirection };

// The axis part of a jog message.
struct JogRequest {
    Byte flags = 0;
    Byte panSpeed = 0;
    Byte tiltSpeed = 0;
};

class Motion {
  public:
    std::int32_t mechanicalPan() const;
    std::int32_t mechanicalTilt() const;
    std::int32_t reportedPan(const Settings& settings) const;
    std::int32_t reportedTilt(const Settings& settings) const;

    // Applies the flags (override, fault reset) and speeds of a jog message.
    // An axis on its way to a target keeps going while its jog speed is 0.
    void jog(const JogRequest& request, const Settings& settings);
    // Moves to reported angles (kHoldAxis leaves an axis alone). Returns
    // false, moving nothing, when a target lies outside the mechanical range.
    bool moveToReported(std::int32_t pan, std::int32_t tilt, const Settings& settings);
    // Moves to mechanical angles, as presets are kept.
    void moveToMechanical(std::int32_t pan, std::int32_t tilt, const Settings& settings);
    // Ends any move on its way to a target; jogs are left alone.
    void endMoves();
    // Ramps both axes down, whatever drives them.
    void stop();
    // Makes the current position the mechanical centre.
    void recentre();

    bool hasTargets() const { return pan_.hasTarget() || tilt_.hasTarget(); }
    bool moving() const { return hasTargets() || pan_.direction() != 0 || tilt_.direction() != 0; }

    void step(double seconds, const Settings& settings);

    // A latched fault stops its axis until the reset bit of a jog message.
    void latchFault(Fault fault);
    // An armed fault latches each time its axis is told to move.
    void armFault(Fault fault);
    void resetFaults();
    bool panFaulted() const { return panTimeout_ || panDirection_; }
    bool tiltFaulted() const { return tiltTimeout_ || tiltDirection_; }

    Byte statusA(Byte variant, const Settings& settings) const;
    Byte statusB() const;
    Byte statusC(const Settings& settings, bool tourRunning) const;
    bool overrideOn() const { return override_; }

  private:
    AxisTravel panTravel(const Settings& settings) const;
    AxisTravel tiltTravel(const Settings& settings) const;
    void latchArmedFaults(bool panDriven, bool tiltDriven);
    void clearLimitLatches(const Settings& settings);

    Axis pan_;
    Axis tilt_;
    bool override_ = false;
    bool panTimeout_ = false;
    bool panDirection_ = false;
    bool tiltTimeout_ = false;
    bool tiltDirection_ = false;
    std::array<bool, 4> armed_{};
    // Soft limit that stopped an axis, by limit index, until it moves off.
    std::array<bool, 4> softStopped_{};
};

}  // namespace halvex::sim
