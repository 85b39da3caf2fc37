#include <cstdint>

#include "sim/camera.h"

// The bytes here are the cameras' own VISCA protocol, carried through the
// unit untouched inside the pass-through and jog messages; they are no part
// of the unit's message vocabulary, so they stay written out as VISCA has them.
// not the unit's protocol: VISCA

namespace halvex::sim {

namespace {

constexpr Byte kTerminator = 0xFF;
constexpr Byte kAcknowledged = 0x41;
constexpr Byte kInquiryAnswer = 0x50;
constexpr Byte kCompleted = 0x51;
constexpr Byte kError = 0x60;
constexpr Byte kSyntaxError = 0x02;
constexpr Byte kPowerOn = 0x02;
constexpr std::int64_t kCompletionMs = 100;  // how long a camera takes to carry out a command

// Splits a byte string into VISCA packets, each ending with 0xFF.
std::vector<std::vector<Byte>> packets(const std::vector<Byte>& data) {
    std::vector<std::vector<Byte>> result;
    std::vector<Byte> current;
    for (Byte value : data) {
        current.push_back(value);
        if (value == kTerminator) {
            result.push_back(current);
            current.clear();
        }
    }
    return result;
}

// Four nibbles of a 16-bit value, as VISCA position replies carry them.
void appendNibbles(std::vector<Byte>& out, int value) {
    for (int shift = 12; shift >= 0; shift -= 4) {
        out.push_back(static_cast<Byte>((value >> shift) & 0x0F));
    }
}

CameraAnswer inquiryAnswer(Byte header, const std::vector<Byte>& packet, LensReading lens) {
    std::vector<Byte> reply{header, kInquiryAnswer};
    const bool zoomInquiry = packet.size() == 5 && packet[2] == 0x04 && packet[3] == 0x47;
    const bool focusInquiry = packet.size() == 5 && packet[2] == 0x04 && packet[3] == 0x48;
    const bool powerInquiry = packet.size() == 5 && packet[2] == 0x04 && packet[3] == 0x00;
    if (zoomInquiry) {
        appendNibbles(reply, lens.zoom * 0x4000 / 255);
    } else if (focusInquiry) {
        appendNibbles(reply, 0x1000 + lens.focus * 0xB000 / 255);
    } else if (powerInquiry) {
        reply.push_back(kPowerOn);
    } else {
        reply = {header, kError, kSyntaxError};
    }
    reply.push_back(kTerminator);
    return {0, reply};
}

}  // namespace

std::vector<CameraAnswer> answerVisca(const std::vector<Byte>& data, LensReading lens) {
    std::vector<CameraAnswer> answers;
    for (const auto& packet : packets(data)) {
        if (packet.size() < 3 || (packet[0] & 0xF0) != 0x80) {
            continue;
        }
        const int address = packet[0] & 0x07;
        const Byte header = static_cast<Byte>(0x80 + ((address == 0 ? 1 : address) << 4));
        const bool broadcast = (packet[0] & 0x0F) == 0x08;
        if (broadcast && packet[1] == 0x30) {
            // Address set: the one camera on the port takes address 1.
            answers.push_back({0, {0x88, 0x30, 0x02, kTerminator}});
        } else if (broadcast && packet[1] == 0x01) {
            answers.push_back({0, packet});  // interface clear comes back as sent
        } else if (packet[1] == 0x01) {
            answers.push_back({0, {header, kAcknowledged, kTerminator}});
            answers.push_back({kCompletionMs, {header, kCompleted, kTerminator}});
        } else if (packet[1] == 0x09) {
            answers.push_back(inquiryAnswer(header, packet, lens));
        } else {
            answers.push_back({0, {header, kError, kSyntaxError, kTerminator}});
        }
    }
    return answers;
}

std::vector<CameraAnswer> answerEcho(const std::vector<Byte>& data) {
    return {{0, data}};
}

}  // namespace halvex::sim
