#include <gtest/gtest.h>

#include <cmath>

#include "tests/positioning/pages_rig.h"

using namespace halvex;
using namespace halvex::testing;

TEST(OffsetChange, EachChangeSendsItsAnglesThenRereadsLimitsAndPresetsWithThePageLocked) {
    PagesRig rig;
    rig.unit.state().settings.panOffset = 1500;
    rig.unit.state().presets.at(3).pan = 4000;
    rig.window->SSTab1().setCurrentIndex(2);
    // The lock: tabs enabled, heading, pan and tilt captions.
    auto look = [&] {
        return QStringLiteral("%1 %2 %3 %4")
            .arg(rig.enabled("SSTab1"))
            .arg(rig.text("Label2_6"), rig.text("Label2_0"), rig.text("Label2_1"));
    };
    struct Case {
        const char* button;
        double pan, tilt;  // entered before the click
        Message_ change;
        float panAfter, tiltAfter;  // the unit's answer
        const char* preset3;
    };
    // clang-format off
    const Case cases[] = {
        // The platform is at the mechanical centre, so it reads 0 after.
        {"AlignCenBut", 15.0, 15.0, {0x82}, 0.0f, 0.0f, "   3    40.00"},
        // 30000 is 30 75 00; halves go to the even neighbour.
        {"SetCorBut", 300.0, -1.0, {0x80, 0x30, 0x75, 0x00, 0x9C, 0xFF, 0xFF}, 300.0f, -1.0f, "   3   340.00"},
        {"AlignCorBut", 0.375, 2.5, {0x83, 38, 0, 0, 250, 0, 0}, 0.38f, 2.5f, "   3    40.38"},
        {"ZeroOffBut", 5.0, 5.0, {0x84}, 0.0f, 0.0f, "   3    40.00"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.button);
        rig.led("PanCorLED")->setValue(c.pan);
        rig.led("TiltCorLED")->setValue(c.tilt);
        rig.led("PanDesLED")->setValue(33.0);
        rig.line.clear();
        QStringList looks;  // while each request reached the unit
        rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
            if (frame.message[0] != 0x31) {
                looks << look();
            }
        };
        rig.click(c.button);
        rig.line.onFrame = nullptr;

        EXPECT_EQ(rig.sent(),
                  presetReads({c.change, {0x81, 0x80}, {0x81, 0x81}, {0x81, 0x82}, {0x81, 0x83}}));
        EXPECT_EQ(looks, QStringList(37, "0 Reloading Tables Reinitializing Reinitializing"));
        EXPECT_EQ(look(), QStringLiteral("1 Angle Offsets Adjustment Pan Tilt"));
        EXPECT_FLOAT_EQ(rig.led("PanCorLED")->value(), c.panAfter);
        EXPECT_FLOAT_EQ(rig.led("TiltCorLED")->value(), c.tiltAfter);
        EXPECT_TRUE(rig.lines("PresetList")[3].startsWith(QLatin1String(c.preset3)));
        EXPECT_FALSE(rig.window->state().SendInProgress);
        // The desired angles follow the next report.
        EXPECT_TRUE(rig.waitFor([&] { return rig.led("PanDesLED")->value() == c.panAfter; }));
    }
    EXPECT_EQ(rig.text("Label13_0"), QStringLiteral("170.00"));

    // An angle that cannot be sent stops the change before the lock.
    rig.led("PanCorLED")->setValue(std::nan(""));
    rig.line.clear();
    rig.click("SetCorBut");
    rig.ticks(3);
    EXPECT_TRUE(rig.sent().empty());
    EXPECT_EQ(rig.faults.size(), 1);
    EXPECT_EQ(look(), QStringLiteral("1 Angle Offsets Adjustment Pan Tilt"));
    EXPECT_FALSE(rig.window->status().SyncDesiredPending);
}

TEST(OffsetReadings, ReadButtonsSendBareRequestsAndRepliesFillTheReadouts) {
    PagesRig rig;
    rig.window->SSTab1().setCurrentIndex(2);
    for (const char* button : {"GetAlignBut", "GetCenBut", "SetCenBut"}) {
        rig.click(button);
    }
    ASSERT_TRUE(rig.waitFor([&] { return rig.sent().size() == 3; }));
    EXPECT_EQ(rig.sent(), (Messages_{{0x85}, {0x90}, {0x91}}));
    rig.ticks(3);  // the unit's own answers are in

    struct Case {
        Message_ reply;
        const char *first, *firstText, *second, *secondText;
    };
    const Case cases[] = {
        {{0x90, 0x00, 0x08, 0x00, 0xFF, 0xFF, 0xFF}, "Label1_18", "2048", "Label1_19", "-1"},
        {{0x91, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00}, "Label1_18", "1", "Label1_19", "0"},
        {{0x9D, 0x01, 0x00, 0x00, 0x02, 0x01, 0x00}, "Label39", "1", "Label40", "258"},
        {{0x9E, 2, 0x10, 0x00, 0x00, 0x20, 0x00, 0x00}, "Pindex", "No Index", "Tindex", "32"},
        {{0x9E, 1, 0x10, 0x00, 0x00, 0x20, 0x00, 0x00}, "Pindex", "16", "Tindex", "No Index"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.first);
        rig.inject(c.reply);
        EXPECT_EQ(rig.text(c.first), QLatin1String(c.firstText));
        EXPECT_EQ(rig.text(c.second), QLatin1String(c.secondText));
    }
    rig.inject({0x85, 0x30, 0x75, 0x00, 0x18, 0xFC, 0xFF});
    EXPECT_FLOAT_EQ(rig.led("PanCorLED")->value(), 300.0f);
    EXPECT_FLOAT_EQ(rig.led("TiltCorLED")->value(), -10.0f);

    // "CL" clears its own LED and sends nothing.
    EXPECT_EQ(rig.text("ClrLEDBut_2"), QStringLiteral("CL"));
    rig.line.clear();
    rig.click("ClrLEDBut_2");
    EXPECT_EQ(rig.led("PanCorLED")->value(), 0.0);
    EXPECT_FLOAT_EQ(rig.led("TiltCorLED")->value(), -10.0f);
    rig.click("ClrLEDBut_3");
    EXPECT_EQ(rig.led("TiltCorLED")->value(), 0.0);
    EXPECT_TRUE(rig.sent().empty());
}
