#pragma once

// The motion messages: the jog message and the position report that answers
// it and every move, and the moves themselves.

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

// The jog message: the console's every tick when no command waits. Its
// flags byte is the form's JogFlags.
struct JogMessage : Message<0x31, 8> {};

namespace jog {
using F = Field<JogMessage>;
using B = Bit<JogMessage>;
// Byte 1 whole, as the form's JogFlags holds it: the flags and directions.
inline constexpr F kFlagsByte{1};
inline constexpr F kFlags{1, 1, 0x1F};
inline constexpr B kReset{1, 0};
inline constexpr B kStop{1, 1};
inline constexpr B kSoftLimitOverride{1, 2};
inline constexpr B kTiltLowSpeed{1, 3};
inline constexpr B kPanLowSpeed{1, 4};
inline constexpr B kTiltUp{1, 6};
inline constexpr B kPanCw{1, 7};
inline constexpr F kTiltDirection{1, 1, 0x40};
inline constexpr F kPanDirection{1, 1, 0x80};
inline constexpr F kPanSpeed{2};
inline constexpr F kTiltSpeed{3};
// Zoom 1, focus 1, zoom 2, focus 2.
inline constexpr std::array<F, 4> kLensJog{F{4}, F{5}, F{6}, F{7}};
}  // namespace jog

// The position report: the answer to the jog message and to every move. A
// report of the target the unit heads for has the target bit of status C
// set. Only the jog message's report carries the cameras' bytes.
struct PositionReport {
    static constexpr int kLength = 14;
    static constexpr int kJogLength = 16;  // with the two camera counts
};

namespace report {
using F = Field<PositionReport>;
using B = Bit<PositionReport>;
inline constexpr F kPan{1, 3, 0xFFFFFF};
inline constexpr F kTilt{4, 3, 0xFFFFFF};
// Status A whole: its fault and limit bits and the controller type.
inline constexpr F kStatusAByte{7};
inline constexpr F kStatusA{7, 1, 0xFC};
inline constexpr F kControllerType{7, 1, 0x03};
inline constexpr F kStatusB{8};
inline constexpr F kStatusC{9};
inline constexpr B kTarget{9, 5};
inline constexpr B kContinuousPan{9, 7};
// Status A: pan's faults and limits.
inline constexpr B kPanDirectionFault{7, 2};
inline constexpr B kPanTimeout{7, 3};
inline constexpr B kCcwHardLimit{7, 4};
inline constexpr B kCwHardLimit{7, 5};
inline constexpr B kCcwSoftLimit{7, 6};
inline constexpr B kCwSoftLimit{7, 7};
// Status B: tilt's.
inline constexpr B kTiltDirectionFault{8, 2};
inline constexpr B kTiltTimeout{8, 3};
inline constexpr B kDownHardLimit{8, 4};
inline constexpr B kUpHardLimit{8, 5};
inline constexpr B kDownSoftLimit{8, 6};
inline constexpr B kUpSoftLimit{8, 7};
// Status C: what the unit is doing.
inline constexpr B kMovingDown{9, 0};
inline constexpr B kMovingUp{9, 1};
inline constexpr B kMovingCcw{9, 2};
inline constexpr B kMovingCw{9, 3};
inline constexpr B kSoftLimitOverridden{9, 4};
inline constexpr B kTourExecuting{9, 6};
// Status C's moving bits together.
inline constexpr F kMoving{9, 1, 0x0F};
// Zoom 1, focus 1, zoom 2, focus 2.
inline constexpr std::array<F, 4> kLens{F{10}, F{11}, F{12}, F{13}};
inline constexpr F kCamera1Count{14};
inline constexpr F kCamera2Count{15};
// The first camera's bytes start here, the second's follow them.
inline constexpr int kCameraData = 16;
}  // namespace report

struct GoToPreset : Message<0x32, 2> {};
namespace go_to_preset {
inline constexpr Field<GoToPreset> kPreset{1};
}

// Pan and tilt in hundredths of a degree; 99999 holds an axis where it is.
struct AbsoluteMove : Message<0x33, 7> {};
namespace absolute_move {
inline constexpr auto kPan = angleAt<AbsoluteMove>(1);
inline constexpr auto kTilt = angleAt<AbsoluteMove>(4);
inline constexpr std::int32_t kHoldAxis = 99999;
}  // namespace absolute_move

struct DeltaMove : Message<0x34, 7> {};
namespace delta_move {
inline constexpr auto kPan = angleAt<DeltaMove>(1);
inline constexpr auto kTilt = angleAt<DeltaMove>(4);
}  // namespace delta_move

struct MoveToCentre : Message<0x35, 1> {};
struct MoveToHome : Message<0x36, 1> {};

struct AbsoluteMoveWithLenses : Message<0x3A, 11> {};
namespace absolute_move_with_lenses {
using F = Field<AbsoluteMoveWithLenses>;
inline constexpr auto kPan = angleAt<AbsoluteMoveWithLenses>(1);
inline constexpr auto kTilt = angleAt<AbsoluteMoveWithLenses>(4);
// Zoom 1, focus 1, zoom 2, focus 2.
inline constexpr std::array<F, 4> kLens{F{7}, F{8}, F{9}, F{10}};
}  // namespace absolute_move_with_lenses

}  // namespace halvex::vocab
