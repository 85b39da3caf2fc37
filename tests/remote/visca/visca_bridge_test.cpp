// The VISCA bridge on real sockets: a controller's packets as the VISCA
// command lists write them, the camera's replies byte for byte, and what
// reaches the unit's line by message name.

#include <gtest/gtest.h>

#include <QNetworkDatagram>
#include <QTcpSocket>
#include <QUdpSocket>

#include "remote/visca/visca_bridge.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

using Packet = std::vector<std::uint8_t>;
using Packets = std::vector<Packet>;

// A packet written as the command lists do: "81 01 06 04 FF".
Packet bytes(const std::string& text) {
    const QByteArray packet = QByteArray::fromHex(QByteArray::fromStdString(text));
    return {packet.begin(), packet.end()};
}
// Packets with a comma between two.
Packets hex(const std::string& text) {
    Packets packets;
    for (const QByteArray& part : QByteArray::fromStdString(text).split(',')) {
        packets.push_back(bytes(part.toStdString()));
    }
    return packets.size() == 1 && packets[0].empty() ? Packets{} : packets;
}
Packet join(const Packets& packets) {
    Packet joined;
    for (const Packet& p : packets) {
        joined.insert(joined.end(), p.begin(), p.end());
    }
    return joined;
}
// The VISCA over IP header: payload type, length, sequence number.
Packet header(std::uint16_t type, std::size_t length, quint32 sequence) {
    Packet h;
    for (const quint32 value : {quint32{type}, quint32(length), sequence >> 16, sequence}) {
        h.push_back(static_cast<std::uint8_t>(value >> 8));
        h.push_back(static_cast<std::uint8_t>(value));
    }
    return h;
}

const Packet kHome = bytes("81 01 06 04 FF");
// Pan 10.00, tilt -5.00: 1000 and -500 hundredths.
const Packet kAbsolute = bytes("81 01 06 02 18 14 00 03 0E 08 0F 0E 00 0C FF");
const Packet kDriveRight = bytes("81 01 06 01 18 14 02 03 FF");
const Packet kPositionInquiry = bytes("81 09 06 12 FF");
const Packets kDone1 = hex("90 41 FF, 90 51 FF");

class ViscaBridgeTest : public SessionTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(connect());
        ASSERT_TRUE(bridge.listen(QHostAddress::LocalHost, 0));
        ASSERT_TRUE(udp.bind(QHostAddress::LocalHost, 0));
        QObject::connect(&bridge, &ViscaBridge::commandHandled,
                         [this](const QString& what) { notes << what; });
    }

    // A packet under its payload type with the next sequence number.
    void send(const Packet& packet) {
        const std::uint16_t type = packet.at(1) == 0x09 ? 0x0110 : 0x0100;
        sendRaw(join({header(type, packet.size(), ++sequence), packet}));
    }
    void sendRaw(const Packet& datagram) {
        udp.writeDatagram(reinterpret_cast<const char*>(datagram.data()),
                          static_cast<qint64>(datagram.size()), QHostAddress::LocalHost,
                          bridge.serverPort());
    }
    // The datagrams that come back: `count` of them, or what came in a
    // moment when none are awaited.
    Packets datagrams(std::size_t count) {
        Packets got;
        runUntil(
            [&] {
                while (udp.hasPendingDatagrams()) {
                    const QByteArray data = udp.receiveDatagram().data();
                    got.emplace_back(data.begin(), data.end());
                }
                return count > 0 && got.size() >= count;
            },
            count > 0 ? 5000 : 100);
        return got;
    }
    // The replies to the last packet, each under the reply's payload type
    // with that packet's sequence number.
    Packets replies(std::size_t count) {
        Packets packets;
        for (const Packet& datagram : datagrams(count)) {
            const auto payload = datagram.begin() + (datagram.size() < 8 ? 0 : 8);
            EXPECT_EQ(Packet(datagram.begin(), payload),
                      header(0x0111, datagram.size() - 8, sequence));
            packets.emplace_back(payload, datagram.end());
        }
        return packets;
    }

    // The jog: pan speed, clockwise, tilt speed, up (a direction -1 while
    // its axis is at rest), zoom 1 and focus 1.
    using Jog = std::array<std::int64_t, 6>;
    Jog jog() {
        const JogState& j = session.jog();
        return {j.PanJogSpeed,      j.PanJogSpeed == 0 ? -1 : j.PanJogDirection,
                j.TiltJogSpeed,     j.TiltJogSpeed == 0 ? -1 : j.TiltJogDirection,
                j.LensJogSpeeds[0], j.LensJogSpeeds[1]};
    }
    static constexpr Jog kAtRest{0, -1, 0, -1, 0, 0};

    ViscaBridge bridge{session};
    // What the operator is told of each request.
    QStringList notes;
    QUdpSocket udp;
    quint32 sequence = 0x00FFFFF0;  // every byte of the number carried
};

TEST_F(ViscaBridgeTest, EachCommandIsAnsweredAsTheCameraAnswersItAndSendsItsMessage) {
    namespace delta = vocab::delta_move;
    namespace store = vocab::store_preset;
    struct Move {
        const char* request;
        std::vector<Byte> message;
    };
    const Move moves[] = {
        {"81 01 06 02 18 14 00 03 0E 08 0F 0E 00 0C FF", absolute(1000, -500)},
        {"81 01 06 03 01 01 0F 0F 00 06 00 00 06 04 FF",
         test::message<vocab::DeltaMove>({{delta::kPan, -250}, {delta::kTilt, 100}})},
        {"81 01 06 04 FF", test::message<vocab::MoveToHome>()},
        {"81 01 04 3F 01 05 FF",
         test::message<vocab::StoreCurrentPosition>({{vocab::store_current_position::kPreset, 5}})},
        {"81 01 04 3F 02 1E FF",
         test::message<vocab::GoToPreset>({{vocab::go_to_preset::kPreset, 30}})},
        {"81 01 04 3F 00 07 FF", test::message<vocab::StorePreset>(
                                     {{store::kPreset, 7}, {store::kPan, 0}, {store::kTilt, 0}})},
    };
    for (const Move& move : moves) {
        SCOPED_TRACE(move.request);
        const std::size_t mark = line.frames().size();
        send(bytes(move.request));
        EXPECT_EQ(replies(2), kDone1);
        EXPECT_EQ(commandsSince(mark), Messages{move.message});
    }
    // Answered at once; nothing goes down the line.
    const std::pair<const char*, const char*> answered[] = {
        {"81 01 04 3F 02 1F FF", "90 61 41 FF"},  // memory 31, the home position
        {"81 01 06 02 18 14 04 06 05 00 00 00 00 00 FF", "90 61 41 FF"},  // pan 180.00
        {"81 01 06 01 18 14 03 09 FF", "90 60 02 FF"},                    // tilt way 09
        {"81 01 06 01 19 14 02 03 FF", "90 60 02 FF"},                    // pan speed 0x19
        {"81 01 06 01 18 19 03 01 FF", "90 60 02 FF"},                    // tilt speed 0x19
        {"81 01 04 07 28 FF", "90 60 02 FF"},                             // zoom speed 8
        {"81 01 04 08 45 FF", "90 60 02 FF"},                             // focus byte 45
        {"81 01 04 3F 03 01 FF", "90 60 02 FF"},                          // memory action 3
        {"81 01 06 02 18 14 00 10 00 00 00 00 00 00 FF", "90 60 02 FF"},  // not a nibble
        {"81 09 06 04 FF", "90 60 02 FF"},                        // an inquiry not answered here
        {"81 01 06 04", "90 60 02 FF"},                           // no terminator
        {"81 01 04 3F 02 FF FF", "90 60 02 FF"},                  // a terminator inside
        {"01 01 06 04 FF", "90 60 02 FF"},                        // a first byte that is no header
        {"81 31 FF", "90 60 02 FF"},                              // three bytes, but no cancel
        {"82 01 04 3F 02 01 00 00 00 00 00 00 00 00 00 FF", ""},  // another camera's, 16 bytes
        {"80 01 06 04 FF", "90 60 02 FF"},                        // no camera 0
        {"81 23 FF", "90 63 05 FF"},                              // cancel with nothing running
        {"81 01 00 01 FF", "90 50 FF"},                           // IF_Clear
        {"88 01 00 01 FF", "88 01 00 01 FF"},
        {"88 30 01 FF", "88 30 02 FF"},  // address set
        {"88 30 00 FF", "90 60 02 FF"},
        {"88 30 08 FF", "90 60 02 FF"},
    };
    const std::size_t mark = line.frames().size();
    for (const auto& [request, reply] : answered) {
        SCOPED_TRACE(request);
        send(bytes(request));
        EXPECT_EQ(replies(hex(reply).size()), hex(reply));
    }
    EXPECT_TRUE(commandsSince(mark).empty());
}

TEST_F(ViscaBridgeTest, InquiriesAnswerThePositionAndZoomAndRelativeMovesLandFromThePosition) {
    send(kAbsolute);
    EXPECT_EQ(replies(2), kDone1);
    ASSERT_TRUE(arrives(10.0, -5.0));
    send(kPositionInquiry);
    EXPECT_EQ(replies(1), hex("90 50 00 03 0E 08 0F 0E 00 0C FF"));
    // From there pan 165.00 and tilt -81.50 land past the soft limits.
    const std::size_t mark = line.frames().size();
    for (const char* relative : {"81 01 06 03 18 14 04 00 07 04 00 00 00 00 FF",
                                 "81 01 06 03 18 14 00 00 00 00 0E 00 02 0A FF"}) {
        send(bytes(relative));
        EXPECT_EQ(replies(1), hex("90 61 41 FF"));
    }
    EXPECT_TRUE(commandsSince(mark).empty());
    // The virtual unit's zoom rests half way: 128 of 255.
    ASSERT_EQ(session.status().Lens[0], 128);
    send(bytes("81 09 04 47 FF"));
    EXPECT_EQ(replies(1), hex("90 50 02 00 02 00 FF"));
    // A unit reading past the 16 bits (offsets of -400 and 400): the nearest ends.
    unit.state().settings.panOffset = -40000;
    unit.state().settings.tiltOffset = 40000;
    ASSERT_TRUE(arrives(-390.0, 395.0));
    send(kPositionInquiry);
    EXPECT_EQ(replies(1), hex("90 50 08 00 00 00 07 0F 0F 0F FF"));
}

TEST_F(ViscaBridgeTest, DrivesSteerTheJogWithPanTiltZoomAndFocusTogether) {
    const std::size_t start = line.frames().size();
    const Byte in5 = lensJogByte(95);
    const Byte near = lensJogByte(-64);
    const Byte far = lensJogByte(64);
    const Byte near7 = lensJogByte(-127);
    const std::pair<const char*, Jog> rows[] = {
        {"81 01 06 01 18 14 02 03 FF", {255, 1, 0, -1, 0, 0}},    // right, full speed
        {"81 01 06 01 0C 0A 01 01 FF", {128, 0, 128, 1, 0, 0}},   // up-left, half speed
        {"81 01 06 01 01 01 02 02 FF", {11, 1, 13, 0, 0, 0}},     // down-right, slowest
        {"81 01 06 01 05 18 03 01 FF", {0, -1, 255, 1, 0, 0}},    // up at tilt speed 0x18
        {"81 01 04 07 25 FF", {0, -1, 255, 1, in5, 0}},           // zoom tele at 5
        {"81 01 04 08 02 FF", {0, -1, 255, 1, in5, far}},         // focus far
        {"81 01 04 08 37 FF", {0, -1, 255, 1, in5, near7}},       // focus near at 7
        {"81 01 04 08 03 FF", {0, -1, 255, 1, in5, near}},        // focus near
        {"81 01 04 07 00 FF", {0, -1, 255, 1, 0, near}},          // zoom stop
        {"81 01 06 01 00 00 03 03 FF", {0, -1, 0, -1, 0, near}},  // pan-tilt stop
        {"81 01 04 08 00 FF", kAtRest},                           // focus stop
    };
    for (const auto& [request, want] : rows) {
        SCOPED_TRACE(request);
        send(bytes(request));
        EXPECT_EQ(replies(2), kDone1);
        EXPECT_EQ(jog(), want);
    }
    // The pan-tilt reset rides on the next jog message.
    const std::size_t mark = line.frames().size();
    send(bytes("81 01 06 05 FF"));
    EXPECT_EQ(replies(2), kDone1);
    EXPECT_TRUE(runUntil(
        [&] {
            return std::any_of(line.frames().begin() + static_cast<std::ptrdiff_t>(mark),
                               line.frames().end(), [](const RecordingPeer::Frame& f) {
                                   return f.message.at(0) == vocab::JogMessage::kCode &&
                                          test::isSet(f.message, vocab::jog::kReset);
                               });
        },
        2000));
    EXPECT_EQ(notes, QStringList({"pan-tilt right at 24/0", "pan-tilt up-left at 12/10",
                                  "pan-tilt down-right at 1/1", "pan-tilt up at 0/24",
                                  "zoom tele at 5", "focus far", "focus near at 7", "focus near",
                                  "zoom stop", "pan-tilt stop", "focus stop", "pan-tilt reset"}));
    EXPECT_EQ(stopsSince(start), 0) << "a stop with no move of the bridge's running";
}

TEST_F(ViscaBridgeTest, ADriveStopsWhenItsClientFallsSilentAndItsInquiriesKeepItGoing) {
    bridge.setRefreshMs(150);
    send(kDriveRight);
    EXPECT_EQ(replies(2), kDone1);
    for (int i = 0; i < 4; ++i) {
        runUntil([] { return false; }, 75);
        send(kPositionInquiry);
        EXPECT_EQ(replies(1).size(), 1U);
    }
    EXPECT_EQ(jog()[0], 255);
    // Another client's inquiries do not.
    QUdpSocket other;
    ASSERT_TRUE(other.bind(QHostAddress::LocalHost, 0));
    const QByteArray poll = QByteArray::fromHex("011000050000000181090612FF");
    EXPECT_TRUE(runUntil(
        [&] {
            other.writeDatagram(poll, QHostAddress::LocalHost, bridge.serverPort());
            nextJogs(1);
            return jog() == kAtRest;
        },
        1000));
    // The client is told, and the jog is no longer its own.
    send(bytes("81 01 00 01 FF"));
    EXPECT_EQ(replies(1), hex("90 50 FF"));
    EXPECT_TRUE(notes.contains("jog stopped: the client fell silent"));
    EXPECT_FALSE(notes.contains("jog stopped: interface clear"));
}

TEST_F(ViscaBridgeTest, ASilentUdpClientIsForgottenUnlessItDrivesTheJog) {
    bridge.setForgetUdpClientMs(100);
    bridge.setRefreshMs(0);
    send(kDriveRight);
    EXPECT_EQ(replies(2), kDone1);
    runUntil([] { return false; }, 200);
    EXPECT_EQ(bridge.clientCount(), 1);
    send(bytes("81 01 06 01 00 00 03 03 FF"));
    EXPECT_EQ(replies(2), kDone1);
    EXPECT_TRUE(runUntil([&] { return bridge.clientCount() == 0; }, 1000));
}

TEST_F(ViscaBridgeTest, WhileTheOperatorJogsMovesAndDrivesAreNotExecutableAndNothingIsSent) {
    JogDemand keys;
    keys.pan = {90, false};
    session.jogSources().apply(JogSource::Keyboard, keys);
    const std::size_t mark = line.frames().size();
    for (const Packet& request : {kAbsolute, kHome, kDriveRight, bytes("81 01 04 3F 02 04 FF")}) {
        send(request);
        EXPECT_EQ(replies(1), hex("90 61 41 FF"));
    }
    EXPECT_EQ(jog(), (Jog{90, 0, 0, -1, 0, 0}));
    EXPECT_TRUE(commandsSince(mark).empty());
    // A stop is always taken, and leaves the operator's jog alone.
    send(bytes("81 01 06 01 00 00 03 03 FF"));
    EXPECT_EQ(replies(2), kDone1);
    EXPECT_EQ(jog(), (Jog{90, 0, 0, -1, 0, 0}));
}

TEST_F(ViscaBridgeTest, MalformedDatagramsAndRepeatedSequenceNumbersGetTheHeadersErrors) {
    const std::pair<std::string, const char*> rows[] = {
        {"01 00 00", "02 00 00 02 00 00 00 00 0F 02"},                 // shorter than a header
        {"01 00 00 00 00 00 00 06", "02 00 00 02 00 00 00 06 0F 02"},  // no payload
        {"01 00 00 05 00 00 00 07 81 01 06 04", "02 00 00 02 00 00 00 07 0F 02"},
        {"01 11 00 05 00 00 00 08 81 01 06 04 FF", "02 00 00 02 00 00 00 08 0F 02"},  // a reply
        {"01 00 00 05 00 00 00 09 81 09 06 12 FF", "02 00 00 02 00 00 00 09 0F 02"},  // inquiry
        {"02 00 00 01 00 00 00 09 05", "02 00 00 02 00 00 00 09 0F 02"},  // unknown control
        {"02 00 00 01 00 00 00 0A 01", "02 01 00 01 00 00 00 0A 01"},     // reset
        {"01 00 00 05 00 00 00 0A 81 01 06 04 FF",
         "01 11 00 03 00 00 00 0A 90 41 FF, 01 11 00 03 00 00 00 0A 90 51 FF"},
        {"01 00 00 05 00 00 00 0A 81 01 06 04 FF", "02 00 00 02 00 00 00 0A 0F 01"},  // again
    };
    const std::size_t mark = line.frames().size();
    for (const auto& [datagram, reply] : rows) {
        SCOPED_TRACE(datagram);
        sendRaw(bytes(datagram));
        EXPECT_EQ(datagrams(hex(reply).size()), hex(reply));
    }
    // Seventeen bytes of payload.
    sendRaw(join({bytes("01 00 00 11 00 00 00 0B"), Packet(16, 0x01), bytes("FF")}));
    EXPECT_EQ(datagrams(1), hex("02 00 00 02 00 00 00 0B 0F 02"));
    EXPECT_EQ(commandsSince(mark), Messages{test::message<vocab::MoveToHome>()});
}

TEST_F(ViscaBridgeTest, PlainViscaOverTcpInPiecesWithSocketsCancelAndAClientThatGoesAway) {
    bridge.setRefreshMs(0);
    QTcpSocket tcp;
    tcp.connectToHost(QHostAddress::LocalHost, bridge.serverPort());
    ASSERT_TRUE(runUntil([&] { return tcp.state() == QAbstractSocket::ConnectedState; }, 2000));
    const auto write = [&](const Packet& b) {
        tcp.write(reinterpret_cast<const char*>(b.data()), static_cast<qint64>(b.size()));
    };
    // The next `count` bytes, however the connection cut them up; what came
    // beyond them waits for the next read. With 0, all that comes in 150 ms.
    Packet pending;
    const auto read = [&](std::size_t count) {
        runUntil(
            [&] {
                const QByteArray data = tcp.readAll();
                pending.insert(pending.end(), data.begin(), data.end());
                return count > 0 && pending.size() >= count;
            },
            count > 0 ? 5000 : 150);
        const std::size_t taken = count > 0 ? std::min(count, pending.size()) : pending.size();
        Packet got(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(taken));
        pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(taken));
        return got;
    };

    std::size_t mark = line.frames().size();
    write(Packet(kAbsolute.begin(), kAbsolute.begin() + 6));
    runUntil([] { return false; }, 50);
    write(Packet(kAbsolute.begin() + 6, kAbsolute.end()));
    EXPECT_EQ(read(6), join(kDone1));
    EXPECT_EQ(commandsSince(mark), Messages{absolute(1000, -500)});

    // Two moves take both sockets; a third and a zoom drive find the buffer
    // full. A cancelled move is stopped and its completion never comes.
    write(join({kHome, kHome, kHome, bytes("81 01 04 07 27 FF")}));
    EXPECT_EQ(read(14), bytes("90 41 FF 90 42 FF 90 60 03 FF 90 60 03 FF"));
    EXPECT_TRUE(notes.contains("zoom tele at 7: command buffer full"));
    EXPECT_EQ(read(6), bytes("90 51 FF 90 52 FF"));
    mark = line.frames().size();
    write(join({kHome, bytes("81 21 FF")}));
    EXPECT_EQ(read(7), bytes("90 41 FF 90 61 04 FF"));
    EXPECT_TRUE(runUntil([&] { return stopsSince(mark) > 0; }, 2000));
    EXPECT_TRUE(read(0).empty());
    // So is one stopped by a pan-tilt stop.
    mark = line.frames().size();
    write(join({kHome, bytes("81 01 06 01 00 00 03 03 FF")}));
    EXPECT_EQ(read(9), bytes("90 41 FF 90 42 FF 90 52 FF"));
    EXPECT_TRUE(runUntil([&] { return stopsSince(mark) > 0; }, 2000));
    EXPECT_EQ(read(0), bytes("90 51 FF"));

    write(kDriveRight);
    EXPECT_EQ(read(6), join(kDone1));
    EXPECT_EQ(jog()[0], 255);
    EXPECT_EQ(bridge.clientCount(), 1);
    tcp.close();
    EXPECT_TRUE(runUntil([&] { return jog() == kAtRest; }, 2000));
    EXPECT_EQ(bridge.clientCount(), 0);
}

}  // namespace
}  // namespace halvex::testing
