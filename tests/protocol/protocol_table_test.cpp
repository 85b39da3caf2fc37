#include <gtest/gtest.h>

#include "protocol/frame_description.h"
#include "protocol/protocol_table.h"
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

// A jog message's report whose counts claim more camera bytes than come.
std::vector<Byte> overcounted(std::initializer_list<test::Value<v::PositionReport>> values) {
    return test::report(v::JogMessage::kCode, values, v::PositionReport::kJogLength);
}

}  // namespace

// What the Line Log shows for a frame, one line: the same words the
// Wireshark dissector writes in its Info column. every_frame.txt keeps the
// words of every layout, status bits and lenses among them; these are the
// cases it cannot reach, and one of each kind of field checked by hand.
TEST(FrameDescription, NamesEveryFrameAndItsFieldsAsTheOperatorReadsThem) {
    struct Case {
        const char* what;
        std::vector<Byte> wire;
        std::string summary;
    };
    const std::vector<Case> cases = {
        {"position report: angles in degrees, status bits by name, camera bytes as counted",
         reply(1, join({test::report(v::JogMessage::kCode,
                                     {{report::kPan, -100},
                                      {report::kTilt, 4550},
                                      {report::kStatusC, 1 << 3},
                                      {report::kControllerType, 1},
                                      {report::kCamera1Count, 2},
                                      {report::kCamera2Count, 1}},
                                     v::PositionReport::kJogLength),
                        {0xAA, 0xBB, 0xCC}})),
         "position report: pan -1.00\xC2\xB0; tilt 45.50\xC2\xB0; "
         "status C moving CW; zoom 1 0; focus 1 0; "
         "zoom 2 0; focus 2 0; type Zelvar; camera 1 count 2; camera 2 count 1; "
         "camera 1 data AA BB; camera 2 data CC"},
        {"an absolute move that holds an axis",
         command(0, test::message<v::AbsoluteMove>(
                        {{v::absolute_move::kPan, v::absolute_move::kHoldAxis},
                         {v::absolute_move::kTilt, -9000}})),
         "absolute move: pan hold; tilt -90.00\xC2\xB0"},
        {"a camera string to camera 2",
         command(0, join({test::message<v::CameraTransmit>(
                              {{v::camera_transmit::kCount, 3}, {v::camera_transmit::kCamera, 1}},
                              v::camera_transmit::kData),
                          {0x81, 1, 0xFF}})),
         "camera transmit: length 3; to camera 2; data 81 01 FF"},
        {"a value with a name of its own", reply(0, test::sample(0)), "comm time-out: seconds off"},
        {"a code nobody knows", reply(0, {0xA7, 1, 2}), "unknown code: payload 01 02"},
        {"an open-ended field left empty", reply(0, {v::Diagnostics::kCode}), "diagnostics"},
        {"a refusal names the refused command", encodeFrame(kNak, 0, {v::StorePreset::kCode}, 0),
         "refusal: of store preset"},
        {"a frame the line cut off", {kAck, 0, v::JogMessage::kCode, 16}, "position report (cut)"},
        {"cut right after an escaped value",
         {kStx, 0, v::GoToPreset::kCode, kEsc, stuffed(kStx)},
         "go to preset: preset 2 (cut)"},
        {"bytes outside any frame", {0x55, v::JogMessage::kCode, kEtx}, "noise"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(describeFrame(c.wire).summary(), c.summary) << c.what;
    }
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
