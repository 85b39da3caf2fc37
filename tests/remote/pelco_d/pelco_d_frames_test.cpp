// Pelco-D frames gathered from a byte stream however it is cut: noise and
// frames with a bad checksum dropped, the next good frame taken.

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "remote/pelco_d/pelco_d_frames.h"

namespace halvex::pelco_d {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

// The frames taken from `bytes` fed in pieces of `piece` bytes.
std::vector<Frame> gather(const Bytes& bytes, std::size_t piece, FrameAssembler& assembler) {
    std::vector<Frame> frames;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        const std::size_t count = std::min(piece, bytes.size() - at);
        const auto taken = assembler.feed(std::span(bytes).subspan(at, count));
        frames.insert(frames.end(), taken.begin(), taken.end());
    }
    return frames;
}

struct StreamCase {
    const char* name;
    Bytes stream;
    std::vector<Frame> frames;
    std::size_t dropped;
};

// Camera 1: right at 0x20, left at 0x23 (from published command lists).
const Bytes kRight{0xFF, 0x01, 0x00, 0x02, 0x20, 0x00, 0x23};
const Bytes kLeft{0xFF, 0x01, 0x00, 0x04, 0x23, 0x00, 0x28};
const Frame kRightFrame{0x01, 0x00, 0x02, 0x20, 0x00};
const Frame kLeftFrame{0x01, 0x00, 0x04, 0x23, 0x00};

TEST(PelcoDFrames, FramesComeOutWhateverTheReadsAndTheNoise) {
    const StreamCase cases[] = {
        {"two frames glued", kRight + kLeft, {kRightFrame, kLeftFrame}, 0},
        {"noise before a frame", Bytes{0x00, 0x42, 0x17} + kLeft, {kLeftFrame}, 3},
        {"a doubled sync byte", Bytes{0xFF} + kRight, {kRightFrame}, 1},
        {"a bad checksum, then a good frame",
         Bytes{0xFF, 0x01, 0x00, 0x02, 0x20, 0x00, 0x24} + kLeft,
         {kLeftFrame},
         7},
        // Turbo puts 0xFF in the middle of the bad frame: a false start.
        {"a bad turbo frame, then a good one",
         Bytes{0xFF, 0x01, 0x00, 0x04, 0xFF, 0x00, 0x00} + kRight,
         {kRightFrame},
         7},
        {"a frame cut short by the next", Bytes{0xFF, 0x01, 0x00, 0x02} + kLeft, {kLeftFrame}, 4},
        {"a frame still to come", kRight + Bytes{0xFF, 0x01, 0x00}, {kRightFrame}, 0},
    };
    for (const StreamCase& c : cases) {
        for (std::size_t piece : {std::size_t{1}, std::size_t{3}, c.stream.size()}) {
            SCOPED_TRACE(::testing::Message() << c.name << ", pieces of " << piece);
            FrameAssembler assembler;
            EXPECT_EQ(gather(c.stream, piece, assembler), c.frames);
            EXPECT_EQ(assembler.dropped(), c.dropped);
        }
    }
}

}  // namespace
}  // namespace halvex::pelco_d
