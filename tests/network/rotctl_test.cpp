// The rotctl request lines and their answers, azimuth/elevation to pan/tilt,
// and the server on a real socket driven by a raw TCP client. Hamlib's own
// rotctl drives it through the whole console in the window tests.

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <QSignalSpy>
#include <cmath>
#include <limits>
#include <memory>
#include <string>

#include "network/rotator_angles.h"
#include "network/rotctl_protocol.h"
#include "network/rotctld_server.h"
#include "tests/network/line_client.h"

namespace halvex::network {
namespace {

// Stands in for the console: takes every move and reports the new position at once.
class FakeRotator : public Rotator {
  public:
    bool online = true;
    std::optional<AzEl> reported = AzEl{123.5, 45.25};
    std::string infoText = "Halvex test unit";
    std::optional<RotatorResult> forcedResult;  // what every command answers instead, when set
    int calls = 0;                              // moves, stops and parks asked for

    bool isOnline() const override { return online; }
    std::optional<AzEl> position() const override { return reported; }
    RotatorResult setPosition(double azimuth, double elevation) override {
        if (!forcedResult) {
            reported = AzEl{azimuth, elevation};
        }
        return park();
    }
    RotatorResult stop() override { return park(); }
    RotatorResult park() override {
        ++calls;
        return forcedResult.value_or(RotatorResult::Ok);
    }
    std::string info() const override { return infoText; }
    RotatorLimits limits() const override { return {0.0, 360.0, 0.0, 80.0}; }
};

TEST(RotatorAngles, MapBothWaysWithinTheirRanges) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInf = std::numeric_limits<double>::infinity();
    struct Case {
        std::optional<double> (*map)(double);
        double in;
        std::optional<double> out;
    };
    const auto toPan = azimuthToPan, toAz = panToAzimuth;
    const auto toTilt = elevationToTilt, toEl = tiltToElevation;
    const Case cases[] = {
        {toPan, 180, 180},   {toPan, 270, -90},    {toPan, -180, 180},  {toPan, -0.0, 0},
        {toPan, 450, 90},    {toPan, -180.01, {}}, {toPan, 450.01, {}}, {toPan, kNaN, {}},
        {toAz, -90, 270},    {toAz, 365, 5},       {toAz, -1e-15, 0},   {toAz, -0.0, 0},
        {toAz, kInf, {}},    {toTilt, 90, 90},     {toTilt, -90, -90},  {toTilt, -0.0, 0},
        {toTilt, 90.01, {}}, {toTilt, -90.01, {}}, {toTilt, kNaN, {}},  {toEl, -95, -95},
        {toEl, -0.0, 0},     {toEl, -kInf, {}}};
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "case " << (&c - cases) << ", in " << c.in);
        const std::optional<double> got = c.map(c.in);
        ASSERT_EQ(got.has_value(), c.out.has_value());
        if (got) {
            EXPECT_DOUBLE_EQ(*got, *c.out);
            EXPECT_FALSE(std::signbit(*got) && *got == 0.0) << "negative zero";
        }
    }
}

const std::string kState = "1\n0\n0.000000\n360.000000\n0.000000\n80.000000\ndone\n";
const std::string kPosition = "123.500000\n45.250000\n";
const std::string kLong(kMaxRotctlLineLength, ' ');

TEST(RotctlProtocol, EachRequestGetsItsAnswer) {
    struct Case {
        std::string request;
        std::string answer;
        bool online = true;
        std::optional<RotatorResult> result = {};  // what the rotator says to every command
        bool close = false;
    };
    const Case cases[] = {
        {"\\set_pos +45.5   1e1", "RPRT 0\n"},
        // What the NET rotctl backend reads at open: no report after "done",
        // or it would take it for the answer to its next command.
        {"\\dump_state", kState},
        {"1",
         "Model name: Halvex test unit\nMin Azimuth: 0.000000\nMax Azimuth: 360.000000\n"
         "Min Elevation: 0.000000\nMax Elevation: 80.000000\nRPRT 0\n"},
        {" \r", ""},
        // Extended answers: echo, "Key: value" records, report.
        {"+\\get_pos", "get_pos:\nAzimuth: 123.500000\nElevation: 45.250000\nRPRT 0\n"},
        {";p", "get_pos:;Azimuth: 123.500000;Elevation: 45.250000;RPRT 0\n"},
        {"+\\dump_state", "dump_state:\n" + kState + "RPRT 0\n"},
        {"+M 8 50", "move: 8 50\nRPRT -4\n"},
        // Offline: what needs the unit fails, a bad request is still told so.
        {"+p", "get_pos:\nRPRT -6\n", false},
        {"P 45 10", "RPRT -6\n", false},
        {"S", "RPRT -6\n", false},
        {"P 45", "RPRT -1\n", false},
        // The rotator's own refusals become Hamlib codes.
        {"P 10 10", "RPRT -1\n", true, RotatorResult::OutsideLimits},
        {"P 10 10", "RPRT -6\n", true, RotatorResult::Offline},
        {"+S", "stop:\nRPRT -9\n", true, RotatorResult::Refused},
        {"K", "RPRT -11\n", true, RotatorResult::NotAvailable},
        // Quit and overlong lines close the connection.
        {"Q", "", true, {}, true},
        {"P 1 1" + kLong, "RPRT -8\n", true, {}, true},
        {"p" + kLong.substr(1), kPosition}};
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << "case " << (&c - cases) << ": \"" << c.request << '"');
        FakeRotator rotator;
        rotator.online = c.online;
        rotator.forcedResult = c.result;
        const RotctlReply reply = answerRotctlLine(c.request, rotator);
        EXPECT_EQ(reply.text, c.answer);
        EXPECT_EQ(reply.closeConnection, c.close);
        if (!c.online || c.close) {
            EXPECT_EQ(rotator.calls, 0);
        }
        if (c.result) {
            EXPECT_FALSE(reply.acceptedMove);
        }
    }
    // Garbage is invalid and reaches nothing.
    const std::string_view requests[] = {
        "pp",       "get_pos",  "xget_pos",   "\\",          "\\GET_POS",    "?p",       "#p",
        "_p",       "p 1",      "\x01\xff",   "P 45 10 5",   "P abc 10",     "P 45 10x", "P +-5 10",
        "P nan 10", "P 45 inf", "P 1e999 10", "P 450.01 10", "P -180.01 10", "P 45 90.5"};
    for (std::string_view request : requests) {
        SCOPED_TRACE(::testing::Message() << '"' << request << '"');
        FakeRotator rotator;
        const RotctlReply reply = answerRotctlLine(request, rotator);
        EXPECT_EQ(reply.text, "RPRT -1\n");
        EXPECT_FALSE(reply.closeConnection || reply.acceptedMove);
        EXPECT_EQ(rotator.calls, 0);
    }
}

TEST(RotctlProtocol, InfoAndNumbersAreSentOnOneLineEach) {
    FakeRotator rotator;
    rotator.infoText = "Halvex\nunit 2\r";
    EXPECT_EQ(answerRotctlLine("_", rotator).text, "Halvex unit 2 \n");
    rotator.reported = AzEl{-0.0, -1e-9};
    EXPECT_EQ(answerRotctlLine("p", rotator).text, "0.000000\n0.000000\n");
    // Half the last digit rounds to zero and is told without a sign; just
    // past it is the last digit.
    rotator.reported = AzEl{-5e-7, -5.000001e-7};
    EXPECT_EQ(answerRotctlLine("p", rotator).text, "0.000000\n-0.000001\n");
    rotator.reported.reset();  // online, but no report yet
    EXPECT_EQ(answerRotctlLine("p", rotator).text, "RPRT -6\n");
}

class RotctldServerTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0)); }

    std::unique_ptr<LineClient> connected() {
        auto client = std::make_unique<LineClient>();
        const int before = server.clientCount();
        EXPECT_TRUE(client->connectTo(server.serverPort()));
        EXPECT_TRUE(clientsAre(before + 1));
        return client;
    }
    bool clientsAre(int count) {
        return QTest::qWaitFor([&] { return server.clientCount() == count; });
    }

    FakeRotator rotator;
    RotctldServer server{rotator};
    const QByteArray position = QByteArray::fromStdString(kPosition);
};

TEST_F(RotctldServerTest, AnswersEachLineInOrderHoweverItArrivesAndSignalsMoves) {
    QSignalSpy moves(&server, &RotctldServer::moveAccepted);
    auto client = connected();
    const QString peer = QStringLiteral("127.0.0.1:%1").arg(client->socket.localPort());
    client->exchange("p\nS\n_\n+P 90 45\np\n", position +
                                                   "RPRT 0\nHalvex test unit\nset_pos: 90 45\n"
                                                   "RPRT 0\n90.000000\n45.000000\n");
    for (const char* piece : {"P 4", "5 1", "0\r", "\n"}) {
        client->socket.write(piece);
        client->socket.flush();
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(client->receive("RPRT 0\n"), "RPRT 0\n");
    ASSERT_EQ(moves.size(), 2);
    EXPECT_EQ(moves[0], (QList<QVariant>{90.0, 45.0, peer}));
    EXPECT_EQ(moves[1], (QList<QVariant>{45.0, 10.0, peer}));

    // Quit closes, and nothing after it is answered.
    client->socket.write("+q\nS\n");
    EXPECT_TRUE(client->waitClosedByServer());
    EXPECT_EQ(client->received, "");
    EXPECT_TRUE(clientsAre(0));
    EXPECT_EQ(rotator.calls, 3);
}

TEST_F(RotctldServerTest, AnOverlongLineClosesTheClientAndOneThatShutsItsSideStillGetsItsAnswers) {
    auto overlong = connected();
    overlong->socket.write(QByteArray(3000, 'x'));
    EXPECT_TRUE(overlong->waitClosedByServer());
    EXPECT_EQ(overlong->received, "RPRT -8\n");
    EXPECT_TRUE(clientsAre(0));

    // What socat and nc -N do once the request is sent: shut their side.
    auto client = connected();
    client->socket.write("p\n_\n");
    client->socket.flush();
    ASSERT_EQ(::shutdown(static_cast<int>(client->socket.socketDescriptor()), SHUT_WR), 0);
    EXPECT_TRUE(client->waitClosedByServer());
    EXPECT_EQ(client->received, position + "Halvex test unit\n");
}

}  // namespace
}  // namespace halvex::network
