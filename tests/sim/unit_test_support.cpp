#include "tests/sim/unit_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace halvex::sim::testing {

std::vector<DecodedFrame> decodeFrames(const std::vector<Byte>& wire) {
    std::vector<DecodedFrame> frames;
    std::size_t i = 0;
    while (i < wire.size()) {
        if (wire[i] != kAck && wire[i] != kNak) {
            ++i;
            continue;
        }
        DecodedFrame frame;
        frame.start = wire[i++];
        std::vector<Byte> fields;
        for (; i < wire.size() && wire[i] != kEtx; ++i) {
            const bool escaped = wire[i] == kEsc && i + 1 < wire.size();
            fields.push_back(escaped ? static_cast<Byte>(wire[++i] & 0x7F) : wire[i]);
        }
        ++i;  // ETX
        if (fields.size() < 3) {
            continue;
        }
        frame.address = fields.front();
        frame.message.assign(fields.begin() + 1, fields.end() - 1);
        Byte lrc = frame.address;
        for (std::size_t k = 1; k < fields.size(); ++k) {
            lrc ^= fields[k];
        }
        frame.lrcGood = lrc == 0;
        frames.push_back(frame);
    }
    return frames;
}

std::int32_t angleAt(const std::vector<Byte>& message, std::size_t first) {
    return Build24(message.at(first + 2), message.at(first + 1), message.at(first));
}

std::vector<DecodedFrame> UnitHarness::send(const std::vector<Byte>& message, Byte address) {
    const auto wire = encodeFrame(kStx, address, message, address);
    unit.receiveFromConsole(wire.data(), wire.size());
    return decodeFrames(unit.takeOutput());
}

std::vector<Byte> UnitHarness::exchange(const std::vector<Byte>& message, Byte address) {
    const auto frames = send(message, address);
    EXPECT_EQ(frames.size(), 1u) << "command 0x" << std::hex << int(message.at(0));
    if (frames.size() != 1) {
        return {};
    }
    EXPECT_EQ(frames[0].start, kAck);
    EXPECT_EQ(frames[0].address, id);
    EXPECT_TRUE(frames[0].lrcGood);
    return frames[0].message;
}

void UnitHarness::advance(std::int64_t ms, bool jogSender) {
    const std::int64_t end = now + ms;
    while (now < end) {
        now = std::min(end, now + 100);
        unit.advanceTo(now);
        if (jogSender) {
            jog();
        }
    }
}

}  // namespace halvex::sim::testing
