#pragma once

// The unit's setup messages: speeds, ramps and limits, directions, the
// communication time-out, the heater, the firmware, the address and the
// encoders. Each get/set command is answered with the settings it leaves.

#include "protocol/vocabulary_words.h"

namespace halvex::vocab {

struct RampRequest : Message<0x86, 1> {};
struct Ramps : Message<0x86, 3> {};
namespace ramps {
inline constexpr Field<Ramps> kPan{1, 1, 0x7F};
inline constexpr Field<Ramps> kTilt{2, 1, 0x7F};
inline constexpr Field<Ramps> kPanByte{1};
inline constexpr Field<Ramps> kTiltByte{2};
}  // namespace ramps

// One axis's safe speed, ramp and deceleration from byte At of M.
template <class M, int At>
struct AxisRates {
    static constexpr Field<M> kSafeSpeed{At, 1, 0x7F};
    static constexpr Field<M> kSafeSpeedByte{At};
    static constexpr Field<M> kRamp{At + 1};
    static constexpr Field<M> kDeceleration{At + 2};
};

// The console sends the read request and the set at the full length, whose
// last byte the unit ignores; the unit takes the read bit alone too. The
// answer has the same places without that byte.
struct Rates : Message<0x92, 9, 2> {};
namespace rates {
using Pan = AxisRates<Rates, 1>;
using Tilt = AxisRates<Rates, 5>;
}  // namespace rates
struct RatesReply : Message<0x92, 8> {};
namespace rates_reply {
using Pan = AxisRates<RatesReply, 1>;
using Tilt = AxisRates<RatesReply, 5>;
}  // namespace rates_reply

// Two layouts share a code, told apart by length.
struct MinimumPair : Message<0x93, 3> {};
namespace minimum_pair {
inline constexpr Field<MinimumPair> kPan{1};
inline constexpr Field<MinimumPair> kTilt{2};
}  // namespace minimum_pair
struct TiltSettings : Message<0x93, 7> {};
namespace tilt_settings {
inline constexpr Field<TiltSettings> kSafeSpeed{1, 1, 0x7F};
inline constexpr Field<TiltSettings> kSafeSpeedByte{1};
inline constexpr Field<TiltSettings> kRamp{2};
inline constexpr auto kMinimum = wordAt<TiltSettings>(3);
inline constexpr auto kMaximum = wordAt<TiltSettings>(5);
}  // namespace tilt_settings

struct Directions : Message<0x95, 2> {};
namespace directions {
using B = Bit<Directions>;
inline constexpr Field<Directions> kBits{1};
inline constexpr B kPanMotorReverse{1, 0};
inline constexpr B kTiltMotorReverse{1, 1};
inline constexpr B kPanResolverInvert{1, 2};
inline constexpr B kTiltResolverInvert{1, 3};
inline constexpr B kContinuousRotation{1, 4};
inline constexpr B kInvertedMount{1, 5};
// The six bits above together.
inline constexpr Field<Directions> kNamedBits{1, 1, 0x3F};
}  // namespace directions

struct CommTimeout : Message<0x96, 2> {};
namespace comm_timeout {
inline constexpr Field<CommTimeout> kSeconds{1};
}

struct Heater : Message<0x97, 2> {};
namespace heater {
inline constexpr Field<Heater> kModeByte{1};
inline constexpr Field<Heater> kMode{1, 1, 0x03};
}  // namespace heater

struct MaximaRequest : Message<0x98, 1> {};
struct MaximumPair : Message<0x99, 3> {};
// The answer to both.
struct Maxima : Message<0x98, 3> {};
namespace maximum_pair {
inline constexpr Field<MaximumPair> kPan{1};
inline constexpr Field<MaximumPair> kTilt{2};
}  // namespace maximum_pair
namespace maxima {
inline constexpr Field<Maxima> kPan{1};
inline constexpr Field<Maxima> kTilt{2};
}  // namespace maxima

struct FirmwareRequest : Message<0x9A, 1> {};
struct Firmware : Message<0x9A, 6> {};
namespace firmware {
inline constexpr Field<Firmware> kMajor{1};
inline constexpr Field<Firmware> kMinor{2};
inline constexpr Field<Firmware> kDay{3};
inline constexpr Field<Firmware> kMonth{4};
inline constexpr Field<Firmware> kYear{5};
inline constexpr int kYearBias = 2000;
}  // namespace firmware

// Byte 1: bit 7 reads, bit 6 picks the second pair of top speeds.
struct TopSpeeds : Message<0x9C, 4> {};
namespace top_speeds {
inline constexpr Bit<TopSpeeds> kSecond{1, 6};
inline constexpr Field<TopSpeeds> kVariant{1};
inline constexpr Field<TopSpeeds> kPan{2};
inline constexpr Field<TopSpeeds> kTilt{3};
}  // namespace top_speeds
struct TopSpeedsReply : Message<0x9C, 4> {};
namespace top_speeds_reply {
inline constexpr Bit<TopSpeedsReply> kSecond{1, 6};
inline constexpr Field<TopSpeedsReply> kVariant{1};
inline constexpr Field<TopSpeedsReply> kPan{2};
inline constexpr Field<TopSpeedsReply> kTilt{3};
}  // namespace top_speeds_reply

struct UnitAddress : Message<0x9F, 2> {};
namespace unit_address {
inline constexpr Field<UnitAddress> kId{1};
}

// An axis's lowest and highest step rate: the command has the read byte
// before them, the answer not.
struct PanSteps : Message<0xA1, 6> {};
struct TiltSteps : Message<0xA2, 6> {};
struct PanStepsReply : Message<0xA1, 5> {};
struct TiltStepsReply : Message<0xA2, 5> {};
template <class M, int At>
struct StepRange {
    static constexpr Field<M> kMinimum = wordAt<M>(At);
    static constexpr Field<M> kMaximum = wordAt<M>(At + 2);
};
using pan_steps = StepRange<PanSteps, 2>;
using tilt_steps = StepRange<TiltSteps, 2>;
using pan_steps_reply = StepRange<PanStepsReply, 1>;
using tilt_steps_reply = StepRange<TiltStepsReply, 1>;

struct DiagnosticsRequest : Message<0xA3, 1> {};
struct Diagnostics : Message<0xA3, 1> {};
namespace diagnostics {
inline constexpr int kData = 1;
}

// The encoders' counts, two bytes each: after the read byte in the command.
struct Encoders : Message<0xA5, 6> {};
namespace encoders {
inline constexpr auto kPan = wordAt<Encoders>(2);
inline constexpr auto kTilt = wordAt<Encoders>(4);
}  // namespace encoders
struct EncodersReply : Message<0xA5, 5> {};
namespace encoders_reply {
inline constexpr auto kPan = wordAt<EncodersReply>(1);
inline constexpr auto kTilt = wordAt<EncodersReply>(3);
}  // namespace encoders_reply

}  // namespace halvex::vocab
