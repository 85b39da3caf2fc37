#pragma once

// not the unit's protocol: Pelco-D, as desk keyboards send it.
//
// The frames of Pelco-D with no Qt: seven bytes, the sync byte 0xFF, the
// camera's address, command 1, command 2, data 1, data 2, and the sum of the
// five bytes between the sync byte and the checksum, modulo 256. Bytes come
// from a serial line or a TCP stream in pieces of any size; the assembler
// gathers frames from them and looks for the next sync byte after noise or a
// frame whose checksum does not hold.

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace halvex::pelco_d {

inline constexpr std::uint8_t kSync = 0xFF;
inline constexpr std::size_t kFrameLength = 7;

// Command 1.
inline constexpr std::uint8_t kFocusNear = 0x01;
// Command 2. Bit 0 set makes the frame an extended command, whose opcode is
// command 2 as a whole.
inline constexpr std::uint8_t kExtended = 0x01;
inline constexpr std::uint8_t kPanRight = 0x02;
inline constexpr std::uint8_t kPanLeft = 0x04;
inline constexpr std::uint8_t kTiltUp = 0x08;
inline constexpr std::uint8_t kTiltDown = 0x10;
inline constexpr std::uint8_t kZoomTele = 0x20;
inline constexpr std::uint8_t kZoomWide = 0x40;
inline constexpr std::uint8_t kFocusFar = 0x80;

// Extended commands: command 1 0, data 1 0, the number in data 2.
inline constexpr std::uint8_t kSetPreset = 0x03;
inline constexpr std::uint8_t kClearPreset = 0x05;
inline constexpr std::uint8_t kCallPreset = 0x07;
inline constexpr std::uint8_t kSetZoomSpeed = 0x25;
inline constexpr std::uint8_t kSetFocusSpeed = 0x27;

// Speeds in data 1 (pan) and data 2 (tilt): 0 to 0x3F, and turbo.
inline constexpr std::uint8_t kFastest = 0x3F;
inline constexpr std::uint8_t kTurbo = 0xFF;
// The lens speed settings of the extended commands: 0 slowest, 3 fastest.
inline constexpr int kFastestLensSetting = 3;

struct Frame {
    std::uint8_t address{};
    std::uint8_t command1{};
    std::uint8_t command2{};
    std::uint8_t data1{};
    std::uint8_t data2{};

    bool operator==(const Frame&) const = default;
};

std::uint8_t checksum(const Frame& frame);
// The frame as it goes on the wire, its checksum computed.
std::array<std::uint8_t, kFrameLength> encode(const Frame& frame);

// Gathers frames from the bytes as they arrive. A frame whose checksum does
// not hold is dropped, and the search for the next frame starts at the next
// sync byte after its own; bytes before a sync byte are dropped too.
class FrameAssembler {
  public:
    // The frames completed by `bytes`, in order.
    std::vector<Frame> feed(std::span<const std::uint8_t> bytes);
    // Bytes dropped so far, frames with a bad checksum among them.
    std::size_t dropped() const { return dropped_; }
    // Bytes held of a frame not yet complete.
    std::size_t pending() const { return held_; }

  private:
    // Drops a bad frame's sync byte and what follows it up to the next sync
    // byte.
    void resynchronise();

    std::array<std::uint8_t, kFrameLength> bytes_{};
    std::size_t held_ = 0;
    std::size_t dropped_ = 0;
};

// One axis of a standard command: -1 one way (left, down, wide, near), +1 the
// other (right, up, tele, far), 0 at rest or both ways at once.
struct Motion {
    int pan{};
    int tilt{};
    int zoom{};
    int focus{};
    std::uint8_t panSpeed{};   // data 1 as sent
    std::uint8_t tiltSpeed{};  // data 2 as sent
};

// What a frame asks for. Iris, camera power and scan bits have no
// counterpart here and are left out; every other extended command is
// Unsupported.
struct Command {
    enum class Kind {
        Motion,
        SetPreset,
        ClearPreset,
        CallPreset,
        SetZoomSpeed,
        SetFocusSpeed,
        Unsupported,
    };
    Kind kind = Kind::Unsupported;
    Motion motion;  // for Motion
    int number{};   // the preset or lens speed setting: data 2
};

Command decode(const Frame& frame);

// The unit's jog speed (0..255) for a Pelco-D speed: four steps of the unit's
// for each of Pelco-D's, 1..0x3F onto 4..252, and anything faster (turbo,
// 0xFF, or 0x40 as older keyboards send it) the unit's fastest, 255.
int unitJogSpeed(std::uint8_t speed);

// The lens jog speed (1..127) for a lens speed setting 0..3.
int lensJogSpeed(int setting);

}  // namespace halvex::pelco_d
