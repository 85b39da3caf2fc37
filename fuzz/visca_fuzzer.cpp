// libFuzzer target for what a VISCA controller sends the bridge: the input
// is read as a datagram (the VISCA over IP header and its packet) and as a
// TCP stream cut into packets in pieces. Besides a crash or a sanitizer
// report, a finding is
//   - a datagram taken whose header does not say what it carries, or whose
//     message does not give back the same bytes;
//   - packets that depend on where the reads broke, or bytes that no packet
//     accounts for other than the dropped tail of an over-long run;
//   - a packet taken as a request that is not a whole VISCA packet, or a
//     request whose numbers lie outside what VISCA and the unit allow.
//
// Input: the first byte sets the size of the pieces (1..16), the rest is
// what the controller sends.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <variant>
#include <vector>

#include "remote/visca/visca_protocol.h"

namespace {

namespace visca = halvex::visca;
using visca::Packet;

[[noreturn]] void finding(const char* what) {
    std::fprintf(stderr, "visca fuzzer: %s\n", what);
    std::abort();
}

void checkDatagram(const std::uint8_t* data, std::size_t size) {
    const visca::IpRead read = visca::readIp(data, size);
    if (!read.message) {
        return;
    }
    const visca::IpMessage& message = *read.message;
    if (message.payload.empty() || message.payload.size() > visca::kMaxPacket) {
        finding("a datagram taken with a payload of the wrong size");
    }
    if (visca::ipMessage(message.type, message.sequence, message.payload) !=
        Packet(data, data + size)) {
        finding("a datagram that does not come back as it was read");
    }
}

std::vector<Packet> cut(const std::uint8_t* data, std::size_t size, std::size_t piece) {
    visca::PacketReader reader;
    std::vector<Packet> packets;
    for (std::size_t at = 0; at < size; at += piece) {
        reader.feed(data + at, size - at < piece ? size - at : piece, packets);
    }
    return packets;
}

void checkRequest(const Packet& packet) {
    const visca::Request request = visca::parse(packet);
    if (std::holds_alternative<visca::SyntaxError>(request)) {
        return;
    }
    if (packet.size() < visca::kMinPacket || packet.size() > visca::kMaxPacket ||
        packet.back() != visca::kTerminator) {
        finding("a request taken from a packet that is not whole");
    }
    if (const auto* drive = std::get_if<visca::PanTiltDrive>(&request)) {
        const bool panOk = drive->pan == 0
                               ? drive->panSpeed == 0
                               : drive->panSpeed >= 1 && drive->panSpeed <= visca::kMaxPanSpeed;
        const bool tiltOk = drive->tilt == 0 ? drive->tiltSpeed == 0
                                             : drive->tiltSpeed >= 1 &&
                                                   drive->tiltSpeed <= visca::kMaxTiltSpeedTaken;
        const int pan = visca::panJogSpeed(drive->panSpeed);
        const int tilt = visca::tiltJogSpeed(drive->tiltSpeed);
        if (!panOk || !tiltOk || pan < 0 || pan > 255 || tilt < 0 || tilt > 255 ||
            (drive->pan != 0 && pan == 0) || (drive->tilt != 0 && tilt == 0)) {
            finding("a drive's speed outside VISCA's or the unit's range");
        }
    } else if (const auto* lens = std::get_if<visca::LensDrive>(&request)) {
        const int speed = visca::lensJogSpeed(*lens);
        if (speed < -127 || speed > 127 || (speed == 0) != (lens->direction == 0)) {
            finding("a lens drive's speed outside the lens jog's range");
        }
    } else if (const auto* memory = std::get_if<visca::Memory>(&request)) {
        if (memory->number < 0 || memory->number > 0xFE) {
            finding("a memory number that no byte carries");
        }
    } else if (const auto* cancel = std::get_if<visca::Cancel>(&request)) {
        if (cancel->socket < 0 || cancel->socket > 0x0F) {
            finding("a cancel's socket past its nibble");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t piece = data[0] % 16 + 1;
    const std::uint8_t* sent = data + 1;
    const std::size_t length = size - 1;

    checkDatagram(sent, length);
    if (const auto read = visca::readIp(sent, length); read.message) {
        checkRequest(read.message->payload);
    }

    const std::vector<Packet> pieces = cut(sent, length, piece);
    if (pieces != cut(sent, length, length == 0 ? 1 : length)) {
        finding("the packets depend on where the reads broke");
    }
    std::size_t taken = 0;
    for (const Packet& packet : pieces) {
        const bool whole = !packet.empty() && packet.back() == visca::kTerminator &&
                           packet.size() <= visca::kMaxPacket + 1;
        const bool runOn = packet.size() == visca::kMaxPacket + 1;
        if (!whole && !runOn) {
            finding("a packet that is neither whole nor the start of an over-long run");
        }
        taken += packet.size();
        checkRequest(packet);
    }
    if (taken > length) {
        finding("more bytes in the packets than were sent");
    }
    return 0;
}
