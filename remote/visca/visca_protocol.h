#pragma once

// not the unit's protocol: this file is all VISCA's.
//
// VISCA as the bridge reads and writes it, with nothing of Qt: the packets
// a controller sends camera 1 (and the broadcasts every camera answers),
// the camera's replies, the 8-byte header VISCA over IP puts in front of a
// packet in a UDP datagram, the reader that cuts a TCP byte stream into
// packets, and the scale between VISCA's numbers and the unit's.

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <variant>
#include <vector>

namespace halvex::visca {

using Packet = std::vector<std::uint8_t>;

inline constexpr std::uint16_t kDefaultPort = 52381;
// Header, at least one byte, terminator.
inline constexpr std::size_t kMinPacket = 3;
inline constexpr std::size_t kMaxPacket = 16;
inline constexpr std::uint8_t kTerminator = 0xFF;

// ---- What a controller asks -------------------------------------------

// 8x 01 06 01 VV WW 0Y 0Z FF. Each axis -1 (left, down), 0 (stop) or +1
// (right, up); a speed is VISCA's, only read for a moving axis.
struct PanTiltDrive {
    int panSpeed = 0;
    int tiltSpeed = 0;
    int pan = 0;
    int tilt = 0;
};
// 8x 01 06 02 (absolute) or 03 (relative) VV WW 0Y 0Y 0Y 0Y 0Z 0Z 0Z 0Z FF,
// in position units (see degreesOf). The speeds are not used: the unit
// travels at its own.
struct PanTiltPosition {
    bool relative = false;
    std::int16_t pan = 0;
    std::int16_t tilt = 0;
};
struct PanTiltHome {};
struct PanTiltReset {};
// 8x 01 04 07 pp FF (zoom) and 8x 01 04 08 pp FF (focus). Direction +1 is
// tele or far, -1 wide or near, 0 stop; speed 0..7, or kStandardSpeed.
struct LensDrive {
    enum class Lens { Zoom, Focus };
    static constexpr int kStandardSpeed = -1;
    static constexpr int kMaxSpeed = 7;
    Lens lens = Lens::Zoom;
    int direction = 0;
    int speed = kStandardSpeed;
};
// 8x 01 04 3F 0a pp FF.
struct Memory {
    enum class Action { Reset, Set, Recall };
    Action action = Action::Recall;
    int number = 0;
};
// 8x 09 06 12 FF and 8x 09 04 47 FF.
struct PanTiltPositionInquiry {};
struct ZoomPositionInquiry {};
// 8x 01 00 01 FF, or 88 01 00 01 FF to every camera.
struct InterfaceClear {
    bool broadcast = false;
};
// 8x 2p FF: the command in socket p is cancelled.
struct Cancel {
    int socket = 0;
};
// 88 30 0p FF: the first camera takes address p and passes p + 1 on.
struct AddressSet {
    int address = 0;
};
// Not a packet this camera understands: answered with a syntax error.
struct SyntaxError {};
// A packet for another camera on the chain: not answered.
struct OtherCamera {};

using Request = std::variant<SyntaxError, OtherCamera, PanTiltDrive, PanTiltPosition, PanTiltHome,
                             PanTiltReset, LensDrive, Memory, PanTiltPositionInquiry,
                             ZoomPositionInquiry, InterfaceClear, Cancel, AddressSet>;

// One packet, terminator included.
Request parse(const Packet& packet);
// An inquiry (VISCA over IP carries it as one), as against a command.
bool isInquiry(const Request& request);

// ---- What the camera answers ------------------------------------------

namespace error {
inline constexpr std::uint8_t kSyntax = 0x02;
inline constexpr std::uint8_t kBufferFull = 0x03;
inline constexpr std::uint8_t kCanceled = 0x04;
inline constexpr std::uint8_t kNoSocket = 0x05;
inline constexpr std::uint8_t kNotExecutable = 0x41;
}  // namespace error

// 90 4y FF, 90 5y FF, 90 6y ee FF; socket 0 for what holds none.
Packet ack(int socket);
Packet completion(int socket);
Packet errorReply(int socket, std::uint8_t code);
// 90 50 0w 0w 0w 0w 0z 0z 0z 0z FF.
Packet panTiltPositionReply(std::int16_t pan, std::int16_t tilt);
// 90 50 0p 0q 0r 0s FF.
Packet zoomPositionReply(std::uint16_t zoom);
// 88 30 0p FF with the next camera's address.
Packet addressSetReply(int nextAddress);
// The broadcast IF_Clear comes back as it was sent.
Packet interfaceClearBroadcastReply();

// ---- VISCA over IP ----------------------------------------------------

namespace payload {
inline constexpr std::uint16_t kCommand = 0x0100;
inline constexpr std::uint16_t kInquiry = 0x0110;
inline constexpr std::uint16_t kReply = 0x0111;
inline constexpr std::uint16_t kDeviceSetting = 0x0120;
inline constexpr std::uint16_t kControl = 0x0200;
inline constexpr std::uint16_t kControlReply = 0x0201;
}  // namespace payload

inline constexpr std::size_t kIpHeader = 8;

// Control command payloads: RESET (sequence number back to 0), answered by
// the control reply's acknowledge; ERROR with what was wrong.
namespace control {
inline constexpr std::uint8_t kReset = 0x01;
inline constexpr std::uint8_t kAcknowledge = 0x01;
inline constexpr std::uint8_t kError = 0x0F;
inline constexpr std::uint8_t kSequenceNumber = 0x01;
inline constexpr std::uint8_t kMessageType = 0x02;
}  // namespace control

struct IpMessage {
    std::uint16_t type = 0;
    std::uint32_t sequence = 0;
    Packet payload;
};

// One datagram. Without a message it was malformed: shorter than the
// header, a payload length of 0, past 16 or other than what follows. The
// sequence number is the datagram's when it has a whole header, else 0.
struct IpRead {
    std::uint32_t sequence = 0;
    std::optional<IpMessage> message;
};
IpRead readIp(const std::uint8_t* data, std::size_t size);

Packet ipMessage(std::uint16_t type, std::uint32_t sequence, const Packet& payload);
// The control reply to a RESET, and a control ERROR.
Packet ipResetReply(std::uint32_t sequence);
Packet ipError(std::uint32_t sequence, std::uint8_t what);

// ---- A byte stream ----------------------------------------------------

// Cuts a stream (plain VISCA over TCP) into packets, each up to and with
// its terminator, however the reads break it. A run of more than 16 bytes
// with no terminator comes out as one packet of its first 17 bytes, which
// parse() takes for a syntax error, and the rest up to the next
// terminator is dropped.
class PacketReader {
  public:
    void feed(const std::uint8_t* data, std::size_t size, std::vector<Packet>& packets);

  private:
    Packet pending_;
    bool dropping_ = false;
};

// ---- The scale --------------------------------------------------------

// A position unit is a hundredth of a degree, signed 16 bits: -327.68 to
// 327.67 degrees, the unit's own resolution.
inline constexpr double kDegreesPerUnit = 0.01;
double degreesOf(std::int16_t position);
// Nothing past the 16 bits.
std::optional<std::int16_t> positionOf(double degrees);

// Pan speeds 0x01..0x18 and tilt speeds 0x01..0x14 onto the jog speed
// 1..255, in proportion: 0x18 and 0x14 are full speed. Some controllers
// send tilt speeds up to 0x18 (other cameras' range): full speed too.
inline constexpr int kMaxPanSpeed = 0x18;
inline constexpr int kMaxTiltSpeed = 0x14;
inline constexpr int kMaxTiltSpeedTaken = 0x18;
int panJogSpeed(int viscaSpeed);
int tiltJogSpeed(int viscaSpeed);
// A lens drive's speed 0..7 onto the lens jog speed 16..127 in eighths; the
// standard speed is 64 (speed 3). Signed with its direction: 0 at rest.
int lensJogSpeed(const LensDrive& drive);
// The unit's zoom position 0..255 onto 0x0000..0x4000 in proportion.
inline constexpr int kMaxZoomPosition = 0x4000;
std::uint16_t zoomPositionOf(std::uint8_t unitZoom);

}  // namespace halvex::visca
