// libFuzzer target for what a Pelco-D keyboard sends: bytes through the frame
// assembler in pieces, each frame through the decoder and the speed mapping.
// Besides a crash or a sanitizer report, a finding is
//   - frames that depend on where the reads broke;
//   - a frame that is not in the input as it came, or whose checksum fails;
//   - bytes neither taken in a frame, dropped nor held for the next one;
//   - a decoded axis, speed or number outside what the bridge hands on.
//
// Input: the first byte sets the size of the pieces (1..16), the rest is
// what the keyboard sends.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

#include "remote/pelco_d/pelco_d_frames.h"

namespace {

namespace pelco_d = halvex::pelco_d;

[[noreturn]] void finding(const char* what) {
    std::fprintf(stderr, "pelco-d fuzzer: %s\n", what);
    std::abort();
}

struct Run {
    std::vector<pelco_d::Frame> frames;
    std::size_t dropped = 0;
    std::size_t pending = 0;
};

Run run(std::span<const std::uint8_t> bytes, std::size_t piece) {
    pelco_d::FrameAssembler assembler;
    Run result;
    for (std::size_t at = 0; at < bytes.size(); at += piece) {
        const auto taken = assembler.feed(bytes.subspan(at, std::min(piece, bytes.size() - at)));
        result.frames.insert(result.frames.end(), taken.begin(), taken.end());
    }
    result.dropped = assembler.dropped();
    result.pending = assembler.pending();
    return result;
}

bool isWay(int way) {
    return way >= -1 && way <= 1;
}

void checkDecoded(const pelco_d::Frame& frame) {
    const pelco_d::Command command = pelco_d::decode(frame);
    using Kind = pelco_d::Command::Kind;
    if (command.kind == Kind::Motion) {
        const pelco_d::Motion& m = command.motion;
        if (!isWay(m.pan) || !isWay(m.tilt) || !isWay(m.zoom) || !isWay(m.focus)) {
            finding("an axis moves some way other than one of two");
        }
        for (const std::uint8_t speed : {m.panSpeed, m.tiltSpeed}) {
            const int unit = pelco_d::unitJogSpeed(speed);
            if (unit < 0 || unit > 255 || (unit == 0) != (speed == 0)) {
                finding("a speed the unit's jog cannot carry");
            }
        }
    } else if (command.number < 0 || command.number > 255 ||
               (command.kind != Kind::Unsupported && command.number != frame.data2)) {
        finding("an extended command's number is not its data 2");
    }
    const int lens = pelco_d::lensJogSpeed(command.number);
    if (lens < 1 || lens > 127) {
        finding("a lens speed past the lens jog's");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const std::size_t piece = data[0] % 16 + 1;
    const std::span<const std::uint8_t> stream(data + 1, size - 1);

    const Run pieces = run(stream, piece);
    const Run whole = run(stream, stream.empty() ? 1 : stream.size());
    if (pieces.frames != whole.frames || pieces.dropped != whole.dropped ||
        pieces.pending != whole.pending) {
        finding("the frames depend on where the reads broke");
    }
    if (pieces.frames.size() * pelco_d::kFrameLength + pieces.dropped + pieces.pending !=
        stream.size()) {
        finding("bytes lost or counted twice");
    }
    if (pieces.pending >= pelco_d::kFrameLength) {
        finding("a whole frame held back");
    }
    // Every frame lies in the input as sent, in order.
    auto from = stream.begin();
    for (const pelco_d::Frame& frame : pieces.frames) {
        const auto bytes = pelco_d::encode(frame);
        from = std::search(from, stream.end(), bytes.begin(), bytes.end());
        if (from == stream.end()) {
            finding("a frame that is not in the input");
        }
        from += static_cast<std::ptrdiff_t>(bytes.size());
        checkDecoded(frame);
    }
    return 0;
}
