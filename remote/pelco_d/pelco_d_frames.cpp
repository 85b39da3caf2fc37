// not the unit's protocol: Pelco-D, as desk keyboards send it.

#include "remote/pelco_d/pelco_d_frames.h"

#include <algorithm>

namespace halvex::pelco_d {

std::uint8_t checksum(const Frame& frame) {
    const unsigned sum =
        unsigned{frame.address} + frame.command1 + frame.command2 + frame.data1 + frame.data2;
    return static_cast<std::uint8_t>(sum & 0xFFu);
}

std::array<std::uint8_t, kFrameLength> encode(const Frame& frame) {
    return {kSync,       frame.address, frame.command1, frame.command2,
            frame.data1, frame.data2,   checksum(frame)};
}

std::vector<Frame> FrameAssembler::feed(std::span<const std::uint8_t> bytes) {
    std::vector<Frame> frames;
    for (const std::uint8_t byte : bytes) {
        if (held_ == 0 && byte != kSync) {
            ++dropped_;
            continue;
        }
        bytes_[held_++] = byte;
        if (held_ < kFrameLength) {
            continue;
        }
        const Frame frame{bytes_[1], bytes_[2], bytes_[3], bytes_[4], bytes_[5]};
        if (checksum(frame) == bytes_[6]) {
            frames.push_back(frame);
            held_ = 0;
        } else {
            resynchronise();
        }
    }
    return frames;
}

void FrameAssembler::resynchronise() {
    std::size_t next = 1;
    while (next < held_ && bytes_[next] != kSync) {
        ++next;
    }
    std::copy(bytes_.begin() + static_cast<std::ptrdiff_t>(next),
              bytes_.begin() + static_cast<std::ptrdiff_t>(held_), bytes_.begin());
    held_ -= next;
    dropped_ += next;
}

namespace {
// -1 when only `one` is set, +1 when only `other` is, else 0.
int way(bool one, bool other) {
    return int{other} - int{one};
}
}  // namespace

Command decode(const Frame& frame) {
    Command command;
    if ((frame.command2 & kExtended) != 0) {
        // Extended commands carry nothing in command 1 or data 1; one that
        // does (a preset number past a byte, on some systems) is not ours.
        if (frame.command1 != 0 || frame.data1 != 0) {
            return command;
        }
        switch (frame.command2) {
            case kSetPreset:
                command.kind = Command::Kind::SetPreset;
                break;
            case kClearPreset:
                command.kind = Command::Kind::ClearPreset;
                break;
            case kCallPreset:
                command.kind = Command::Kind::CallPreset;
                break;
            case kSetZoomSpeed:
                command.kind = Command::Kind::SetZoomSpeed;
                break;
            case kSetFocusSpeed:
                command.kind = Command::Kind::SetFocusSpeed;
                break;
            default:
                return command;
        }
        command.number = frame.data2;
        return command;
    }
    command.kind = Command::Kind::Motion;
    Motion& motion = command.motion;
    const auto set = [](std::uint8_t byte, std::uint8_t bit) { return (byte & bit) == bit; };
    motion.pan = way(set(frame.command2, kPanLeft), set(frame.command2, kPanRight));
    motion.tilt = way(set(frame.command2, kTiltDown), set(frame.command2, kTiltUp));
    motion.zoom = way(set(frame.command2, kZoomWide), set(frame.command2, kZoomTele));
    motion.focus = way(set(frame.command1, kFocusNear), set(frame.command2, kFocusFar));
    motion.panSpeed = frame.data1;
    motion.tiltSpeed = frame.data2;
    return command;
}

int unitJogSpeed(std::uint8_t speed) {
    constexpr int kUnitFastest = 255;
    constexpr int kUnitStepsPerStep = 4;
    return speed > kFastest ? kUnitFastest : speed * kUnitStepsPerStep;
}

int lensJogSpeed(int setting) {
    constexpr int kStep = 32;
    return (std::clamp(setting, 0, kFastestLensSetting) + 1) * kStep - 1;
}

}  // namespace halvex::pelco_d
