#include <gtest/gtest.h>

#include "tests/positioning/pages_rig.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;
using halvex::test::message;

namespace {
// The preset commands' codes, each answered by a preset record.
constexpr Byte kRead = v::PresetRequest::kCode;
constexpr Byte kStore = v::StorePreset::kCode;
constexpr Byte kStoreCurrent = v::StoreCurrentPosition::kCode;
constexpr Byte kAddLenses = v::AddLensPositions::kCode;

Message_ presetReply(Byte code, int number, std::int32_t pan, std::int32_t tilt,
                     std::array<Byte, 4> lens = {}) {
    namespace r = v::preset_record;
    Message_ reply =
        message<v::PresetRecord>({{r::kPreset, number}, {r::kPan, pan}, {r::kTilt, tilt}});
    for (std::size_t i = 0; i < lens.size(); ++i) {
        v::put(reply, r::kLens.at(i), lens[i]);
    }
    reply[0] = code;
    return reply;
}
}  // namespace

TEST(PresetReplies, EachReplyFormatsItsEntryAndSelectsIt) {
    PagesRig rig;
    struct Case {
        Message_ reply;
        int row;  // where the entry lands
        const char* entry;
        int count, current;
    };
    // clang-format off
    const Case cases[] = {
        {presetReply(kRead, 0, -12345, 1050, {1, 22, 133, 255}), 0,
         "   0  -123.45    10.50     1    22   133   255", 1, 0},
        {presetReply(kStoreCurrent, 1, 5, -50), 1, "   1     0.05    -0.50     0     0     0     0", 2, 1},
        {presetReply(kAddLenses, 2, 36000, 9000), 2, "   2   360.00    90.00     0     0     0     0", 3, 2},
        // Past the end: appended, and no position 7 to select.
        {presetReply(kRead, 7, 700, 0), 3, "   7     7.00     0.00     0     0     0     0", 4, 2},
        // An existing entry is replaced in place.
        {presetReply(kStore, 1, -4500, 1234), 1, "   1   -45.00    12.34     0     0     0     0", 4, 1},
        // Preset 32 is the table's last entry.
        {presetReply(kRead, 32, 3200, 0), 4, "  32    32.00     0.00     0     0     0     0", 5, 1},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entry);
        rig.inject(c.reply);
        ASSERT_EQ(rig.lines("PresetList").size(), c.count);
        EXPECT_EQ(rig.lines("PresetList")[c.row], QLatin1String(c.entry));
        EXPECT_EQ(rig.list("PresetList")->currentRow(), c.current);
    }

    // Past the table: only that reply stops.
    rig.inject(presetReply(kRead, 33, 100, 0));
    EXPECT_TRUE(rig.faults.size() == 1 &&
                rig.faults[0].startsWith("Run-time error 9: Subscript out of range"))
        << rig.faults.join('|').toStdString();
    EXPECT_EQ(rig.lines("PresetList").size(), 5);

    // The columns follow the controller type the unit reports; an unknown
    // type removes the entry and puts nothing in its place.
    rig.unit.state().options.variant = 1;
    ASSERT_TRUE(rig.waitFor([&] { return rig.window->status().UnitVariant() == 1; }));
    rig.inject(presetReply(kRead, 0, 100, 200, {9, 8, 7, 6}));
    EXPECT_EQ(rig.lines("PresetList")[0], QStringLiteral("   0     1.00     2.00     9     8"));
    rig.unit.state().options.variant = 2;
    ASSERT_TRUE(rig.waitFor([&] { return rig.window->status().UnitVariant() == 2; }));
    rig.inject(presetReply(kRead, 0, 300, 400));
    EXPECT_EQ(rig.lines("PresetList").size(), 4);
}

TEST(PresetCommands, ReloadFillsTheListCommandsUseTheSelectionClearReloads) {
    PagesRig rig;
    // Without a selection nothing goes out, and each click stops alone.
    for (const char* button : {"SavePreBut", "SaveCurPreBut", "AddAuxBut"}) {
        rig.click(button);
    }
    rig.ticks(3);
    EXPECT_TRUE(rig.sent().empty());
    EXPECT_EQ(rig.faults.size(), 3);

    // A reload fills the list and selects the first entry.
    for (int n = 0; n < 32; ++n) {
        rig.unit.state().presets.at(n).pan = n * 150;
    }
    finish(rig.window->events().presetsReload());
    EXPECT_EQ(rig.sent(), presetReads());
    ASSERT_EQ(rig.lines("PresetList").size(), 32);
    EXPECT_EQ(rig.list("PresetList")->currentRow(), 0);
    // Choosing an entry shows its angles, the first entry's too.
    rig.selectRow("PresetList", 3);
    EXPECT_FLOAT_EQ(rig.led("PanPreLED")->value(), 4.5f);
    rig.selectRow("PresetList", 0);
    EXPECT_FLOAT_EQ(rig.led("PanPreLED")->value(), 0.0f);

    rig.line.clear();
    rig.selectRow("PresetList", 2, true);
    // The save goes to the selected preset, not to the one last gone to.
    rig.selectRow("PresetList", 3);
    // Halves go to the even neighbour: 0.125 -> 12.
    rig.led("PanPreLED")->setValue(0.125);
    rig.led("TiltPreLED")->setValue(-1.0);
    rig.click("SavePreBut");
    rig.click("SaveCurPreBut");
    rig.click("AddAuxBut");
    ASSERT_TRUE(rig.waitFor([&] { return rig.sent().size() == 4; }));
    namespace store = v::store_preset;
    EXPECT_EQ(
        rig.sent(),
        (Messages_{
            message<v::GoToPreset>({{v::go_to_preset::kPreset, 2}}),
            message<v::StorePreset>({{store::kPreset, 3}, {store::kPan, 12}, {store::kTilt, -100}}),
            message<v::StoreCurrentPosition>({{v::store_current_position::kPreset, 3}}),
            message<v::AddLensPositions>({{v::add_lens_positions::kPreset, 3}})}));

    // Clear: its caption shows until the reload is over, and one more reply
    // (a jog report) comes between the clear and the reload.
    rig.line.clear();
    QStringList captions;  // at the clear and at the last preset's request
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message == message<v::ClearAllPresets>() || frame.message == presetRead(31)) {
            captions << rig.text("ClearPreBut");
        }
    };
    rig.click("ClearPreBut");
    EXPECT_EQ(captions, QStringList(2, "Clearing And Reloading Presets"));
    EXPECT_EQ(rig.text("ClearPreBut"), QStringLiteral("Clear All Preset Entries To 0/0"));
    EXPECT_EQ(rig.window->link().Timer4().interval(), 250);
    const Messages_ all = rig.line.messages();
    const auto clear = std::find(all.begin(), all.end(), message<v::ClearAllPresets>());
    const auto reload = std::find(all.begin(), all.end(), presetRead(0));
    ASSERT_LT(clear, reload);
    EXPECT_NE(
        std::find_if(clear, reload, [](const Message_& m) { return m[0] == v::JogMessage::kCode; }),
        reload);
    EXPECT_TRUE(rig.lines("PresetList")[31].startsWith(QStringLiteral("  31     0.00")));
}
