#include <gtest/gtest.h>

#include <QPushButton>
#include <QToolButton>

#include "tests/positioning/positioning_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
Message_ presetReply(Byte code, Byte number, std::int32_t pan, std::int32_t tilt,
                     std::array<Byte, 4> lens = {}) {
    Message_ reply{code, number};
    for (Byte b : positionBytes(pan)) {
        reply.push_back(b);
    }
    for (Byte b : positionBytes(tilt)) {
        reply.push_back(b);
    }
    reply.insert(reply.end(), lens.begin(), lens.end());
    return reply;
}

double ledValue(PositioningRig& rig, const char* name) {
    return rig.find<LedDisplay>(QString::fromLatin1(name))->value();
}
}  // namespace

TEST(PresetReply, FormatsNegativeAnglesAndLensColumnsAndShowsThePreset) {
    PositioningRig rig;
    QListWidget* list = rig.list("PresetList");
    EXPECT_EQ(list->font().family(), QStringLiteral("Courier New"));

    // Pan -123.45 degrees arrives as C7 CF FF.
    rig.inject({0x40, 0, 0xC7, 0xCF, 0xFF, 0x1A, 0x04, 0x00, 1, 22, 133, 255});
    ASSERT_EQ(list->count(), 1);
    EXPECT_EQ(list->item(0)->text(),
              QStringLiteral("   0  -123.45    10.50     1    22   133   255"));
    EXPECT_EQ(list->currentRow(), 0);
    EXPECT_FLOAT_EQ(ledValue(rig, "PanPreLED"), -123.45f);
    EXPECT_FLOAT_EQ(ledValue(rig, "TiltPreLED"), 10.5f);

    // Every store reply carries a record and is handled alike.
    rig.inject(presetReply(0x42, 1, 5, -50));
    rig.inject(presetReply(0x43, 2, 36000, 9000));
    EXPECT_EQ(list->item(1)->text(),
              QStringLiteral("   1     0.05    -0.50     0     0     0     0"));
    EXPECT_EQ(list->item(2)->text(),
              QStringLiteral("   2   360.00    90.00     0     0     0     0"));
    EXPECT_EQ(list->currentRow(), 2);
    EXPECT_TRUE(rig.faults.isEmpty());
}

TEST(PresetReply, InsertsPastTheEndAndReplacesAnExistingEntry) {
    PositioningRig rig;
    QListWidget* list = rig.list("PresetList");
    for (Byte n = 0; n < 3; ++n) {
        rig.inject(presetReply(0x40, n, n * 100, 0));
    }
    rig.inject(presetReply(0x40, 7, 700, 0));
    ASSERT_EQ(list->count(), 4);
    EXPECT_TRUE(list->item(3)->text().startsWith(QStringLiteral("   7     7.00")));
    // There is no position 7 to select: the selection stays where it was.
    EXPECT_EQ(list->currentRow(), 2);

    rig.inject(presetReply(0x41, 1, -4500, 1234));
    ASSERT_EQ(list->count(), 4);
    EXPECT_EQ(list->item(1)->text(),
              QStringLiteral("   1   -45.00    12.34     0     0     0     0"));
    EXPECT_TRUE(list->item(2)->text().startsWith(QStringLiteral("   2     2.00")));
    EXPECT_FLOAT_EQ(ledValue(rig, "PanPreLED"), -45.0f);
}

TEST(PresetReply, ColumnsFollowTheControllerType) {
    PositioningRig rig;
    QListWidget* list = rig.list("PresetList");
    rig.status.StatusBytes[3] = 1;  // no second camera
    rig.inject(presetReply(0x40, 0, 100, 200, {9, 8, 7, 6}));
    EXPECT_EQ(list->item(0)->text(), QStringLiteral("   0     1.00     2.00     9     8"));

    // An unknown type removes the old entry and puts nothing in its place.
    rig.status.StatusBytes[3] = 2;
    rig.inject(presetReply(0x40, 0, 300, 400));
    EXPECT_EQ(list->count(), 0);
}

TEST(PresetReply, PresetNumberPastTheTableStopsOnlyThatReply) {
    PositioningRig rig;
    QListWidget* list = rig.list("PresetList");
    rig.inject(presetReply(0x40, 0, 100, 0));
    rig.inject(presetReply(0x40, 33, 100, 0));
    ASSERT_EQ(rig.faults.size(), 1);
    EXPECT_TRUE(
        rig.faults.front().startsWith(QStringLiteral("Run-time error 9: Subscript out of range")))
        << rig.faults.front().toStdString();
    EXPECT_EQ(list->count(), 1);
    // Preset 32 is the last table entry: kept, and the link goes on working.
    rig.inject(presetReply(0x40, 32, 3200, 0));
    EXPECT_EQ(rig.faults.size(), 1);
    EXPECT_EQ(list->count(), 2);
}

TEST(PresetReload, AsksForEachPresetOnlyAfterThePreviousReply) {
    PositioningRig rig;
    for (int n = 0; n < kUnitPresets; ++n) {
        rig.model.presets[static_cast<std::size_t>(n)].pan = n * 150;
    }
    // The unit keeps quiet about preset 3 until we let it answer.
    bool heldBack = true;
    std::size_t sentWhileHeld = 0;
    rig.model.onFrame = [&](const Message_& m) {
        if (m[0] == 0x40 && m[1] == 3 && heldBack) {
            rig.model.silentCodes = {0x40};
            QTimer::singleShot(200, [&] {
                sentWhileHeld = rig.sent().size();
                heldBack = false;
                rig.model.silentCodes.clear();
                rig.inject(*rig.model.answer({0x40, 3}));
            });
        } else if (m[0] == 0x40) {
            rig.model.silentCodes.clear();
        }
    };
    emit rig.events.presetsReloadRequested();

    EXPECT_EQ(sentWhileHeld, 4u);
    const auto sent = rig.sent();
    ASSERT_EQ(sent.size(), 32u);
    for (int n = 0; n < kUnitPresets; ++n) {
        EXPECT_EQ(sent[static_cast<std::size_t>(n)], (Message_{0x40, static_cast<Byte>(n)}));
    }
    QListWidget* list = rig.list("PresetList");
    ASSERT_EQ(list->count(), 32);
    EXPECT_TRUE(list->item(31)->text().startsWith(QStringLiteral("  31    46.50")));
    EXPECT_EQ(list->currentRow(), 0);
    EXPECT_FALSE(rig.state.SendInProgress);
}

TEST(PresetCommands, MoveStoreAndAddUseTheSelectedPosition) {
    PositioningRig rig;
    emit rig.events.presetsReloadRequested();
    rig.clearSent();

    rig.doubleClickRow("PresetList", 2);
    rig.settle();
    ASSERT_EQ(rig.sent().size(), 1u);
    EXPECT_EQ(rig.sent()[0], (Message_{0x32, 2}));

    // Halves go to the even neighbour: 0.125 -> 12; -1 -> 9C FF FF.
    rig.find<LedDisplay>(QStringLiteral("PanPreLED"))->setValue(0.125);
    rig.find<LedDisplay>(QStringLiteral("TiltPreLED"))->setValue(-1.0);
    rig.clearSent();
    rig.click("SavePreBut");
    rig.settle();
    ASSERT_EQ(rig.sent().size(), 1u);
    EXPECT_EQ(rig.sent()[0], (Message_{0x41, 2, 0x0C, 0x00, 0x00, 0x9C, 0xFF, 0xFF}));
    // The unit's record reply refreshes the entry.
    EXPECT_TRUE(rig.list("PresetList")
                    ->item(2)
                    ->text()
                    .startsWith(QStringLiteral("   2     0.12    -1.00")));

    rig.clearSent();
    rig.click("SaveCurPreBut");
    rig.click("AddAuxBut");
    rig.settle();
    const auto sent = rig.sent();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0], (Message_{0x42, 2}));
    EXPECT_EQ(sent[1], (Message_{0x43, 2}));
    EXPECT_FALSE(rig.state.SendInProgress);
}

TEST(PresetCommands, NothingIsSentWithoutASelection) {
    PositioningRig rig;
    rig.click("SavePreBut");
    rig.click("SaveCurPreBut");
    rig.click("AddAuxBut");
    rig.settle();
    EXPECT_TRUE(rig.sent().empty());
    EXPECT_EQ(rig.faults.size(), 3);
    EXPECT_FALSE(rig.state.SendInProgress);
}

TEST(PresetClear, ShowsItsCaptionWhileClearingAndReloadsAfterTwoReplies) {
    PositioningRig rig;
    rig.jogging = true;
    rig.model.presets[4].pan = 1000;
    emit rig.events.presetsReloadRequested();
    rig.clearSent();
    rig.link.Timer4().setInterval(20000);

    auto* button = rig.find<QPushButton>(QStringLiteral("ClearPreBut"));
    QString captionAtClear;
    QString captionAtReload;
    rig.model.onFrame = [&](const Message_& m) {
        if (m[0] == 0x94) {
            captionAtClear = button->text();
        } else if (m[0] == 0x40 && m[1] == 31) {
            captionAtReload = button->text();
        }
    };
    rig.click("ClearPreBut");

    EXPECT_EQ(captionAtClear, QStringLiteral("Clearing And Reloading Presets"));
    EXPECT_EQ(captionAtReload, QStringLiteral("Clearing And Reloading Presets"));
    EXPECT_EQ(button->text(), QStringLiteral("Clear All Preset Entries To 0/0"));
    EXPECT_EQ(rig.link.Timer4().interval(), 250);

    const auto sent = rig.sent();
    ASSERT_EQ(sent.size(), 33u);
    EXPECT_EQ(sent[0], (Message_{0x94}));
    // Between the clear and the reload one more reply (a jog report) came.
    bool jogBetween = false;
    bool seenClear = false;
    for (const auto& frame : rig.scripted.frames()) {
        if (frame.message[0] == 0x94) {
            seenClear = true;
        } else if (seenClear && frame.message[0] == 0x31) {
            jogBetween = true;
        } else if (frame.message[0] == 0x40) {
            break;
        }
    }
    EXPECT_TRUE(jogBetween);
    EXPECT_TRUE(
        rig.list("PresetList")->item(4)->text().startsWith(QStringLiteral("   4     0.00")));
}

TEST(PresetSteps, PresetLedsStayWithinTheSoftLimits) {
    PositioningRig rig;
    rig.status.PanMinLimit = -170.0f;
    rig.status.PanMaxLimit = 170.0f;
    rig.status.TiltMinLimit = -45.0f;
    rig.status.TiltMaxLimit = 45.0f;
    rig.status.PanContinuous = true;  // only the desired pan ignores the limits
    auto* pan = rig.find<LedDisplay>(QStringLiteral("PanPreLED"));
    auto* tilt = rig.find<LedDisplay>(QStringLiteral("TiltPreLED"));
    auto arrow = [&](const char* spin, const char* which) {
        QTest::mouseClick(rig.find<QWidget>(QString::fromLatin1(spin))
                              ->findChild<QToolButton*>(QString::fromLatin1(which)),
                          Qt::LeftButton);
    };
    pan->setValue(-100.0);
    arrow("PanPreBut_4", "down");
    EXPECT_FLOAT_EQ(pan->value(), -170.0f);
    tilt->setValue(40.0);
    arrow("TiltPreBut_3", "up");
    EXPECT_FLOAT_EQ(tilt->value(), 45.0f);
    arrow("TiltPreBut_1", "down");
    EXPECT_FLOAT_EQ(tilt->value(), 44.9f);
    EXPECT_TRUE(rig.sent().empty());
}
