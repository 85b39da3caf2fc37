#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "protocol/com_port_session.h"
#include "protocol/network_device.h"
#include "protocol/rfc2217_port.h"
#include "protocol/tcp_port.h"
#include "protocol/telnet.h"
#include "protocol/vocabulary.h"
#include "tests/support/scripted_server.h"

namespace halvex::testing {
namespace {

using namespace telnet;
using Bytes = std::vector<Byte>;

// The line's bytes: framing and two codes.
constexpr int kFirmware = vocab::FirmwareRequest::kCode;
constexpr int kJog = vocab::JogMessage::kCode;

QByteArray bytes(std::initializer_list<int> values) {
    QByteArray out;
    for (int value : values) {
        out.append(static_cast<char>(value));
    }
    return out;
}

void writeAll(SerialPort& port, const QByteArray& data) {
    for (char value : data) {
        ASSERT_TRUE(port.writeByte(static_cast<Byte>(value)));
    }
}

struct Decoded {
    Bytes data;
    std::vector<Command> commands;
};

Decoded decodeInPieces(const Bytes& wire, std::size_t piece) {
    Decoder decoder;
    Decoded out;
    for (std::size_t at = 0; at < wire.size(); at += piece) {
        decoder.feed(wire.data() + at, std::min(piece, wire.size() - at), out.data, out.commands);
    }
    return out;
}

// What a device server sends: data with a doubled 0xFF, negotiation, a com
// port answer whose speed holds 0xFF, and commands without an option.
const Bytes kServerStream = {0x06, kIac, kIac, 0x31, kIac, kWill, kBinary, kIac, kSb,  kComPort,
                             101,  0x00, 0x00, kIac, kIac, 0x10,  kIac,    kSe,  0x03, kIac,
                             241,  kIac, 249,  0x0D, 0x00, kIac,  kDont,   kEcho};

TEST(TelnetDecoder, SplitsDataFromCommandsWhereverTheReadsBreak) {
    const Decoded whole = decodeInPieces(kServerStream, kServerStream.size());
    EXPECT_EQ(whole.data, (Bytes{0x06, 0xFF, 0x31, 0x03, 0x0D, 0x00}));
    const std::vector<Command> expected = {{kWill, kBinary, {}},
                                           {kSb, kComPort, {101, 0x00, 0x00, 0xFF, 0x10}},
                                           {241, 0, {}},
                                           {249, 0, {}},
                                           {kDont, kEcho, {}}};
    EXPECT_EQ(whole.commands, expected);
    for (std::size_t piece = 1; piece < kServerStream.size(); ++piece) {
        const Decoded split = decodeInPieces(kServerStream, piece);
        EXPECT_EQ(split.data, whole.data) << "pieces of " << piece;
        EXPECT_EQ(split.commands, whole.commands) << "pieces of " << piece;
    }
}

TEST(TelnetDecoder, ABrokenOffOrOverlongSubnegotiationDoesNotSwallowTheRest) {
    // IAC WILL inside a subnegotiation ends it: the WILL counts, the
    // unfinished subnegotiation does not.
    Decoded broken = decodeInPieces({kIac, kSb, kComPort, 101, kIac, kWill, kEcho, 0x42}, 3);
    EXPECT_EQ(broken.commands, (std::vector<Command>{{kWill, kEcho, {}}}));
    EXPECT_EQ(broken.data, (Bytes{0x42}));

    Bytes overlong = {kIac, kSb, kComPort};
    overlong.insert(overlong.end(), 1000, 0x55);
    overlong.insert(overlong.end(), {kIac, kSe, 0x06});
    const Decoded kept = decodeInPieces(overlong, 7);
    ASSERT_EQ(kept.commands.size(), 1u);
    EXPECT_EQ(kept.commands[0].payload.size(), Decoder::kMaxPayload);
    EXPECT_EQ(kept.data, (Bytes{0x06}));
}

TEST(TelnetEncoder, Doubles0xFFInDataAndInSubnegotiations) {
    Bytes wire;
    for (Byte value : {0x02, 0xFF, 0x03}) {
        appendData(value, wire);
    }
    appendSubnegotiation(kComPort, {1, 0x00, 0x00, 0xFF, 0xFF}, wire);
    EXPECT_EQ(wire, (Bytes{0x02, 0xFF, 0xFF, 0x03, kIac, kSb, kComPort, 1, 0x00, 0x00, 0xFF, 0xFF,
                           0xFF, 0xFF, kIac, kSe}));
}

Bytes receive(ComPortSession& session, const Bytes& fromServer) {
    Bytes replies;
    Bytes carried;
    session.receive(fromServer.data(), fromServer.size(), carried, replies);
    return replies;
}

Bytes portSettings(std::uint32_t baud) {
    Bytes wire;
    appendSubnegotiation(kComPort,
                         {1, static_cast<Byte>(baud >> 24), static_cast<Byte>(baud >> 16),
                          static_cast<Byte>(baud >> 8), static_cast<Byte>(baud)},
                         wire);
    for (const Bytes& setting : {Bytes{2, 8}, Bytes{3, 1}, Bytes{4, 1}, Bytes{5, 1}}) {
        appendSubnegotiation(kComPort, setting, wire);
    }
    return wire;
}

TEST(ComPortSession, AnswersADeviceServerOpeningAsAClientShouldAndSetsThePort) {
    ComPortSession session(115200);
    EXPECT_EQ(session.opening(),
              (Bytes{kIac, kWill, kComPort, kIac, kWill, kBinary, kIac, kDo, kBinary}));
    EXPECT_FALSE(session.settled());

    // What ser2net sends when a client connects to its RFC 2217 port.
    const Bytes serverOpening = {kIac, kWill, kSuppressGoAhead,
                                 kIac, kDo,   kSuppressGoAhead,
                                 kIac, kWill, kEcho,
                                 kIac, kDont, kEcho,
                                 kIac, kDo,   kBinary,
                                 kIac, kWill, kBinary,
                                 kIac, kDo,   kComPort};
    Bytes expected = {kIac,  kDo,  kSuppressGoAhead, kIac, kWill, kSuppressGoAhead, kIac,
                      kDont, kEcho};
    const Bytes settings = portSettings(115200);
    expected.insert(expected.end(), settings.begin(), settings.end());
    EXPECT_EQ(receive(session, serverOpening), expected);
    EXPECT_TRUE(session.settled());

    // The same again: what is on stays on without an answer, so negotiation
    // cannot loop; asking again for what was refused is refused again.
    EXPECT_EQ(receive(session, serverOpening), (Bytes{kIac, kDont, kEcho}));
    // Options the console has no use for are refused on either side; a
    // server that turns one of ours off is told it is off.
    EXPECT_EQ(receive(session, {kIac, kDo, 24, kIac, kWill, 31, kIac, kDont, kBinary}),
              (Bytes{kIac, kWont, 24, kIac, kDont, 31, kIac, kWont, kBinary}));

    // What the server says of the settings it keeps is told by the port
    // (below).
}

TEST(NetworkDevice, DeviceStringsNameAKindAHostAndAPort) {
    struct Row {
        const char* device;
        PortKind kind;
        const char* host;
        int port;
    };
    for (const Row& row :
         {Row{"socket://10.0.0.5:4001", PortKind::RawTcp, "10.0.0.5", 4001},
          Row{"rfc2217://ds-mast_2.site:2001", PortKind::Rfc2217, "ds-mast_2.site", 2001},
          Row{"SOCKET://unit:1", PortKind::RawTcp, "unit", 1},
          Row{"rfc2217://[fd00::5]:65535", PortKind::Rfc2217, "fd00::5", 65535}}) {
        const auto parsed = parseNetworkDevice(QString::fromLatin1(row.device));
        ASSERT_TRUE(parsed) << row.device;
        EXPECT_EQ(parsed->kind, row.kind) << row.device;
        EXPECT_EQ(parsed->host, QString::fromLatin1(row.host)) << row.device;
        EXPECT_EQ(parsed->port, row.port) << row.device;
        EXPECT_EQ(parseNetworkDevice(parsed->toString())->toString(), parsed->toString());
    }
    for (const char* bad : {"socket://", "socket://unit:", "socket://unit:0", "socket://unit:65536",
                            "socket://unit:40x1", "socket://unit: 4001", "socket://:4001",
                            "socket://a unit:4001", "socket://fd00::5:4001", "socket://[unit]:4001",
                            "rfc2217://unit:99999999999", "/dev/ttyUSB0"}) {
        EXPECT_FALSE(parseNetworkDevice(QString::fromLatin1(bad))) << bad;
    }
    // The longest name a host may have.
    const QString longest = QStringLiteral("socket://%1:1").arg(QString(253, QLatin1Char('a')));
    EXPECT_TRUE(parseNetworkDevice(longest));
    EXPECT_FALSE(parseNetworkDevice(QString(longest).insert(9, QLatin1Char('a'))));
    EXPECT_EQ(portKindOf("/dev/serial/by-id/usb-FTDI-if00"), PortKind::Local);
    EXPECT_EQ(portKindOf("Rfc2217://unit:2001"), PortKind::Rfc2217);
}

TEST(TcpPort, BytesWrittenWhileTheConnectionIsMadeGoOutOnceAndInOrder) {
    ScriptedServer server;
    TcpPort port;
    QSignalSpy made(&port, &SerialPort::connectionMade);
    // A name is looked up first, so the port is still connecting for a while.
    ASSERT_TRUE(port.open(QStringLiteral("socket://localhost:%1").arg(server.port()), 9600));
    EXPECT_TRUE(port.isOpen());
    ASSERT_TRUE(port.stillConnecting());
    writeAll(port, bytes({kStx, 0, kJog, 0xFF, kEtx}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return made.count() == 1; }, 5000));
    EXPECT_FALSE(port.stillConnecting());
    writeAll(port, bytes({kStx, 0, kFirmware, kFirmware, kEtx}));
    ASSERT_TRUE(server.waitForBytes(10));
    QTest::qWait(100);
    EXPECT_EQ(server.received(),
              bytes({kStx, 0, kJog, 0xFF, kEtx, kStx, 0, kFirmware, kFirmware, kEtx}));

    // A reply in pieces is given the time a network may hold them apart.
    EXPECT_GT(port.transportPauseMs(), 0);
    QSignalSpy closed(&port, &SerialPort::closed);
    port.close();
    EXPECT_EQ(closed.count(), 1);
    EXPECT_FALSE(port.isOpen());
}

TEST(TcpPort, ARefusedOrCutConnectionIsALostDeviceThatSaysWhyOnceAndLeavesNoBytes) {
    ScriptedServer server;
    server.greet = [](QTcpSocket& socket) {
        socket.write(bytes({kAck, 0, kJog}));  // half a reply, then gone
        socket.flush();
        socket.disconnectFromHost();
    };
    const std::pair<quint16, QString> cases[] = {
        {closedPort(), QStringLiteral("the device server refused the connection")},
        {server.port(), QStringLiteral("the device server closed the connection")}};
    for (const auto& [at, why] : cases) {
        SCOPED_TRACE(why.toStdString());
        TcpPort port;
        QSignalSpy closed(&port, &SerialPort::closed);
        QSignalSpy lost(&port, &SerialPort::lost);
        ASSERT_TRUE(port.open(QStringLiteral("socket://127.0.0.1:%1").arg(at), 9600));
        ASSERT_TRUE(QTest::qWaitFor([&] { return lost.count() > 0; }, 15000));
        QTest::qWait(50);
        EXPECT_EQ(lost.count(), 1) << "one loss, told once";
        EXPECT_EQ(closed.count(), 1) << "closed before it is lost";
        EXPECT_EQ(lost.first().first().toString(), why);
        EXPECT_FALSE(port.isOpen());
        EXPECT_FALSE(port.stillConnecting());
        EXPECT_EQ(port.bytesWaiting(), 0) << "half a reply left behind";
        EXPECT_FALSE(port.writeByte(kStx));
    }
}

// An RFC 2217 server's opening, as ser2net sends it.
const QByteArray kServerOpening = bytes(
    {kIac, kWill, kSuppressGoAhead, kIac, kDo, kBinary, kIac, kWill, kBinary, kIac, kDo, kComPort});

TEST(Rfc2217Port, TheLineWaitsForThePortSettingsAndDoubles0xFF) {
    ScriptedServer server;
    server.greet = [](QTcpSocket& socket) {
        // A server that takes a moment before it answers.
        QTimer::singleShot(150, &socket, [&socket] { socket.write(kServerOpening); });
    };
    Rfc2217Port port;
    QSignalSpy notices(&port, &SerialPort::notice);
    ASSERT_TRUE(port.open(QStringLiteral("rfc2217://127.0.0.1:%1").arg(server.port()), 38400));
    writeAll(port, bytes({kStx, 0xFF, kEtx}));
    ASSERT_TRUE(server.waitForConnection());
    QTest::qWait(50);
    EXPECT_TRUE(port.stillConnecting()) << "ready before the server answered";
    // Only the opening so far: the line's bytes wait for the settings.
    EXPECT_EQ(server.received(),
              bytes({kIac, kWill, kComPort, kIac, kWill, kBinary, kIac, kDo, kBinary}));

    // Then the settings, and the line's bytes with 0xFF doubled.
    ASSERT_TRUE(QTest::qWaitFor([&] { return !port.stillConnecting(); }, 3000));
    const QByteArray speed = bytes({kIac, kSb, kComPort, 1, 0x00, 0x00, 0x96, 0x00, kIac, kSe});
    const QByteArray line = bytes({kStx, 0xFF, 0xFF, kEtx});
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.received().endsWith(line); }, 5000));
    EXPECT_EQ(server.received().indexOf(speed), 12);
    EXPECT_EQ(notices.count(), 0) << "the server set what was asked";
}

TEST(Rfc2217Port, AServerThatRefusesOrIgnoresThePortSettingsIsToldOnceAndStillCarriesTheLine) {
    constexpr int kTimeoutMs = 200;
    const QByteArray sevenDataBits = bytes({kIac, kSb, kComPort, 102, 7, kIac, kSe});
    const struct {
        const char* what;
        QByteArray greeting;
        QByteArray again;  // said once more later
        int baud;
        QString notice;
    } cases[] = {
        {"refused", bytes({kIac, kDont, kComPort}), {}, 9600, QStringLiteral("RFC 2217 refused")},
        // A plain TCP server behind an rfc2217:// name says nothing at all.
        {"silent",
         {},
         {},
         9600,
         QStringLiteral("did not take up the port settings (RFC 2217) within 0.2 s")},
        {"keeps its own speed",
         bytes({kIac, kDo, kComPort, kIac, kSb, kComPort, 101, 0x00, 0x00, 0x25, 0x80, kIac, kSe}),
         {},
         57600,
         QStringLiteral("the device server runs the line at 9600 baud, not 57600")},
        // Said twice, told once.
        {"keeps seven data bits", bytes({kIac, kDo, kComPort}) + sevenDataBits, sevenDataBits, 9600,
         QStringLiteral("the device server keeps a character format other than 8/N/1")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ScriptedServer server;
        server.greet = [&c](QTcpSocket& socket) { socket.write(c.greeting); };
        Rfc2217Port port;
        port.setNegotiationTimeoutMs(kTimeoutMs);
        QSignalSpy notices(&port, &SerialPort::notice);
        ASSERT_TRUE(port.open(QStringLiteral("rfc2217://127.0.0.1:%1").arg(server.port()), c.baud));
        writeAll(port, bytes({kStx}));
        ASSERT_TRUE(server.waitForConnection());
        ASSERT_TRUE(QTest::qWaitFor([&] { return notices.count() > 0; }, 2 * kTimeoutMs));
        // The line carries data both ways.
        server.send(c.again + bytes({kAck}));
        EXPECT_TRUE(QTest::qWaitFor([&] { return port.bytesWaiting() == 1; }, 5000));
        ASSERT_TRUE(server.waitForBytes(10));
        EXPECT_EQ(server.received().right(1), bytes({kStx}));
        EXPECT_FALSE(port.stillConnecting());
        EXPECT_EQ(notices.count(), 1);
        EXPECT_TRUE(notices.first().first().toString().contains(c.notice))
            << notices.first().first().toString().toStdString();
    }
}

}  // namespace
}  // namespace halvex::testing
