// One request line to its answer, and azimuth/elevation to pan/tilt.

#include "network/rotctl_protocol.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <string_view>

#include "network/rotator_angles.h"
#include "tests/network/fake_rotator.h"

namespace halvex::network {
namespace {

using namespace std::string_view_literals;

TEST(RotatorAngles, MapBothWaysWithinTheirRanges) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInf = std::numeric_limits<double>::infinity();
    struct Case {
        std::optional<double> (*map)(double);
        double in;
        std::optional<double> out;
    };
    const auto toPan = azimuthToPan;
    const auto toAz = panToAzimuth;
    const auto toTilt = elevationToTilt;
    const auto toEl = tiltToElevation;
    const Case cases[] = {{toPan, 0, 0},          {toPan, 179.99, 179.99}, {toPan, 180, 180},
                          {toPan, 180.5, -179.5}, {toPan, 270, -90},       {toPan, 359.5, -0.5},
                          {toPan, 360, 0},        {toPan, -0.0, 0},        {toPan, -179.5, -179.5},
                          {toPan, -180, 180},     {toPan, 450, 90},        {toPan, -180.01, {}},
                          {toPan, 450.01, {}},    {toPan, -360, {}},       {toPan, kNaN, {}},
                          {toPan, -kInf, {}},     {toAz, -0.0, 0},         {toAz, 180, 180},
                          {toAz, -180, 180},      {toAz, -90, 270},        {toAz, -0.5, 359.5},
                          {toAz, -1e-15, 0},      {toAz, 181, 181},        {toAz, -181, 179},
                          {toAz, 365, 5},         {toAz, kNaN, {}},        {toAz, kInf, {}},
                          {toTilt, 45.5, 45.5},   {toTilt, 90, 90},        {toTilt, -90, -90},
                          {toTilt, -0.0, 0},      {toTilt, 90.01, {}},     {toTilt, -90.01, {}},
                          {toTilt, kNaN, {}},     {toTilt, kInf, {}},      {toEl, 12.5, 12.5},
                          {toEl, -95, -95},       {toEl, -0.0, 0},         {toEl, kNaN, {}},
                          {toEl, -kInf, {}}};
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

const std::string kCaps =
    "Model name: Halvex test unit\nMin Azimuth: 0.000000\nMax Azimuth: 360.000000\n"
    "Min Elevation: 0.000000\nMax Elevation: 80.000000\nRPRT 0\n";
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
        {"p", kPosition},
        {"\\get_pos", kPosition},
        {" \tp  \r", kPosition},
        {"P 45 10", "RPRT 0\n"},
        {"\\set_pos +45.5   1e1", "RPRT 0\n"},
        {"S", "RPRT 0\n"},
        {"\\park", "RPRT 0\n"},
        {"_", "Halvex test unit\n"},
        // What the NET rotctl backend reads at open: no report after "done",
        // or it would take it for the answer to its next command.
        {"\\dump_state", kState},
        {"1", kCaps},
        {"\\dump_caps", kCaps},
        {"M 8 50", "RPRT -4\n"},
        {"\\pause 1", "RPRT -4\n"},
        {"", ""},
        {" \r", ""},
        // Extended answers: echo, "Key: value" records, report.
        {"+p", "get_pos:\nAzimuth: 123.500000\nElevation: 45.250000\nRPRT 0\n"},
        {"+\\get_pos", "get_pos:\nAzimuth: 123.500000\nElevation: 45.250000\nRPRT 0\n"},
        {";p", "get_pos:;Azimuth: 123.500000;Elevation: 45.250000;RPRT 0\n"},
        {"|p", "get_pos:|Azimuth: 123.500000|Elevation: 45.250000|RPRT 0\n"},
        {",p", "get_pos:,Azimuth: 123.500000,Elevation: 45.250000,RPRT 0\n"},
        {"+P 90 45", "set_pos: 90 45\nRPRT 0\n"},
        {"|P 135  22.5", "set_pos: 135 22.5|RPRT 0\n"},
        {"+P 45 85", "set_pos: 45 85\nRPRT -1\n"},
        {"+P", "set_pos:\nRPRT -1\n"},
        {";K", "park:;RPRT 0\n"},
        {"+_", "get_info:\nInfo: Halvex test unit\nRPRT 0\n"},
        {"+\\dump_state", "dump_state:\n" + kState + "RPRT 0\n"},
        {"+M 8 50", "move: 8 50\nRPRT -4\n"},
        {"+xyz", "RPRT -1\n"},
        {"+", "RPRT -1\n"},
        // Offline: what needs the unit fails, a bad request is still told so.
        {"p", "RPRT -6\n", false},
        {"+p", "get_pos:\nRPRT -6\n", false},
        {"P 45 10", "RPRT -6\n", false},
        {"S", "RPRT -6\n", false},
        {"P 45", "RPRT -1\n", false},
        {"_", "Halvex test unit\n", false},
        {"\\dump_state", kState, false},
        // The rotator's own refusals become Hamlib codes.
        {"P 10 10", "RPRT -1\n", true, RotatorResult::OutsideLimits},
        {"P 10 10", "RPRT -6\n", true, RotatorResult::Offline},
        {"P 10 10", "RPRT -9\n", true, RotatorResult::Refused},
        {"+S", "stop:\nRPRT -9\n", true, RotatorResult::Refused},
        {"K", "RPRT -11\n", true, RotatorResult::NotAvailable},
        // Quit and overlong lines close the connection.
        {"q", "", true, {}, true},
        {"Q", "", true, {}, true},
        {"+q", "", true, {}, true},
        {std::string(kMaxRotctlLineLength + 1, 'p'), "RPRT -8\n", true, {}, true},
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
            EXPECT_EQ(rotator.positionRequests + rotator.stops + rotator.parks, 0);
        }
        if (c.result) {
            EXPECT_FALSE(reply.acceptedMove);
        }
    }
}

TEST(RotctlProtocol, GarbageIsInvalidAndReachesNothing) {
    const std::string_view requests[] = {
        "xyz",       "pp",        "get_pos",  "\\",         "\\GET_POS",   "?p",
        "#p",        "_p",        "p 1",      "S now",      "\x01\xff",    "\0p"sv,
        "P",         "P 45 10 5", "P abc 10", "P 45,5 10",  "P 45 10x",    "P 0x10 10",
        "P +-5 10",  "P nan 10",  "P 45 inf", "P 1e999 10", "P 450.01 10", "P -180.01 10",
        "P 45 90.5", "P -90 10"};  // the last a real azimuth, but outside this rotator's limits
    for (std::string_view request : requests) {
        SCOPED_TRACE(::testing::Message() << '"' << request << '"');
        FakeRotator rotator;
        const RotctlReply reply = answerRotctlLine(request, rotator);
        EXPECT_EQ(reply.text, "RPRT -1\n");
        EXPECT_FALSE(reply.closeConnection);
        EXPECT_FALSE(reply.acceptedMove);
        EXPECT_TRUE(rotator.moves.empty());
        EXPECT_EQ(rotator.stops + rotator.parks, 0);
    }
}

TEST(RotctlProtocol, AcceptedMoveInfoAndNumbersAsSent) {
    FakeRotator rotator;
    rotator.limitsToTell.minAzimuth = -180.0;
    const RotctlReply reply = answerRotctlLine("P -90.5 10", rotator);
    ASSERT_TRUE(reply.acceptedMove);
    EXPECT_DOUBLE_EQ(reply.acceptedMove->azimuth, -90.5);
    EXPECT_DOUBLE_EQ(reply.acceptedMove->elevation, 10.0);
    ASSERT_EQ(rotator.moves.size(), 1u);
    EXPECT_DOUBLE_EQ(rotator.moves[0].azimuth, -90.5);

    rotator.infoText = "Halvex\nunit 2\r";
    EXPECT_EQ(answerRotctlLine("_", rotator).text, "Halvex unit 2 \n");
    rotator.reported = AzEl{-0.0, -1e-9};
    EXPECT_EQ(answerRotctlLine("p", rotator).text, "0.000000\n0.000000\n");
    rotator.reported = AzEl{359.9999999, -12.3456789};
    EXPECT_EQ(answerRotctlLine("p", rotator).text, "360.000000\n-12.345679\n");
    rotator.reported.reset();  // online, but no report yet
    EXPECT_EQ(answerRotctlLine("p", rotator).text, "RPRT -6\n");
}

}  // namespace
}  // namespace halvex::network
