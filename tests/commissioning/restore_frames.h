#pragma once

// What the restore tests, with and without a window, look for in the frames
// a restore sends.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "commissioning/unit_restore.h"
#include "tests/commissioning/commissioning_rig.h"

namespace halvex::testing {

namespace v = halvex::vocab;

// A jog message with this bit of its flags set.
inline bool jogWith(const Message_& m, v::Bit<v::JogMessage> bit) {
    return isJog(m) && v::isSet(m[v::jog::kFlagsByte.offset], bit);
}

template <class M>
inline bool is(const Message_& m) {
    return m.front() == M::kCode;
}

// Both axes held, the lenses to these positions.
inline Message_ lensesTo(std::array<std::uint32_t, 4> lens) {
    namespace move = v::absolute_move_with_lenses;
    Message_ m = test::message<v::AbsoluteMoveWithLenses>(
        {{move::kPan, v::absolute_move::kHoldAxis}, {move::kTilt, v::absolute_move::kHoldAxis}});
    for (std::size_t i = 0; i < lens.size(); ++i) {
        v::put(m, move::kLens[i], lens[i]);
    }
    return m;
}

inline Message_ storePreset(int preset, std::int32_t pan, std::int32_t tilt) {
    namespace store = v::store_preset;
    return test::message<v::StorePreset>(
        {{store::kPreset, preset}, {store::kPan, pan}, {store::kTilt, tilt}});
}

// What stopped the restore; empty when nothing did.
inline QCoro::Task<std::string> faultOf(QCoro::Task<RestoreResult> restoring) {
    try {
        co_await std::move(restoring);
    } catch (const std::exception& fault) {
        co_return fault.what();
    }
    co_return std::string();
}

// A move to the soft limit at 90.00 was stopped: the platform was told to
// stop, the override is off, no limit was set, and it stands short of it.
inline void expectStoppedShortOfTheLimit(const std::vector<Message_>& sent, sim::Unit& unit) {
    const auto move = std::find_if(sent.begin(), sent.end(), is<v::AbsoluteMove>);
    ASSERT_NE(move, sent.end());
    EXPECT_EQ(std::count_if(move, sent.end(),
                            [](const Message_& m) { return jogWith(m, v::jog::kStop); }),
              1);
    EXPECT_EQ(std::count_if(move, sent.end(), is<v::SoftLimit>), 0);
    EXPECT_FALSE(unit.state().motion.overrideOn());
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !unit.state().motion.moving(); }, 3000));
    EXPECT_LT(unit.state().motion.mechanicalPan(), 9000);
    EXPECT_EQ(unit.state().settings.softLimits[0], 17000);
}

}  // namespace halvex::testing
