// The VISCA bridge on real sockets: a controller's packets as the VISCA
// command lists give them, the camera's replies byte for byte, and what
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

const Packet kAck1{0x90, 0x41, 0xFF};
const Packet kDone1{0x90, 0x51, 0xFF};
const Packet kNotExecutable1{0x90, 0x61, 0x41, 0xFF};
const Packet kSyntaxError{0x90, 0x60, 0x02, 0xFF};
const Packet kHome{0x81, 0x01, 0x06, 0x04, 0xFF};
// Absolute position pan 10.00, tilt -5.00 (1000 and -500 hundredths).
const Packet kAbsolute{0x81, 0x01, 0x06, 0x02, 0x18, 0x14, 0x00, 0x03,
                       0x0E, 0x08, 0x0F, 0x0E, 0x00, 0x0C, 0xFF};
const Packet kDriveRight{0x81, 0x01, 0x06, 0x01, 0x18, 0x14, 0x02, 0x03, 0xFF};
const Packet kPositionInquiry{0x81, 0x09, 0x06, 0x12, 0xFF};

Packet join(std::initializer_list<Packet> packets) {
    Packet joined;
    for (const Packet& p : packets) {
        joined.insert(joined.end(), p.begin(), p.end());
    }
    return joined;
}

class ViscaBridgeTest : public SessionTest {
  protected:
    void SetUp() override {
        ASSERT_TRUE(connect());
        ASSERT_TRUE(bridge.listen(QHostAddress::LocalHost, 0))
            << bridge.errorString().toStdString();
        ASSERT_TRUE(udp.bind(QHostAddress::LocalHost, 0));
    }

    // A VISCA packet in a datagram under its payload type, with the next
    // sequence number.
    void send(const Packet& packet) {
        ++sequence;
        const std::uint8_t type = packet.size() > 1 && packet[1] == 0x09 ? 0x10 : 0x00;
        Packet datagram{0x01,
                        type,
                        0x00,
                        static_cast<std::uint8_t>(packet.size()),
                        static_cast<std::uint8_t>(sequence >> 24),
                        static_cast<std::uint8_t>(sequence >> 16),
                        static_cast<std::uint8_t>(sequence >> 8),
                        static_cast<std::uint8_t>(sequence)};
        sendRaw(join({datagram, packet}));
    }
    void sendRaw(const Packet& datagram) {
        udp.writeDatagram(reinterpret_cast<const char*>(datagram.data()),
                          static_cast<qint64>(datagram.size()), QHostAddress::LocalHost,
                          bridge.serverPort());
    }
    // The datagrams that come back: `count` of them, or what came in `ms`.
    Packets datagrams(std::size_t count, int ms = 5000) {
        Packets got;
        runUntil(
            [&] {
                while (udp.hasPendingDatagrams()) {
                    const QByteArray data = udp.receiveDatagram().data();
                    got.emplace_back(data.begin(), data.end());
                }
                return count > 0 && got.size() >= count;
            },
            count > 0 ? ms : 200);
        return got;
    }
    // The VISCA replies to the last packet sent, each checked to come under
    // the reply's payload type with its sequence number.
    Packets replies(std::size_t count) {
        Packets packets;
        for (const Packet& datagram : datagrams(count)) {
            const Packet header{0x01,
                                0x11,
                                0x00,
                                static_cast<std::uint8_t>(datagram.size() - 8),
                                static_cast<std::uint8_t>(sequence >> 24),
                                static_cast<std::uint8_t>(sequence >> 16),
                                static_cast<std::uint8_t>(sequence >> 8),
                                static_cast<std::uint8_t>(sequence)};
            EXPECT_GE(datagram.size(), 8U);
            EXPECT_EQ(Packet(datagram.begin(), datagram.begin() + 8), header);
            packets.emplace_back(datagram.begin() + 8, datagram.end());
        }
        return packets;
    }

    // The next jog message: pan speed, clockwise, tilt speed, up (a
    // direction -1 while its axis is at rest), zoom 1 and focus 1.
    using Jog = std::array<std::int64_t, 6>;
    Jog nextJog() {
        namespace jog = vocab::jog;
        const std::size_t mark = line.frames().size();
        Jog seen{-1, -1, -1, -1, -1, -1};
        runUntil(
            [&] {
                for (std::size_t i = mark; i < line.frames().size(); ++i) {
                    const auto& m = line.frames()[i].message;
                    if (m.at(0) == vocab::JogMessage::kCode) {
                        const auto pan = vocab::get(m, jog::kPanSpeed);
                        const auto tilt = vocab::get(m, jog::kTiltSpeed);
                        seen = {pan,
                                pan == 0 ? -1 : test::isSet(m, jog::kPanCw),
                                tilt,
                                tilt == 0 ? -1 : test::isSet(m, jog::kTiltUp),
                                vocab::get(m, jog::kLensJog[0]),
                                vocab::get(m, jog::kLensJog[1])};
                        return true;
                    }
                }
                return false;
            },
            2000);
        return seen;
    }
    static constexpr Jog kAtRest{0, -1, 0, -1, 0, 0};

    ViscaBridge bridge{session};
    QUdpSocket udp;
    quint32 sequence = 0x00FFFFF0;  // every byte of the number carried
};

TEST_F(ViscaBridgeTest, EachCommandIsAnsweredAsTheCameraAnswersItAndSendsItsMessage) {
    namespace move = vocab::absolute_move;
    namespace delta = vocab::delta_move;
    namespace store = vocab::store_preset;
    struct Row {
        const char* what;
        Packet request;
        Packets replies;
        Messages line;
    };
    const Row rows[] = {
        {"absolute position", kAbsolute, {kAck1, kDone1}, {absolute(1000, -500)}},
        {"relative position -2.50/+1.00",
         {0x81, 0x01, 0x06, 0x03, 0x01, 0x01, 0x0F, 0x0F, 0x00, 0x06, 0x00, 0x00, 0x06, 0x04, 0xFF},
         {kAck1, kDone1},
         {test::message<vocab::DeltaMove>({{delta::kPan, -250}, {delta::kTilt, 100}})}},
        {"home", kHome, {kAck1, kDone1}, {test::message<vocab::MoveToHome>()}},
        {"memory set 5",
         {0x81, 0x01, 0x04, 0x3F, 0x01, 0x05, 0xFF},
         {kAck1, kDone1},
         {test::message<vocab::StoreCurrentPosition>(
             {{vocab::store_current_position::kPreset, 5}})}},
        {"memory recall 30",
         {0x81, 0x01, 0x04, 0x3F, 0x02, 0x1E, 0xFF},
         {kAck1, kDone1},
         {test::message<vocab::GoToPreset>({{vocab::go_to_preset::kPreset, 30}})}},
        {"memory reset 7",
         {0x81, 0x01, 0x04, 0x3F, 0x00, 0x07, 0xFF},
         {kAck1, kDone1},
         {test::message<vocab::StorePreset>(
             {{store::kPreset, 7}, {store::kPan, 0}, {store::kTilt, 0}})}},
        {"memory 31 is the home position",
         {0x81, 0x01, 0x04, 0x3F, 0x02, 0x1F, 0xFF},
         {kNotExecutable1},
         {}},
        {"pan 180.00 outside the soft limits",
         {0x81, 0x01, 0x06, 0x02, 0x18, 0x14, 0x04, 0x06, 0x05, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF},
         {kNotExecutable1},
         {}},
        {"a drive's tilt way 09",
         {0x81, 0x01, 0x06, 0x01, 0x18, 0x14, 0x03, 0x09, 0xFF},
         {kSyntaxError},
         {}},
        {"a drive's pan speed 0x19",
         {0x81, 0x01, 0x06, 0x01, 0x19, 0x14, 0x02, 0x03, 0xFF},
         {kSyntaxError},
         {}},
        {"zoom variable speed 8", {0x81, 0x01, 0x04, 0x07, 0x28, 0xFF}, {kSyntaxError}, {}},
        {"a position byte that is no nibble",
         {0x81, 0x01, 0x06, 0x02, 0x18, 0x14, 0x00, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xFF},
         {kSyntaxError},
         {}},
        {"an inquiry not answered here", {0x81, 0x09, 0x04, 0x00, 0xFF}, {kSyntaxError}, {}},
        {"no terminator", {0x81, 0x01, 0x06, 0x04}, {kSyntaxError}, {}},
        {"another camera's", {0x82, 0x01, 0x06, 0x04, 0xFF}, {}, {}},
        {"cancel with nothing running", {0x81, 0x21, 0xFF}, {{0x90, 0x61, 0x05, 0xFF}}, {}},
        {"cancel socket 3", {0x81, 0x23, 0xFF}, {{0x90, 0x63, 0x05, 0xFF}}, {}},
        {"IF_Clear", {0x81, 0x01, 0x00, 0x01, 0xFF}, {{0x90, 0x50, 0xFF}}, {}},
        {"IF_Clear broadcast",
         {0x88, 0x01, 0x00, 0x01, 0xFF},
         {{0x88, 0x01, 0x00, 0x01, 0xFF}},
         {}},
        {"address set", {0x88, 0x30, 0x01, 0xFF}, {{0x88, 0x30, 0x02, 0xFF}}, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const std::size_t mark = line.frames().size();
        send(row.request);
        EXPECT_EQ(replies(row.replies.size()), row.replies);
        EXPECT_EQ(commandsSince(mark), row.line);
    }
    // Each reply goes back to the client's own address and port.
    QUdpSocket other;
    ASSERT_TRUE(other.bind(QHostAddress::LocalHost, 0));
    other.writeDatagram("\x01\x00\x00\x03\x00\x00\x00\x01\x81\x21\xFF", 11, QHostAddress::LocalHost,
                        bridge.serverPort());
    EXPECT_TRUE(runUntil([&] { return other.hasPendingDatagrams(); }, 2000));
    EXPECT_EQ(bridge.clientCount(), 2);
    EXPECT_TRUE(datagrams(0).empty());
}

TEST_F(ViscaBridgeTest, InquiriesAnswerThePositionAndZoomInTheBridgesUnits) {
    send(kAbsolute);
    EXPECT_EQ(replies(2), (Packets{kAck1, kDone1}));
    ASSERT_TRUE(arrives(10.0, -5.0));
    send(kPositionInquiry);
    EXPECT_EQ(replies(1),
              (Packets{{0x90, 0x50, 0x00, 0x03, 0x0E, 0x08, 0x0F, 0x0E, 0x00, 0x0C, 0xFF}}));
    // The virtual unit's zoom rests half way: 128 of 255.
    ASSERT_EQ(session.status().Lens[0], 128);
    send({0x81, 0x09, 0x04, 0x47, 0xFF});
    EXPECT_EQ(replies(1), (Packets{{0x90, 0x50, 0x02, 0x00, 0x02, 0x00, 0xFF}}));
}

TEST_F(ViscaBridgeTest, DrivesSteerTheJogWithPanTiltZoomAndFocusTogether) {
    struct Row {
        const char* what;
        Packet request;
        Jog jog;
    };
    const Byte zoomIn = lensJogByte(127);
    const Byte focusNear = lensJogByte(-64);
    const Row rows[] = {
        {"right, full speed", kDriveRight, {255, 1, 0, -1, 0, 0}},
        {"up-left, half speed",
         {0x81, 0x01, 0x06, 0x01, 0x0C, 0x0A, 0x01, 0x01, 0xFF},
         {128, 0, 128, 1, 0, 0}},
        {"down-right, slowest",
         {0x81, 0x01, 0x06, 0x01, 0x01, 0x01, 0x02, 0x02, 0xFF},
         {11, 1, 13, 0, 0, 0}},
        {"up at tilt speed 0x17",
         {0x81, 0x01, 0x06, 0x01, 0x05, 0x17, 0x03, 0x01, 0xFF},
         {0, -1, 255, 1, 0, 0}},
        {"zoom tele at 7", {0x81, 0x01, 0x04, 0x07, 0x27, 0xFF}, {0, -1, 255, 1, zoomIn, 0}},
        {"focus near", {0x81, 0x01, 0x04, 0x08, 0x03, 0xFF}, {0, -1, 255, 1, zoomIn, focusNear}},
        {"zoom stop", {0x81, 0x01, 0x04, 0x07, 0x00, 0xFF}, {0, -1, 255, 1, 0, focusNear}},
        {"pan-tilt stop",
         {0x81, 0x01, 0x06, 0x01, 0x00, 0x00, 0x03, 0x03, 0xFF},
         {0, -1, 0, -1, 0, focusNear}},
        {"focus stop", {0x81, 0x01, 0x04, 0x08, 0x00, 0xFF}, kAtRest},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        send(row.request);
        EXPECT_EQ(replies(2), (Packets{kAck1, kDone1}));
        EXPECT_EQ(nextJog(), row.jog);
    }
    // The pan-tilt reset rides on the next jog message.
    const std::size_t mark = line.frames().size();
    send({0x81, 0x01, 0x06, 0x05, 0xFF});
    EXPECT_EQ(replies(2), (Packets{kAck1, kDone1}));
    EXPECT_TRUE(runUntil(
        [&] {
            const auto& frames = line.frames();
            return std::any_of(frames.begin() + static_cast<std::ptrdiff_t>(mark), frames.end(),
                               [](const RecordingPeer::Frame& f) {
                                   return f.message.at(0) == vocab::JogMessage::kCode &&
                                          test::isSet(f.message, vocab::jog::kReset);
                               });
        },
        2000));
}

TEST_F(ViscaBridgeTest, ADriveStopsWhenItsClientFallsSilentAndInquiriesKeepItGoing) {
    bridge.setRefreshMs(300);
    send(kDriveRight);
    EXPECT_EQ(replies(2), (Packets{kAck1, kDone1}));
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 6; ++i) {
        runUntil([] { return false; }, 100);
        send(kPositionInquiry);
        EXPECT_EQ(replies(1).size(), 1U);
    }
    EXPECT_EQ(nextJog()[0], 255) << "still driving after " << clock.elapsed() << " ms";
    clock.restart();
    EXPECT_TRUE(runUntil([&] { return nextJog() == kAtRest; }, 1000));
    EXPECT_LT(clock.elapsed(), 300 + 2 * kTickMs + 200);
}

TEST_F(ViscaBridgeTest, WhileTheOperatorJogsMovesAndDrivesAreNotExecutableAndNothingIsSent) {
    JogDemand keys;
    keys.pan = {90, false};
    session.jogSources().apply(JogSource::Keyboard, keys);
    const std::size_t mark = line.frames().size();
    for (const Packet& request :
         {kAbsolute, kHome, kDriveRight, Packet{0x81, 0x01, 0x04, 0x3F, 0x02, 0x04, 0xFF}}) {
        send(request);
        EXPECT_EQ(replies(1), Packets{kNotExecutable1});
    }
    EXPECT_EQ(nextJog(), (Jog{90, 0, 0, -1, 0, 0}));
    EXPECT_TRUE(commandsSince(mark).empty());
    // A stop is always taken, and the position may still be asked.
    send({0x81, 0x01, 0x06, 0x01, 0x00, 0x00, 0x03, 0x03, 0xFF});
    EXPECT_EQ(replies(2), (Packets{kAck1, kDone1}));
    send(kPositionInquiry);
    EXPECT_EQ(replies(1).size(), 1U);
    EXPECT_EQ(nextJog(), (Jog{90, 0, 0, -1, 0, 0}));
}

TEST_F(ViscaBridgeTest, MalformedDatagramsAndRepeatedSequenceNumbersGetTheHeadersErrors) {
    struct Row {
        const char* what;
        Packet datagram;
        Packets replies;
    };
    const Packet moved{0x01, 0x11, 0x00, 0x03, 0x00, 0x00, 0x00, 0x0A};
    const Row rows[] = {
        {"shorter than a header",
         {0x01, 0x00, 0x00},
         {{0x02, 0x00, 0x00, 0x02, 0, 0, 0, 0, 0x0F, 0x02}}},
        {"a length past the payload",
         {0x01, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x07, 0x81, 0x01, 0x06, 0x04},
         {{0x02, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x07, 0x0F, 0x02}}},
        {"seventeen bytes of payload",
         join({{0x01, 0x00, 0x00, 0x11, 0x00, 0x00, 0x00, 0x07}, Packet(16, 0x01), {0xFF}}),
         {{0x02, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x07, 0x0F, 0x02}}},
        {"a reply sent to the camera",
         join({{0x01, 0x11, 0x00, 0x05, 0x00, 0x00, 0x00, 0x08}, kHome}),
         {{0x02, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x08, 0x0F, 0x02}}},
        {"an inquiry as a command",
         join({{0x01, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x09}, kPositionInquiry}),
         {{0x02, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x09, 0x0F, 0x02}}},
        {"an unknown control command",
         {0x02, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x09, 0x05},
         {{0x02, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x09, 0x0F, 0x02}}},
        {"reset",
         {0x02, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x0A, 0x01},
         {{0x02, 0x01, 0x00, 0x01, 0x00, 0x00, 0x00, 0x0A, 0x01}}},
        {"home",
         join({{0x01, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x0A}, kHome}),
         {join({moved, kAck1}), join({moved, kDone1})}},
        {"home again under the same number",
         join({{0x01, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00, 0x0A}, kHome}),
         {{0x02, 0x00, 0x00, 0x02, 0x00, 0x00, 0x00, 0x0A, 0x0F, 0x01}}},
    };
    const std::size_t mark = line.frames().size();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        sendRaw(row.datagram);
        EXPECT_EQ(datagrams(row.replies.size()), row.replies);
    }
    EXPECT_EQ(commandsSince(mark), Messages{test::message<vocab::MoveToHome>()});
}

TEST_F(ViscaBridgeTest, PlainViscaOverTcpInPiecesWithSocketsCancelAndAClientThatGoesAway) {
    bridge.setRefreshMs(0);
    QTcpSocket tcp;
    tcp.connectToHost(QHostAddress::LocalHost, bridge.serverPort());
    ASSERT_TRUE(runUntil([&] { return tcp.state() == QAbstractSocket::ConnectedState; }, 2000));
    Packet stream;
    const auto write = [&](const Packet& bytes) {
        tcp.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
    };
    // `bytes` of replies, or what came in a moment when none are awaited.
    const auto read = [&](std::size_t bytes) {
        runUntil(
            [&] {
                const QByteArray got = tcp.readAll();
                stream.insert(stream.end(), got.begin(), got.end());
                return bytes > 0 && stream.size() >= bytes;
            },
            bytes > 0 ? 5000 : 300);
        return std::exchange(stream, {});
    };

    std::size_t mark = line.frames().size();
    write(Packet(kAbsolute.begin(), kAbsolute.begin() + 6));
    runUntil([] { return false; }, 50);
    write(Packet(kAbsolute.begin() + 6, kAbsolute.end()));
    EXPECT_EQ(read(6), join({kAck1, kDone1}));
    // A run past sixteen bytes is a syntax error and the stream goes on.
    write(join({Packet(20, 0x01), {0xFF}, kHome}));
    EXPECT_EQ(read(10), join({kSyntaxError, kAck1, kDone1}));
    EXPECT_EQ(commandsSince(mark),
              (Messages{absolute(1000, -500), test::message<vocab::MoveToHome>()}));

    // Two moves take both sockets; a third finds the buffer full. A
    // cancelled move is stopped and its completion never comes.
    write(join({kHome, kHome, kHome}));
    EXPECT_EQ(read(10), join({kAck1, {0x90, 0x42, 0xFF}, {0x90, 0x60, 0x03, 0xFF}}));
    EXPECT_EQ(read(6), join({kDone1, {0x90, 0x52, 0xFF}}));
    mark = line.frames().size();
    write(join({kHome, {0x81, 0x21, 0xFF}}));
    EXPECT_EQ(read(7), join({kAck1, {0x90, 0x61, 0x04, 0xFF}}));
    EXPECT_TRUE(runUntil([&] { return stopsSince(mark) > 0; }, 2000));
    EXPECT_TRUE(read(0).empty());

    // A unit that does not answer: the move is not executable.
    line.setConnected(false);
    write(kHome);
    EXPECT_EQ(read(7), join({kAck1, kNotExecutable1}));
    line.setConnected(true);

    ASSERT_TRUE(connect());
    write(kDriveRight);
    EXPECT_EQ(read(6), join({kAck1, kDone1}));
    EXPECT_EQ(nextJog()[0], 255);
    EXPECT_EQ(bridge.clientCount(), 1);
    tcp.close();
    EXPECT_TRUE(runUntil([&] { return nextJog() == kAtRest; }, 2000));
    EXPECT_EQ(bridge.clientCount(), 0);
}

}  // namespace
}  // namespace halvex::testing
