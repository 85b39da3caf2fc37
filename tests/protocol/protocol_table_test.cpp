#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "protocol/dissector_source.h"
#include "protocol/frame_description.h"
#include "protocol/protocol_table.h"
#include "sim/command_table.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::table;
namespace v = halvex::vocab;
namespace report = halvex::vocab::report;

namespace {

std::vector<Byte> command(Byte address, const std::vector<Byte>& message) {
    return encodeFrame(kStx, address, message, address);
}

std::vector<Byte> reply(Byte address, const std::vector<Byte>& message) {
    return encodeFrame(kAck, address, message, address);
}

std::vector<Byte> join(std::initializer_list<std::vector<Byte>> parts) {
    std::vector<Byte> out;
    for (const auto& part : parts) {
        out.insert(out.end(), part.begin(), part.end());
    }
    return out;
}

// The read flag, in the same place in every get/set command.
constexpr Byte kRead = v::maskOf(v::kReadRequest<v::Rates>);

// A message answered under the code of another.
std::vector<Byte> under(Byte code, std::vector<Byte> message) {
    message[0] = code;
    return message;
}

// A jog message's report whose counts claim more camera bytes than come.
std::vector<Byte> overcounted(std::initializer_list<test::Value<v::PositionReport>> values) {
    return test::report(v::JogMessage::kCode, values, v::PositionReport::kJogLength);
}

bool hasReadRequest(Byte code) {
    const auto& layouts = findMessage(Direction::ToUnit, code)->layouts;
    return std::any_of(layouts.begin(), layouts.end(), [](const Layout& layout) {
        return layout.match.kind == Match::Kind::Bits && layout.match.index == 1 &&
               layout.match.value == kRead;
    });
}

// Each reply as the vocabulary builds it, at its full length: the table
// knows its code and finds every field in it, and so under every code that
// is answered with it.
template <class... M>
void expectEachFillsItsLayout() {
    (
        [] {
            const FrameDescription frame = describeFrame(reply(0, v::blank<M>()));
            EXPECT_FALSE(frame.shortPayload) << frame.summary();
            EXPECT_NE(frame.name, "unknown code") << std::hex << int(M::kCode);
            for (const Byte code : replyCodesNamed(frame.name)) {
                const FrameDescription other = describeFrame(reply(0, under(code, v::blank<M>())));
                EXPECT_EQ(other.name, frame.name) << std::hex << int(code);
                EXPECT_FALSE(other.shortPayload) << other.summary();
            }
        }(),
        ...);
}
}  // namespace

TEST(ProtocolTable, EveryMessageOfTheVocabularyFillsItsLayout) {
    // Commands are held at their shortest, below (the unit's commands).
    expectEachFillsItsLayout<
        v::PresetRecord, v::ClearAllPresets, v::TourStarted, v::TourCleared, v::TourStep,
        v::TourStepCount, v::CameraLines, v::LensConfiguration, v::CameraTransmitDone,
        v::CameraTimeouts, v::LegacyVideo, v::VideoConfiguration, v::AuxOutputs, v::AngleDisplay,
        v::NameDisplay, v::SiteNameStored, v::AngleOffsets, v::SoftLimitReply, v::CentrePosition,
        v::EncoderAlignmentFinished, v::HomingCycleFinished, v::Ramps, v::RatesReply,
        v::MinimumPair, v::TiltSettings, v::Directions, v::CommTimeout, v::Heater, v::Maxima,
        v::Firmware, v::TopSpeedsReply, v::UnitAddress, v::PanStepsReply, v::TiltStepsReply,
        v::Diagnostics, v::EncodersReply>();
    // The position report has no code of its own; the jog message's carries
    // the cameras' counts too.
    for (const Byte code : replyCodesNamed("position report")) {
        const int length = code == v::JogMessage::kCode ? v::PositionReport::kJogLength
                                                        : v::PositionReport::kLength;
        const FrameDescription frame = describeFrame(reply(0, test::report(code, {}, length)));
        EXPECT_EQ(frame.name, "position report");
        EXPECT_FALSE(frame.shortPayload) << frame.summary();
    }
}

// What the Line Log shows for a frame, one line: the same words the
// Wireshark dissector writes in its Info column. every_frame.txt keeps the
// words of every layout; these are the cases it cannot reach, and one of
// each kind of field checked by hand.
TEST(FrameDescription, NamesEveryFrameAndItsFieldsAsTheOperatorReadsThem) {
    struct Case {
        const char* what;
        std::vector<Byte> wire;
        std::string summary;
    };
    const std::vector<Case> cases = {
        {"position report: angles in degrees, status bits by name, camera bytes",
         reply(1, join({test::report(v::JogMessage::kCode,
                                     {{report::kPan, -100},
                                      {report::kTilt, 4550},
                                      {report::kStatusAByte, (1 << 3) | (1 << 5)},
                                      {report::kControllerType, 1},
                                      {report::kStatusB, 0xFC},
                                      {report::kStatusC, 1 << 3},
                                      {report::kLens[0], 10},
                                      {report::kLens[1], 11},
                                      {report::kLens[2], 12},
                                      {report::kLens[3], 13},
                                      {report::kCamera1Count, 2},
                                      {report::kCamera2Count, 1}},
                                     v::PositionReport::kJogLength),
                        {0xAA, 0xBB, 0xCC}})),
         "position report: pan -1.00\xC2\xB0; tilt 45.50\xC2\xB0; "
         "status A pan timeout, CW hard limit; status B tilt direction fault, tilt timeout, "
         "down hard limit, up hard limit, down soft limit, up soft limit; status C moving CW; "
         "zoom 1 10; focus 1 11; "
         "zoom 2 12; focus 2 13; type Zelvar; camera 1 count 2; camera 2 count 1; "
         "camera 1 data AA BB; camera 2 data CC"},
        {"an absolute move that holds an axis",
         command(0, test::message<v::AbsoluteMove>(
                        {{v::absolute_move::kPan, v::absolute_move::kHoldAxis},
                         {v::absolute_move::kTilt, -9000}})),
         "absolute move: pan hold; tilt -90.00\xC2\xB0"},
        {"a Get is named a request and its padding is left out",
         command(0, v::readRequest<v::Rates>()), "rates request"},
        {"a camera string to camera 2",
         command(0, join({test::message<v::CameraTransmit>(
                              {{v::camera_transmit::kCount, 3}, {v::camera_transmit::kCamera, 1}},
                              v::camera_transmit::kData),
                          {0x81, 1, 0xFF}})),
         "camera transmit: length 3; to camera 2; data 81 01 FF"},
        {"a value with a name of its own", reply(0, test::sample(0)), "comm time-out: seconds off"},
        {"a code nobody knows", reply(0, {0xA7, 1, 2}), "unknown code: payload 01 02"},
        {"a refusal names the refused command", encodeFrame(kNak, 0, {v::StorePreset::kCode}, 0),
         "refusal: of store preset"},
        {"a frame the line cut off", {kAck, 0, v::JogMessage::kCode, 16}, "position report (cut)"},
        {"bytes outside any frame", {0x55, v::JogMessage::kCode, kEtx}, "noise"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(describeFrame(c.wire).summary(), c.summary) << c.what;
    }
}

TEST(FrameDescription, ReadsEscapesAndChecksTheLrcAgainstTheFramesAddress) {
    // Unit 3 needs an escape for its address; the ETX in the payload too.
    const auto wire = reply(3, test::sample(kEtx));
    ASSERT_EQ(wire[1], kEsc);
    const FrameDescription frame = describeFrame(wire);
    EXPECT_EQ(frame.address, 3);
    EXPECT_EQ(frame.summary(), "comm time-out: seconds 3 s");
    EXPECT_TRUE(frame.lrcMatchesAddress);
    EXPECT_EQ(frame.lrc, static_cast<Byte>(3 ^ v::CommTimeout::kCode ^ kEtx));

    // The same reply with its LRC made for another unit does not add up.
    const FrameDescription wrong = describeFrame(encodeFrame(kAck, 3, test::sample(kEtx), 1));
    EXPECT_FALSE(wrong.lrcMatchesAddress);
}

TEST(FrameDescription, NeverFailsOnOddBytes) {
    // Every prefix of a long frame, with every start byte, escapes at the end,
    // and counts that claim more camera bytes than came.
    const auto longReport = reply(
        kEsc,
        join({overcounted({{report::kCamera1Count, 200}, {report::kCamera2Count, 200}}), {kEsc}}));
    for (std::size_t length = 0; length <= longReport.size(); ++length) {
        std::vector<Byte> cut(longReport.begin(), longReport.begin() + static_cast<long>(length));
        for (Byte start : {kStx, kAck, kNak, Byte{0}}) {
            if (!cut.empty()) {
                cut[0] = start;
            }
            const FrameDescription frame = describeFrame(cut);
            EXPECT_FALSE(frame.summary().empty());
        }
    }
    const FrameDescription overlong =
        describeFrame(reply(0, join({overcounted({{report::kCamera1Count, 200}}), {1, 2}})));
    EXPECT_EQ(overlong.summary().substr(0, 15), "position report");
    EXPECT_TRUE(overlong.shortPayload);
    EXPECT_EQ(describeFrame({}).name, "noise");
    EXPECT_EQ(describeFrame({kStx, kEtx}).name, "empty frame");
}

// Every command the virtual unit knows is in the table, and a command just
// as long as the unit needs fills the table's layout: the two were written
// from the same payload descriptions and must agree.
TEST(ProtocolTable, HoldsEveryCommandTheUnitKnowsAtTheLengthItNeeds) {
    const sim::CommandTable& unit = sim::CommandTable::standard();
    int known = 0;
    for (int code = 0; code < 256; ++code) {
        const sim::CommandEntry* entry = unit.find(static_cast<Byte>(code));
        if (entry == nullptr) {
            continue;
        }
        ++known;
        EXPECT_NE(findMessage(Direction::ToUnit, static_cast<Byte>(code)), nullptr) << code;
        EXPECT_NE(findMessage(Direction::FromUnit, static_cast<Byte>(code)), nullptr) << code;
        // The shortest command the unit takes is a "Get" where there is one.
        std::vector<Byte> message(entry->minPayload + 1, 0);
        message[0] = static_cast<Byte>(code);
        if (message.size() > 1 && hasReadRequest(static_cast<Byte>(code))) {
            message[1] = kRead;
        }
        const FrameDescription frame = describeFrame(command(0, message));
        EXPECT_FALSE(frame.shortPayload) << std::hex << code << " " << frame.summary();
        EXPECT_NE(frame.name, "unknown code") << std::hex << code;
    }
    EXPECT_GT(known, 50);
    // And the other way round: the unit answers every command the table names.
    for (const Message& message : messages()) {
        if (message.direction == Direction::ToUnit) {
            EXPECT_NE(unit.find(message.code), nullptr) << std::hex << int(message.code);
        }
    }
}

TEST(ProtocolTable, ListsEachCodeOnceADirectionWithALastLayoutForAnyMessage) {
    std::set<std::pair<int, int>> seen;
    for (const Message& message : messages()) {
        EXPECT_TRUE(seen.insert({message.code, static_cast<int>(message.direction)}).second)
            << int(message.code);
        ASSERT_FALSE(message.layouts.empty());
        EXPECT_EQ(message.layouts.back().match.kind, Match::Kind::Always) << int(message.code);
    }
    // A code's caption is read in the Line Log's code filter (line_log_test.cpp).
    EXPECT_EQ(codeCaption(1), "unknown code");
    EXPECT_EQ(replyCodesNamed("position report"),
              (std::vector<Byte>{v::JogMessage::kCode, v::GoToPreset::kCode, v::AbsoluteMove::kCode,
                                 v::DeltaMove::kCode, v::MoveToCentre::kCode, v::MoveToHome::kCode,
                                 v::AbsoluteMoveWithLenses::kCode}));
}

TEST(DissectorSource, WritesTheWholeTableIntoTheEngineWithOneTypePerFilterField) {
    std::vector<std::string> conflicts;
    const auto fields = filterFields(&conflicts);
    EXPECT_FALSE(fields.empty());
    EXPECT_TRUE(conflicts.empty()) << conflicts.front();

    // The dissector the build writes runs in tests/recorder/wireshark_test.cpp.
    const std::string source = dissectorSource("-- @PROTOCOL_TABLE@\n");
    for (const Message& message : messages()) {
        for (const Layout& layout : message.layouts) {
            EXPECT_NE(source.find("name = \"" + layout.name + "\""), std::string::npos)
                << layout.name;
        }
    }
    EXPECT_TRUE(dissectorSource("no marker here").empty());
}
