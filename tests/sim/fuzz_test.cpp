// Random and mutated input never crashes or wedges the unit: good frames
// are still answered afterwards.

#include <gtest/gtest.h>

#include <random>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

// Frames the console really sends, to mutate.
const std::vector<std::vector<Byte>>& startingFrames() {
    static const std::vector<std::vector<Byte>> frames{
        {0x31, 0x84, 200, 100, 3, 0, 0, 0},
        {0x33, 0x10, 0x27, 0, 0x9F, 0x86, 0x01},
        {0x34, 0x9C, 0xFF, 0xFF, 0, 0, 0},
        {0x3A, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4},
        {0x41, 3, 1, 2, 3, 4, 5, 6},
        {0x52, 0, 5, 10},
        {0x37, 0},
        {0x62, 3, 0x81, 0x09, 0xFF},
        {0x64, 0x49, 0x0C},
        {0x81, 0x02},
        {0x92, 0x80, 0, 0, 0, 0, 0, 0, 0},
        {0x9F, 0x80},
        {0xA1, 0x00, 0x10, 0x00, 0x20, 0x00},
        {0x95, 0x10},
    };
    return frames;
}

TEST(UnitFuzz, RandomAndMutatedFramesNeitherCrashNorStopTheUnit) {
    UnitOptions options;
    options.alignmentMs = 50;
    options.homingMs = 50;
    Unit unit(options);
    std::mt19937 random(12345);
    const auto pick = [&random](int n) { return static_cast<int>(random() % n); };
    std::int64_t now = 0;
    std::size_t totalOutput = 0;

    for (int round = 0; round < 300000; ++round) {
        std::vector<Byte> wire;
        switch (pick(3)) {
            case 0: {  // a mutated good frame
                std::vector<Byte> message =
                    startingFrames()[pick(static_cast<int>(startingFrames().size()))];
                const int edits = 1 + pick(3);
                for (int e = 0; e < edits; ++e) {
                    const int where = pick(static_cast<int>(message.size()));
                    switch (pick(3)) {
                        case 0:
                            message[where] = static_cast<Byte>(random());
                            break;
                        case 1:
                            message.resize(where + 1);
                            break;
                        default:
                            message.push_back(static_cast<Byte>(random()));
                    }
                }
                wire = encodeFrame(kStx, pick(4) == 0 ? 1 : 0, message, pick(8) == 0 ? 5 : 0);
                break;
            }
            case 1: {  // a frame with any code and any payload
                std::vector<Byte> message(1 + pick(20));
                for (Byte& b : message) {
                    b = static_cast<Byte>(random());
                }
                wire = encodeFrame(kStx, 0, message, 0);
                break;
            }
            default: {  // raw noise
                wire.resize(pick(40));
                for (Byte& b : wire) {
                    b = static_cast<Byte>(random());
                }
            }
        }
        unit.receiveFromConsole(wire.data(), wire.size());
        now += pick(30);
        unit.advanceTo(now);
        totalOutput += unit.takeOutput().size();
        // The id may have been changed by a random frame; broadcast still
        // reaches the unit.
    }
    EXPECT_GT(totalOutput, 0u);

    // Whatever the noise left behind, a clean frame after an ETX is answered.
    unit.advanceTo(now + 60000);
    unit.takeOutput();
    const Byte id = unit.state().settings.unitId;
    std::vector<Byte> wire{kEtx};
    const auto frame = encodeFrame(kStx, 0, {0x96, 0x80}, 0);
    wire.insert(wire.end(), frame.begin(), frame.end());
    unit.receiveFromConsole(wire.data(), wire.size());
    const auto frames = decodeFrames(unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].start, kAck);
    EXPECT_EQ(frames[0].address, id);
    EXPECT_TRUE(frames[0].lrcGood);
    EXPECT_EQ(frames[0].message.at(0), 0x96);
}

}  // namespace
}  // namespace halvex::sim::testing
