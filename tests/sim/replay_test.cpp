// The virtual unit replaying a recording: each console frame gets the reply
// that followed a frame of its code, in order.

#include <gtest/gtest.h>

#include "protocol/line_recording.h"
#include "sim/replay_unit.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim {
namespace {

using recording::LineKind;
using recording::LineRecord;
using recording::Verdict;
namespace v = vocab;
using testing::joined;
using testing::presetRecord;
using testing::readPreset;

const std::vector<Byte> kJog = v::blank<v::JogMessage>();

std::vector<Byte> command(const std::vector<Byte>& message) {
    return encodeFrame(kStx, 0, message, 0);
}
std::vector<Byte> reply(const std::vector<Byte>& message) {
    return encodeFrame(kAck, 0, message, 0);
}
LineRecord sent(const std::vector<Byte>& message) {
    return {0, LineKind::Sent, Verdict::Good, command(message)};
}
LineRecord received(const std::vector<Byte>& wire, Verdict verdict = Verdict::Good) {
    return {0, LineKind::Received, verdict, wire};
}

std::vector<Byte> ask(ReplayUnit& unit, const std::vector<Byte>& wire) {
    unit.receiveFromConsole(wire.data(), wire.size());
    return unit.takeOutput();
}

TEST(Replay, AnswersEachCodeWithItsRecordedRepliesInOrderThenTheLastAgain) {
    const auto preset0 = reply(presetRecord(0, 1));
    const auto preset1 = reply(presetRecord(1, 3));
    const auto report = reply(test::report(v::JogMessage::kCode, {{v::report::kPan, 1234}},
                                           v::PositionReport::kJogLength));
    auto badReport = report;
    badReport[badReport.size() - 2] ^= 1;  // the LRC
    const std::vector<LineRecord> records = {
        sent(kJog),
        received({'n', 'o'}, Verdict::Noise),  // noise is no reply
        received(report),
        recording::eventRecord(0, "Watchdog expired"),
        sent(readPreset(0)),
        received(preset0),
        sent(v::blank<v::FirmwareRequest>()),  // never answered
        sent(readPreset(1)),
        received(preset1),
        sent(kJog),
        received(badReport, Verdict::BadLrc),  // answered, as the unit did
        received(report),                      // no frame waits for this one
    };
    ReplayUnit unit(records);
    EXPECT_EQ(unit.codesAnswered(), 2u);
    EXPECT_EQ(unit.repliesRecorded(), 5u);

    // The order of the recording, whatever the console asks in between.
    EXPECT_EQ(ask(unit, command(readPreset(7))), preset0);
    EXPECT_EQ(ask(unit, command(kJog)), report);
    EXPECT_EQ(ask(unit, command(readPreset(9))), preset1);
    EXPECT_EQ(ask(unit, command(kJog)), badReport);
    // Used up: the last reply of the code again.
    EXPECT_EQ(ask(unit, command(readPreset(2))), preset1);
    // Never answered in the recording, never answered now; nor a frame that
    // fails its LRC.
    EXPECT_TRUE(ask(unit, command(v::blank<v::FirmwareRequest>())).empty());
    EXPECT_TRUE(ask(unit, command(v::readRequest<v::Rates>())).empty());
    EXPECT_TRUE(ask(unit, encodeFrame(kStx, 0, readPreset(1), 5)).empty());

    // Two frames in one write get their two replies.
    EXPECT_EQ(ask(unit, joined(command(readPreset(0)), command(kJog))), joined(preset1, badReport));
}

}  // namespace
}  // namespace halvex::sim
