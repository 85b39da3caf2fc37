// not the unit's protocol: this file is all VISCA's.

#include "remote/visca/visca_protocol.h"

#include <algorithm>
#include <cmath>

namespace halvex::visca {

namespace {

constexpr std::uint8_t kOurAddress = 1;
constexpr std::uint8_t kBroadcast = 8;
constexpr std::uint8_t kReplyHeader = 0x90;  // from camera 1 to the controller
constexpr std::uint8_t kBroadcastHeader = 0x88;

constexpr std::uint8_t kCommand = 0x01;
constexpr std::uint8_t kInquiry = 0x09;
constexpr std::uint8_t kInterface = 0x00;
constexpr std::uint8_t kCamera = 0x04;
constexpr std::uint8_t kPanTilt = 0x06;

constexpr std::uint8_t kAck = 0x40;
constexpr std::uint8_t kCompletion = 0x50;
constexpr std::uint8_t kError = 0x60;
constexpr std::uint8_t kCancel = 0x20;

bool is(const Packet& p, std::initializer_list<std::uint8_t> body) {
    // The body after the header byte, terminator included.
    return p.size() == body.size() + 1 && std::equal(body.begin(), body.end(), p.begin() + 1);
}

std::uint8_t low(int value) {
    return static_cast<std::uint8_t>(value & 0x0F);
}

// Four bytes 0p 0q 0r 0s from `at`, or nothing when one is not a nibble.
std::optional<std::uint16_t> nibbles(const Packet& p, std::size_t at) {
    std::uint16_t value = 0;
    for (std::size_t i = at; i < at + 4; ++i) {
        if (p[i] > 0x0F) {
            return std::nullopt;
        }
        value = static_cast<std::uint16_t>((value << 4) | p[i]);
    }
    return value;
}

void putNibbles(Packet& p, std::uint16_t value) {
    for (int shift = 12; shift >= 0; shift -= 4) {
        p.push_back(low(value >> shift));
    }
}

// 01 left / up, 02 right / down, 03 stop, as -1 / +1 / 0 with right and up
// positive; kNoAxis for anything else.
constexpr int kNoAxis = -2;
int pan(std::uint8_t byte) {
    return byte == 0x01 ? -1 : byte == 0x02 ? 1 : byte == 0x03 ? 0 : kNoAxis;
}
int tilt(std::uint8_t byte) {
    return byte == 0x01 ? 1 : byte == 0x02 ? -1 : byte == 0x03 ? 0 : kNoAxis;
}

Request panTiltDrive(const Packet& p) {
    PanTiltDrive drive{p[4], p[5], pan(p[6]), tilt(p[7])};
    if (drive.pan == kNoAxis || drive.tilt == kNoAxis) {
        return SyntaxError{};
    }
    if (drive.pan == 0) {
        drive.panSpeed = 0;
    } else if (drive.panSpeed < 1 || drive.panSpeed > kMaxPanSpeed) {
        return SyntaxError{};
    }
    if (drive.tilt == 0) {
        drive.tiltSpeed = 0;
    } else if (drive.tiltSpeed < 1 || drive.tiltSpeed > kMaxTiltSpeedTaken) {
        return SyntaxError{};
    }
    return drive;
}

Request panTiltPosition(const Packet& p, bool relative) {
    const auto panUnits = nibbles(p, 6);
    const auto tiltUnits = nibbles(p, 10);
    if (!panUnits || !tiltUnits) {
        return SyntaxError{};
    }
    return PanTiltPosition{relative, static_cast<std::int16_t>(*panUnits),
                           static_cast<std::int16_t>(*tiltUnits)};
}

Request lensDrive(LensDrive::Lens lens, std::uint8_t byte) {
    // 00 is the stop, at rest with no speed read.
    LensDrive drive;
    drive.lens = lens;
    if (byte == 0x02 || byte == 0x03) {
        drive.direction = byte == 0x02 ? 1 : -1;
    } else if ((byte & 0xF0) == 0x20 || (byte & 0xF0) == 0x30) {
        if ((byte & 0x0F) > LensDrive::kMaxSpeed) {
            return SyntaxError{};
        }
        drive.direction = (byte & 0xF0) == 0x20 ? 1 : -1;
        drive.speed = byte & 0x0F;
    } else if (byte != 0x00) {
        return SyntaxError{};
    }
    return drive;
}

Request broadcast(const Packet& p) {
    if (p.size() == 4 && p[1] == 0x30 && p[2] >= 1 && p[2] <= 7) {
        return AddressSet{p[2]};
    }
    if (is(p, {kCommand, kInterface, 0x01, kTerminator})) {
        return InterfaceClear{true};
    }
    return SyntaxError{};
}

Request toCamera(const Packet& p) {
    if (p.size() == 3 && (p[1] & 0xF0) == kCancel) {
        return Cancel{p[1] & 0x0F};
    }
    if (is(p, {kCommand, kInterface, 0x01, kTerminator})) {
        return InterfaceClear{false};
    }
    if (is(p, {kInquiry, kPanTilt, 0x12, kTerminator})) {
        return PanTiltPositionInquiry{};
    }
    if (is(p, {kInquiry, kCamera, 0x47, kTerminator})) {
        return ZoomPositionInquiry{};
    }
    if (p.size() < 5 || p[1] != kCommand) {
        return SyntaxError{};
    }
    if (p[2] == kPanTilt) {
        switch (p[3]) {
            case 0x01:
                return p.size() == 9 ? panTiltDrive(p) : SyntaxError{};
            case 0x02:
            case 0x03:
                return p.size() == 15 ? panTiltPosition(p, p[3] == 0x03) : SyntaxError{};
            case 0x04:
                return p.size() == 5 ? PanTiltHome{} : Request{SyntaxError{}};
            case 0x05:
                return p.size() == 5 ? PanTiltReset{} : Request{SyntaxError{}};
            default:
                return SyntaxError{};
        }
    }
    if (p[2] == kCamera && p.size() == 6 && (p[3] == 0x07 || p[3] == 0x08)) {
        return lensDrive(p[3] == 0x07 ? LensDrive::Lens::Zoom : LensDrive::Lens::Focus, p[4]);
    }
    if (p[2] == kCamera && p.size() == 7 && p[3] == 0x3F && p[4] <= 0x02) {
        return Memory{static_cast<Memory::Action>(p[4]), p[5]};
    }
    return SyntaxError{};
}

}  // namespace

Request parse(const Packet& p) {
    if (p.size() < kMinPacket || p.size() > kMaxPacket || p.back() != kTerminator ||
        std::find(p.begin(), p.end(), kTerminator) != p.end() - 1 || (p[0] & 0x80) == 0) {
        return SyntaxError{};
    }
    const int receiver = p[0] & 0x0F;
    if (receiver == kOurAddress) {
        return toCamera(p);
    }
    if (receiver == kBroadcast) {
        return broadcast(p);
    }
    return receiver >= 2 && receiver <= 7 ? Request{OtherCamera{}} : Request{SyntaxError{}};
}

bool isInquiry(const Request& request) {
    return std::holds_alternative<PanTiltPositionInquiry>(request) ||
           std::holds_alternative<ZoomPositionInquiry>(request);
}

Packet ack(int socket) {
    return {kReplyHeader, static_cast<std::uint8_t>(kAck | low(socket)), kTerminator};
}

Packet completion(int socket) {
    return {kReplyHeader, static_cast<std::uint8_t>(kCompletion | low(socket)), kTerminator};
}

Packet errorReply(int socket, std::uint8_t code) {
    return {kReplyHeader, static_cast<std::uint8_t>(kError | low(socket)), code, kTerminator};
}

Packet panTiltPositionReply(std::int16_t pan, std::int16_t tilt) {
    Packet p{kReplyHeader, kCompletion};
    putNibbles(p, static_cast<std::uint16_t>(pan));
    putNibbles(p, static_cast<std::uint16_t>(tilt));
    p.push_back(kTerminator);
    return p;
}

Packet zoomPositionReply(std::uint16_t zoom) {
    Packet p{kReplyHeader, kCompletion};
    putNibbles(p, zoom);
    p.push_back(kTerminator);
    return p;
}

Packet addressSetReply(int nextAddress) {
    return {kBroadcastHeader, 0x30, low(nextAddress), kTerminator};
}

Packet interfaceClearBroadcastReply() {
    return {kBroadcastHeader, kCommand, kInterface, 0x01, kTerminator};
}

IpRead readIp(const std::uint8_t* data, std::size_t size) {
    IpRead read;
    if (size < kIpHeader) {
        return read;
    }
    const auto word = [data](std::size_t at) {
        return static_cast<std::uint16_t>((data[at] << 8) | data[at + 1]);
    };
    read.sequence = (std::uint32_t{word(4)} << 16) | word(6);
    const std::size_t length = word(2);
    if (length == 0 || length > kMaxPacket || length != size - kIpHeader) {
        return read;
    }
    read.message = IpMessage{word(0), read.sequence, Packet(data + kIpHeader, data + size)};
    return read;
}

Packet ipMessage(std::uint16_t type, std::uint32_t sequence, const Packet& payload) {
    Packet p;
    p.reserve(kIpHeader + payload.size());
    const auto put16 = [&p](std::uint32_t value) {
        p.push_back(static_cast<std::uint8_t>((value >> 8) & 0xFF));
        p.push_back(static_cast<std::uint8_t>(value & 0xFF));
    };
    put16(type);
    put16(static_cast<std::uint32_t>(payload.size()));
    put16(sequence >> 16);
    put16(sequence & 0xFFFF);
    p.insert(p.end(), payload.begin(), payload.end());
    return p;
}

Packet ipResetReply(std::uint32_t sequence) {
    return ipMessage(payload::kControlReply, sequence, {control::kAcknowledge});
}

Packet ipError(std::uint32_t sequence, std::uint8_t what) {
    return ipMessage(payload::kControl, sequence, {control::kError, what});
}

void PacketReader::feed(const std::uint8_t* data, std::size_t size, std::vector<Packet>& packets) {
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint8_t byte = data[i];
        if (dropping_) {
            dropping_ = byte != kTerminator;
            continue;
        }
        pending_.push_back(byte);
        if (byte == kTerminator) {
            packets.push_back(std::move(pending_));
            pending_.clear();
        } else if (pending_.size() > kMaxPacket) {
            packets.push_back(std::move(pending_));
            pending_.clear();
            dropping_ = true;
        }
    }
}

double degreesOf(std::int16_t position) {
    return position * kDegreesPerUnit;
}

std::optional<std::int16_t> positionOf(double degrees) {
    const double units = std::round(degrees / kDegreesPerUnit);
    if (!(units >= -32768.0 && units <= 32767.0)) {
        return std::nullopt;
    }
    return static_cast<std::int16_t>(units);
}

namespace {
int proportion(int value, int full, int onto) {
    return (value * onto + full / 2) / full;
}
}  // namespace

int panJogSpeed(int viscaSpeed) {
    return proportion(std::min(viscaSpeed, kMaxPanSpeed), kMaxPanSpeed, 255);
}

int tiltJogSpeed(int viscaSpeed) {
    return proportion(std::min(viscaSpeed, kMaxTiltSpeed), kMaxTiltSpeed, 255);
}

int lensJogSpeed(const LensDrive& drive) {
    constexpr int kStandard = 3;
    const int speed = drive.speed == LensDrive::kStandardSpeed ? kStandard : drive.speed;
    return drive.direction * proportion(std::clamp(speed, 0, LensDrive::kMaxSpeed) + 1, 8, 127);
}

std::uint16_t zoomPositionOf(std::uint8_t unitZoom) {
    return static_cast<std::uint16_t>(proportion(unitZoom, 255, kMaxZoomPosition));
}

}  // namespace halvex::visca
