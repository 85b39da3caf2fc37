#pragma once

// Talks to a unit model the way the console does: builds command frames,
// reads the unit's reply frames back and steps time.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "protocol/frame.h"
#include "protocol/vocabulary.h"
#include "sim/unit.h"
#include "tests/support/messages.h"

namespace halvex::sim::testing {

struct DecodedFrame {
    Byte start = 0;
    Byte address = 0;
    std::vector<Byte> message;  // code and payload, no LRC
    bool lrcGood = false;
};

// Splits a byte stream into unit frames (ACK or NAK to ETX), unstuffed.
inline std::vector<DecodedFrame> decodeFrames(const std::vector<Byte>& wire) {
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

inline std::vector<Byte> joined(std::vector<Byte> first, const std::vector<Byte>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

inline std::vector<Byte> readPreset(int preset) {
    return test::message<vocab::PresetRequest>({{vocab::preset_request::kPreset, preset}});
}
// A preset record, lenses at zero, under the code of the command answered.
template <class Command = vocab::PresetRecord>
std::vector<Byte> presetRecord(int preset, std::int32_t pan = 0, std::int32_t tilt = 0) {
    namespace p = vocab::preset_record;
    return test::withCode<Command>(test::message<vocab::PresetRecord>(
        {{p::kPreset, preset}, {p::kPan, pan}, {p::kTilt, tilt}}));
}

inline std::vector<Byte> storePreset(int preset, std::int32_t pan, std::int32_t tilt = 0) {
    namespace s = vocab::store_preset;
    return test::message<vocab::StorePreset>(
        {{s::kPreset, preset}, {s::kPan, pan}, {s::kTilt, tilt}});
}
inline std::vector<Byte> appendStep(int tour, int preset, int dwell) {
    namespace a = vocab::append_tour_step;
    return test::message<vocab::AppendTourStep>(
        {{a::kTour, tour}, {a::Step::kPreset, preset}, {a::Step::kDwell, dwell}});
}
// A tour step under the code of `Command`: the answer to it or, for the
// commands of the same layout, the command itself.
template <class Command = vocab::TourStep>
std::vector<Byte> tourStep(int tour, int step, int preset = 0, int dwell = 0) {
    namespace t = vocab::tour_step;
    return test::withCode<Command>(test::message<vocab::TourStep>({{t::kTour, tour},
                                                                   {t::kStep, step},
                                                                   {t::Step::kPreset, preset},
                                                                   {t::Step::kDwell, dwell}}));
}

// Bytes passed through to camera 1.
inline std::vector<Byte> toCamera1(const std::vector<Byte>& bytes) {
    const int count = static_cast<int>(bytes.size());
    auto message = test::message<vocab::CameraTransmit>({{vocab::camera_transmit::kCount, count}},
                                                        vocab::camera_transmit::kData + count);
    std::copy(bytes.begin(), bytes.end(), message.begin() + vocab::camera_transmit::kData);
    return message;
}

class UnitHarness {
  public:
    explicit UnitHarness(const UnitOptions& options = {})
        : unit(options), id(options.id.value_or(0)) {}

    // Sends one command frame to `id` and returns every frame that came back.
    std::vector<DecodedFrame> send(const std::vector<Byte>& message) {
        const auto wire = encodeFrame(kStx, id, message, id);
        unit.receiveFromConsole(wire.data(), wire.size());
        return decodeFrames(unit.takeOutput());
    }
    // The message of the single good ACK reply; fails the test otherwise.
    std::vector<Byte> exchange(const std::vector<Byte>& message) {
        const auto frames = send(message);
        EXPECT_EQ(frames.size(), 1u) << "command 0x" << std::hex << int(message.at(0));
        if (frames.size() != 1) {
            return {};
        }
        EXPECT_EQ(frames[0].start, kAck);
        EXPECT_EQ(frames[0].address, id);
        EXPECT_TRUE(frames[0].lrcGood);
        return frames[0].message;
    }
    std::vector<Byte> jog(const std::vector<vocab::jog::B>& flags = {}, int pan = 0, int tilt = 0) {
        auto message = test::message<vocab::JogMessage>(
            {{vocab::jog::kPanSpeed, pan}, {vocab::jog::kTiltSpeed, tilt}});
        for (const auto& bit : flags) {
            message = test::withBits(message, {bit});
        }
        return exchange(message);
    }
    // Moves the clock on in 100 ms steps, jogging at speed 0 after each when
    // asked, as the console does.
    void advance(std::int64_t ms, bool jogSender = false) {
        const std::int64_t end = now + ms;
        while (now < end) {
            now = std::min(end, now + 100);
            unit.advanceTo(now);
            if (jogSender) {
                jog();
            }
        }
    }

    Unit unit;
    Byte id;  // the address commands go to and replies come from
    std::int64_t now = 0;
};

}  // namespace halvex::sim::testing
