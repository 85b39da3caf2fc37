#include "network/rotctl_protocol.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/network/fake_rotator.h"

namespace halvex::network {
namespace {

using namespace std::string_view_literals;

struct Case {
    std::string_view request;
    std::string_view answer;
};

void expectAnswers(FakeRotator& rotator, const Case& c) {
    SCOPED_TRACE(testing::Message() << "request \"" << c.request << '"');
    const RotctlReply reply = answerRotctlLine(c.request, rotator);
    EXPECT_EQ(reply.text, c.answer);
    EXPECT_FALSE(reply.closeConnection);
}

TEST(RotctlProtocol, PlainAnswers) {
    const Case cases[] = {
        {"p", "123.500000\n45.250000\n"},
        {"\\get_pos", "123.500000\n45.250000\n"},
        {"p\r", "123.500000\n45.250000\n"},
        {" \tp  ", "123.500000\n45.250000\n"},
        {"P 45 10", "RPRT 0\n"},
        {"P 45.000000 10.000000", "RPRT 0\n"},
        {"\\set_pos +45.5 1e1", "RPRT 0\n"},
        {"P   360\t80", "RPRT 0\n"},
        {"S", "RPRT 0\n"},
        {"\\stop", "RPRT 0\n"},
        {"K", "RPRT 0\n"},
        {"\\park", "RPRT 0\n"},
        {"_", "Halvex test unit\n"},
        {"\\get_info", "Halvex test unit\n"},
        // What the NET rotctl backend reads at open: no report after "done",
        // or it would take it for the answer to its next command.
        {"\\dump_state", "1\n0\n0.000000\n360.000000\n0.000000\n80.000000\ndone\n"},
        {"1",
         "Model name: Halvex test unit\nMin Azimuth: 0.000000\nMax Azimuth: 360.000000\n"
         "Min Elevation: 0.000000\nMax Elevation: 80.000000\nRPRT 0\n"},
        {"\\dump_caps",
         "Model name: Halvex test unit\nMin Azimuth: 0.000000\nMax Azimuth: 360.000000\n"
         "Min Elevation: 0.000000\nMax Elevation: 80.000000\nRPRT 0\n"},
        // Known to Hamlib, not carried out here.
        {"M 8 50", "RPRT -4\n"},
        {"\\move 16 -1", "RPRT -4\n"},
        {"R 1", "RPRT -4\n"},
        {"L -170.0 -85.0 12", "RPRT -4\n"},
        {"\\pause 1", "RPRT -4\n"},
        // Blank lines are not commands.
        {"", ""},
        {" \r", ""},
    };
    for (const Case& c : cases) {
        FakeRotator rotator;
        expectAnswers(rotator, c);
    }
}

TEST(RotctlProtocol, ExtendedAnswers) {
    const Case cases[] = {
        {"+p", "get_pos:\nAzimuth: 123.500000\nElevation: 45.250000\nRPRT 0\n"},
        {"+\\get_pos", "get_pos:\nAzimuth: 123.500000\nElevation: 45.250000\nRPRT 0\n"},
        {";p", "get_pos:;Azimuth: 123.500000;Elevation: 45.250000;RPRT 0\n"},
        {"|\\get_pos", "get_pos:|Azimuth: 123.500000|Elevation: 45.250000|RPRT 0\n"},
        {",p", "get_pos:,Azimuth: 123.500000,Elevation: 45.250000,RPRT 0\n"},
        {"+P 90 45", "set_pos: 90 45\nRPRT 0\n"},
        {"|P 135  22.5", "set_pos: 135 22.5|RPRT 0\n"},
        {"+P 45 85", "set_pos: 45 85\nRPRT -1\n"},
        {"+P abc", "set_pos: abc\nRPRT -1\n"},
        {"+P", "set_pos:\nRPRT -1\n"},
        {"+S", "stop:\nRPRT 0\n"},
        {";K", "park:;RPRT 0\n"},
        {"+_", "get_info:\nInfo: Halvex test unit\nRPRT 0\n"},
        {"+\\dump_state",
         "dump_state:\n1\n0\n0.000000\n360.000000\n0.000000\n80.000000\ndone\nRPRT 0\n"},
        {"+M 8 50", "move: 8 50\nRPRT -4\n"},
        {"+p now", "get_pos: now\nRPRT -1\n"},
        {"+xyz", "RPRT -1\n"},
        {"+", "RPRT -1\n"},
    };
    for (const Case& c : cases) {
        FakeRotator rotator;
        expectAnswers(rotator, c);
    }
}

TEST(RotctlProtocol, GarbageReachesNothing) {
    const std::string_view requests[] = {
        "x",
        "xyz",
        "pp",
        "get_pos",  // long names need the backslash
        "\\",
        "\\GET_POS",
        "\\get_position",
        "?p",
        "#p",
        "_p",
        "p 1",
        "S now",
        "K 1 2",
        "\x01\x02\xff",
        "\0p"sv,
        "p\0"sv,
        "P",
        "P 45",
        "P 45 10 5",
        "P abc 10",
        "P 45 ten",
        "P 45,5 10",
        "P 45 10x",
        "P 0x10 10",
        "P +-5 10",
        "P nan 10",
        "P 45 inf",
        "P 1e999 10",
        "P 450.01 10",
        "P -180.01 10",
        "P 45 90.5",
        "P -90 10",  // a real azimuth, but outside this rotator's limits
        "P 45 85",
    };
    for (std::string_view request : requests) {
        SCOPED_TRACE(testing::Message() << "request \"" << request << '"');
        FakeRotator rotator;
        const RotctlReply reply = answerRotctlLine(request, rotator);
        EXPECT_EQ(reply.text, "RPRT -1\n");
        EXPECT_FALSE(reply.closeConnection);
        EXPECT_FALSE(reply.acceptedMove);
        EXPECT_TRUE(rotator.moves.empty());
        EXPECT_EQ(rotator.stops + rotator.parks, 0);
    }
}

TEST(RotctlProtocol, OfflineUnit) {
    const Case cases[] = {
        {"p", "RPRT -6\n"},
        {"+p", "get_pos:\nRPRT -6\n"},
        {"P 45 10", "RPRT -6\n"},
        {"S", "RPRT -6\n"},
        {"K", "RPRT -6\n"},
        // A bad request is still told so.
        {"P 45", "RPRT -1\n"},
        // What does not need the unit still works.
        {"_", "Halvex test unit\n"},
        {"\\dump_state", "1\n0\n0.000000\n360.000000\n0.000000\n80.000000\ndone\n"},
    };
    for (const Case& c : cases) {
        FakeRotator rotator;
        rotator.online = false;
        expectAnswers(rotator, c);
        EXPECT_TRUE(rotator.moves.empty());
        EXPECT_EQ(rotator.stops + rotator.parks, 0);
    }

    FakeRotator noReportYet;
    noReportYet.reported.reset();
    expectAnswers(noReportYet, {"p", "RPRT -6\n"});
}

TEST(RotctlProtocol, RotatorResultsBecomeHamlibCodes) {
    struct ResultCase {
        RotatorResult result;
        std::string_view request;
        std::string_view answer;
    };
    const ResultCase cases[] = {
        {RotatorResult::Ok, "P 10 10", "RPRT 0\n"},
        {RotatorResult::OutsideLimits, "P 10 10", "RPRT -1\n"},
        {RotatorResult::Offline, "P 10 10", "RPRT -6\n"},
        {RotatorResult::Refused, "P 10 10", "RPRT -9\n"},
        {RotatorResult::Refused, "+S", "stop:\nRPRT -9\n"},
        {RotatorResult::NotAvailable, "K", "RPRT -11\n"},
    };
    for (const ResultCase& c : cases) {
        FakeRotator rotator;
        rotator.forcedResult = c.result;
        expectAnswers(rotator, {c.request, c.answer});
        EXPECT_EQ(answerRotctlLine(c.request, rotator).acceptedMove.has_value(),
                  c.result == RotatorResult::Ok && c.request.starts_with("P"));
    }
}

TEST(RotctlProtocol, WhatReachesTheRotator) {
    FakeRotator rotator;
    const RotctlReply moved = answerRotctlLine("P 45.5 10", rotator);
    ASSERT_TRUE(moved.acceptedMove);
    EXPECT_DOUBLE_EQ(moved.acceptedMove->azimuth, 45.5);
    EXPECT_DOUBLE_EQ(moved.acceptedMove->elevation, 10.0);
    ASSERT_EQ(rotator.moves.size(), 1u);
    EXPECT_DOUBLE_EQ(rotator.moves[0].azimuth, 45.5);
    // The azimuth goes to the console as the client sent it.
    rotator.limitsToTell.minAzimuth = -180.0;
    answerRotctlLine("P -90 0", rotator);
    ASSERT_EQ(rotator.moves.size(), 2u);
    EXPECT_DOUBLE_EQ(rotator.moves[1].azimuth, -90.0);

    answerRotctlLine("S", rotator);
    answerRotctlLine("+\\stop", rotator);
    answerRotctlLine("K", rotator);
    EXPECT_EQ(rotator.stops, 2);
    EXPECT_EQ(rotator.parks, 1);
}

TEST(RotctlProtocol, QuitAndOverlongLinesClose) {
    struct CloseCase {
        std::string request;
        std::string_view answer;
        bool close;
    };
    const CloseCase cases[] = {
        {"q", "", true},
        {"Q", "", true},
        {"+q", "", true},
        {std::string(kMaxRotctlLineLength + 1, 'p'), "RPRT -8\n", true},
        {"P 1 1" + std::string(kMaxRotctlLineLength, ' '), "RPRT -8\n", true},
        // Right at the limit it is still a request.
        {"p" + std::string(kMaxRotctlLineLength - 1, ' '), "123.500000\n45.250000\n", false},
    };
    for (const CloseCase& c : cases) {
        SCOPED_TRACE(testing::Message() << "request of " << c.request.size() << " bytes");
        FakeRotator rotator;
        const RotctlReply reply = answerRotctlLine(c.request, rotator);
        EXPECT_EQ(reply.text, c.answer);
        EXPECT_EQ(reply.closeConnection, c.close);
        EXPECT_TRUE(rotator.moves.empty());
    }
}

TEST(RotctlProtocol, InfoAndNumbersStayOnTheirLines) {
    FakeRotator rotator;
    rotator.infoText = "Halvex\nunit 2\r";
    rotator.reported = AzEl{-0.0, -1e-9};
    expectAnswers(rotator, {"_", "Halvex unit 2 \n"});
    expectAnswers(rotator, {"p", "0.000000\n0.000000\n"});
    rotator.reported = AzEl{359.9999999, -12.3456789};
    expectAnswers(rotator, {"p", "360.000000\n-12.345679\n"});
}

}  // namespace
}  // namespace halvex::network
