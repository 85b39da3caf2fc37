#pragma once

// The alignment messages: the angle offsets, the soft limits, the centre,
// the encoders' first alignment and the homing cycle.

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

// Pan then tilt, three bytes each from byte At of message M.
template <class M, int At = 1>
struct PanTilt {
    static constexpr Field<M> kPan = angleAt<M>(At);
    static constexpr Field<M> kTilt = angleAt<M>(At + 3);
};

struct SetAngleOffsets : Message<0x80, 7> {};
using set_angle_offsets = PanTilt<SetAngleOffsets>;
struct AlignToCentre : Message<0x82, 1> {};
struct AlignToCoordinates : Message<0x83, 7> {};
using align_to_coordinates = PanTilt<AlignToCoordinates>;
struct ZeroOffsets : Message<0x84, 1> {};
struct OffsetsRequest : Message<0x85, 1> {};
// The answer to the five above, under their codes.
struct AngleOffsets : Message<0x85, 7> {};
using angle_offsets = PanTilt<AngleOffsets>;

// Byte 1: which limit; with the read bit, a request for its position.
struct SoftLimit : Message<0x81, 2> {};
namespace soft_limit {
inline constexpr Field<SoftLimit> kLimit{1, 1, 0x7F};
inline constexpr Field<SoftLimit> kLimitByte{1};
// CW, CCW, up, down.
inline constexpr int kLimits = 4;
}  // namespace soft_limit
struct SoftLimitReply : Message<0x81, 5> {};
namespace soft_limit_reply {
inline constexpr Field<SoftLimitReply> kLimit{1};
inline constexpr auto kPosition = angleAt<SoftLimitReply>(2);
}  // namespace soft_limit_reply

struct CentreRequest : Message<0x90, 1> {};
struct SetCentre : Message<0x91, 1> {};
struct CentrePosition : Message<0x90, 7> {};
using centre_position = PanTilt<CentrePosition>;

struct EncoderAlignment : Message<0x9D, 1> {};
struct EncoderAlignmentFinished : Message<0x9D, 7> {};
using encoder_alignment_finished = PanTilt<EncoderAlignmentFinished>;

struct HomingCycle : Message<0x9E, 1> {};
struct HomingCycleFinished : Message<0x9E, 8> {};
namespace homing_cycle_finished {
inline constexpr Field<HomingCycleFinished> kIndex{1};
inline constexpr Bit<HomingCycleFinished> kPanIndexFound{1, 0};
inline constexpr Bit<HomingCycleFinished> kTiltIndexFound{1, 1};
inline constexpr auto kPan = angleAt<HomingCycleFinished>(2);
inline constexpr auto kTilt = angleAt<HomingCycleFinished>(5);
}  // namespace homing_cycle_finished

}  // namespace halvex::vocab
