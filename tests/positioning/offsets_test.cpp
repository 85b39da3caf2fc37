#include <gtest/gtest.h>

#include <QToolButton>
#include <cmath>

#include "tests/positioning/positioning_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
LedDisplay* led(PositioningRig& rig, const char* name) {
    return rig.find<LedDisplay>(QString::fromLatin1(name));
}
QString text(PositioningRig& rig, const char* name) {
    return rig.find<QLabel>(QString::fromLatin1(name))->text();
}

// What the console showed while one frame reached the unit.
struct LockView {
    bool tabsEnabled = true;
    QString heading, pan, tilt;
};
}  // namespace

TEST(OffsetChange, AlignToCenterReloadsLimitsThenPresetsWithThePageLocked) {
    PositioningRig rig;
    rig.model.panOffset = 1500;
    rig.model.tiltOffset = -250;
    rig.model.presets[3].pan = 4000;
    std::vector<LockView> views;
    rig.model.onFrame = [&](const Message_&) {
        views.push_back({rig.SSTab1->isEnabled(), text(rig, "Label2_6"), rig.Label2_0->text(),
                         rig.Label2_1->text()});
    };
    rig.click("AlignCenBut");

    std::vector<Message_> expected{{0x82}};
    for (Byte i = 0; i < 4; ++i) {
        expected.push_back({0x81, static_cast<Byte>(0x80 | i)});
    }
    for (Byte n = 0; n < 32; ++n) {
        expected.push_back({0x40, n});
    }
    EXPECT_EQ(rig.sent(), expected);
    ASSERT_EQ(views.size(), expected.size());
    for (const LockView& view : views) {
        EXPECT_FALSE(view.tabsEnabled);
        EXPECT_EQ(view.heading, QStringLiteral("Reloading Tables"));
        EXPECT_EQ(view.pan, QStringLiteral("Reinitializing"));
        EXPECT_EQ(view.tilt, QStringLiteral("Reinitializing"));
    }
    EXPECT_TRUE(rig.SSTab1->isEnabled());
    EXPECT_EQ(text(rig, "Label2_6"), QStringLiteral("Angle Offsets Adjustment"));
    EXPECT_EQ(rig.Label2_0->text(), QStringLiteral("Pan"));
    EXPECT_EQ(rig.Label2_1->text(), QStringLiteral("Tilt"));
    EXPECT_TRUE(rig.status.SyncDesiredPending);
    EXPECT_FALSE(rig.state.SendInProgress);
    // The unit's answer: offsets now zero; the preset table reloaded.
    EXPECT_EQ(led(rig, "PanCorLED")->value(), 0.0);
    EXPECT_EQ(rig.list("PresetList")->count(), 32);
    EXPECT_TRUE(
        rig.list("PresetList")->item(3)->text().startsWith(QStringLiteral("   3    40.00")));
}

TEST(OffsetChange, SetAndAlignSendTheEnteredAnglesAndShowTheReply) {
    PositioningRig rig;
    led(rig, "PanCorLED")->setValue(300.0);
    led(rig, "TiltCorLED")->setValue(-1.0);
    rig.click("SetCorBut");
    ASSERT_FALSE(rig.sent().empty());
    // 30000 is 30 75 00.
    EXPECT_EQ(rig.sent()[0], (Message_{0x80, 0x30, 0x75, 0x00, 0x9C, 0xFF, 0xFF}));
    EXPECT_FLOAT_EQ(led(rig, "PanCorLED")->value(), 300.0f);
    EXPECT_FLOAT_EQ(led(rig, "TiltCorLED")->value(), -1.0f);
    EXPECT_EQ(rig.sent().size(), 37u);

    rig.clearSent();
    led(rig, "PanCorLED")->setValue(0.375);
    led(rig, "TiltCorLED")->setValue(2.5);
    rig.click("AlignCorBut");
    ASSERT_EQ(rig.sent().size(), 37u);
    EXPECT_EQ(rig.sent()[0], (Message_{0x83, 38, 0, 0, 250, 0, 0}));

    rig.clearSent();
    rig.click("ZeroOffBut");
    ASSERT_EQ(rig.sent().size(), 37u);
    EXPECT_EQ(rig.sent()[0], (Message_{0x84}));
    EXPECT_EQ(led(rig, "PanCorLED")->value(), 0.0);
}

TEST(OffsetChange, AnAngleThatCannotBeSentStopsBeforeTheLock) {
    PositioningRig rig;
    led(rig, "PanCorLED")->setValue(std::nan(""));
    rig.click("SetCorBut");
    rig.settle();
    EXPECT_TRUE(rig.sent().empty());
    EXPECT_EQ(rig.faults.size(), 1);
    EXPECT_TRUE(rig.SSTab1->isEnabled());
    EXPECT_EQ(text(rig, "Label2_6"), QStringLiteral("Angle Offsets Adjustment"));
    EXPECT_FALSE(rig.status.SyncDesiredPending);
}

TEST(OffsetReadings, ReadButtonsSendBareRequestsAndRepliesFillTheReadouts) {
    PositioningRig rig;
    rig.click("GetAlignBut");
    rig.click("GetCenBut");
    rig.click("SetCenBut");
    rig.settle();
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x85}, {0x90}, {0x91}}));
    ASSERT_TRUE(rig.readHandlers.count("GetCenBut"));

    rig.inject({0x85, 0x30, 0x75, 0x00, 0x18, 0xFC, 0xFF});
    EXPECT_FLOAT_EQ(led(rig, "PanCorLED")->value(), 300.0f);
    EXPECT_FLOAT_EQ(led(rig, "TiltCorLED")->value(), -10.0f);

    rig.inject({0x90, 0x00, 0x08, 0x00, 0xFF, 0xFF, 0xFF});
    EXPECT_EQ(text(rig, "Label1_18"), QStringLiteral("2048"));
    EXPECT_EQ(text(rig, "Label1_19"), QStringLiteral("-1"));
    rig.inject({0x9D, 0x01, 0x00, 0x00, 0x02, 0x01, 0x00});
    EXPECT_EQ(text(rig, "Label39"), QStringLiteral("1"));
    EXPECT_EQ(text(rig, "Label40"), QStringLiteral("258"));
    rig.inject({0x9E, 2, 0x10, 0x00, 0x00, 0x20, 0x00, 0x00});
    EXPECT_EQ(text(rig, "Pindex"), QStringLiteral("No Index"));
    EXPECT_EQ(text(rig, "Tindex"), QStringLiteral("32"));
    rig.inject({0x9E, 1, 0x10, 0x00, 0x00, 0x20, 0x00, 0x00});
    EXPECT_EQ(text(rig, "Pindex"), QStringLiteral("16"));
    EXPECT_EQ(text(rig, "Tindex"), QStringLiteral("No Index"));
}

TEST(OffsetLeds, ClearButtonsAndStepsWithinTheirRanges) {
    PositioningRig rig;
    auto arrow = [&](const char* spin, const char* which) {
        QTest::mouseClick(rig.find<QWidget>(QString::fromLatin1(spin))
                              ->findChild<QToolButton*>(QString::fromLatin1(which)),
                          Qt::LeftButton);
    };
    led(rig, "TiltCorLED")->setValue(89.5);
    arrow("TiltCorBut_2", "up");
    EXPECT_FLOAT_EQ(led(rig, "TiltCorLED")->value(), 90.0f);
    led(rig, "PanCorLED")->setValue(-150.0);
    arrow("PanCorBut_4", "down");
    EXPECT_FLOAT_EQ(led(rig, "PanCorLED")->value(), -180.0f);

    EXPECT_EQ(rig.find<QAbstractButton>(QStringLiteral("ClrLEDBut_2"))->text(),
              QStringLiteral("CL"));
    rig.click("ClrLEDBut_2");
    EXPECT_EQ(led(rig, "PanCorLED")->value(), 0.0);
    EXPECT_FLOAT_EQ(led(rig, "TiltCorLED")->value(), 90.0f);
    rig.click("ClrLEDBut_3");
    EXPECT_EQ(led(rig, "TiltCorLED")->value(), 0.0);
    EXPECT_TRUE(rig.sent().empty());
}
