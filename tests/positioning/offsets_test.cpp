#include <gtest/gtest.h>

#include <cmath>

#include "tests/positioning/pages_rig.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;
using halvex::test::message;

TEST(OffsetChange, EachChangeSendsItsAnglesThenRereadsLimitsAndPresetsWithThePageLocked) {
    PagesRig rig;
    rig.unit.state().settings.panOffset = 1500;
    rig.unit.state().presets.at(3).pan = 4000;
    rig.window->SSTab1().setCurrentIndex(2);
    // The lock: tabs enabled, programs' moves refused, heading, pan and
    // tilt captions.
    auto look = [&] {
        return QStringLiteral("%1 %2 %3 %4 %5")
            .arg(rig.enabled("SSTab1"))
            .arg(rig.window->session().pagesLocked())
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
        {"AlignCenBut", 15.0, 15.0, message<v::AlignToCentre>(), 0.0f, 0.0f, "   3    40.00"},
        {"SetCorBut", 300.0, -1.0,
         message<v::SetAngleOffsets>({{v::set_angle_offsets::kPan, 30000}, {v::set_angle_offsets::kTilt, -100}}),
         300.0f, -1.0f, "   3   340.00"},
        // Halves go to the even neighbour.
        {"AlignCorBut", 0.375, 2.5,
         message<v::AlignToCoordinates>({{v::align_to_coordinates::kPan, 38}, {v::align_to_coordinates::kTilt, 250}}),
         0.38f, 2.5f, "   3    40.38"},
        {"ZeroOffBut", 5.0, 5.0, message<v::ZeroOffsets>(), 0.0f, 0.0f, "   3    40.00"},
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
            if (frame.message[0] != v::JogMessage::kCode) {
                looks << look();
            }
        };
        rig.click(c.button);
        rig.line.onFrame = nullptr;

        EXPECT_EQ(rig.sent(), presetReads({c.change, softLimitRead(0), softLimitRead(1),
                                           softLimitRead(2), softLimitRead(3)}));
        EXPECT_EQ(looks, QStringList(37, "0 1 Reloading Tables Reinitializing Reinitializing"));
        EXPECT_EQ(look(), QStringLiteral("1 0 Angle Offsets Adjustment Pan Tilt"));
        EXPECT_FLOAT_EQ(rig.led("PanCorLED")->value(), c.panAfter);
        EXPECT_FLOAT_EQ(rig.led("TiltCorLED")->value(), c.tiltAfter);
        EXPECT_TRUE(rig.lines("PresetList")[3].startsWith(QLatin1String(c.preset3)));
        // The desired angles follow the next report.
        EXPECT_TRUE(rig.waitFor([&] { return rig.led("PanDesLED")->value() == c.panAfter; }));
    }

    // An angle that cannot be sent stops the change before the lock.
    rig.led("PanCorLED")->setValue(std::nan(""));
    rig.line.clear();
    rig.click("SetCorBut");
    rig.ticks(3);
    EXPECT_TRUE(rig.sent().empty());
    EXPECT_EQ(rig.faults.size(), 1);
    EXPECT_EQ(look(), QStringLiteral("1 0 Angle Offsets Adjustment Pan Tilt"));
    EXPECT_FALSE(rig.window->status().SyncDesiredPending);
}

TEST(OffsetReadings, ReadButtonsSendBareRequestsAndRepliesFillTheReadouts) {
    PagesRig rig;
    rig.window->SSTab1().setCurrentIndex(2);
    for (const char* button : {"GetAlignBut", "GetCenBut", "SetCenBut"}) {
        rig.click(button);
    }
    ASSERT_TRUE(rig.waitFor([&] { return rig.sent().size() == 3; }));
    EXPECT_EQ(rig.sent(), (Messages_{message<v::OffsetsRequest>(), message<v::CentreRequest>(),
                                     message<v::SetCentre>()}));
    rig.ticks(3);  // the unit's own answers are in

    struct Case {
        Message_ reply;
        const char *first, *firstText, *second, *secondText;
    };
    using Centre = v::centre_position;
    using Readings = v::encoder_alignment_finished;
    namespace h = v::homing_cycle_finished;
    // Setting the centre is answered with the centre under its own code.
    const Message_ centreSet =
        test::withCode<v::SetCentre>(message<v::CentrePosition>({{Centre::kPan, 1}}));
    const auto homing = [](std::initializer_list<v::Bit<v::HomingCycleFinished>> found) {
        return test::withBits(message<v::HomingCycleFinished>({{h::kPan, 16}, {h::kTilt, 32}}),
                              found);
    };
    const Case cases[] = {
        {message<v::CentrePosition>({{Centre::kPan, 2048}, {Centre::kTilt, -1}}), "Label1_18",
         "2048", "Label1_19", "-1"},
        {centreSet, "Label1_18", "1", "Label1_19", "0"},
        {message<v::EncoderAlignmentFinished>({{Readings::kPan, 1}, {Readings::kTilt, 258}}),
         "Label39", "1", "Label40", "258"},
        {homing({h::kTiltIndexFound}), "Pindex", "No Index", "Tindex", "32"},
        {homing({h::kPanIndexFound}), "Pindex", "16", "Tindex", "No Index"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.first);
        rig.inject(c.reply);
        EXPECT_EQ(rig.text(c.first), QLatin1String(c.firstText));
        EXPECT_EQ(rig.text(c.second), QLatin1String(c.secondText));
    }
    rig.inject(message<v::AngleOffsets>(
        {{v::angle_offsets::kPan, 30000}, {v::angle_offsets::kTilt, -1000}}));
    EXPECT_FLOAT_EQ(rig.led("PanCorLED")->value(), 300.0f);
    EXPECT_FLOAT_EQ(rig.led("TiltCorLED")->value(), -10.0f);
    // Each "CL" clears its own read-out.
    rig.click("ClrLEDBut_3");
    EXPECT_FLOAT_EQ(rig.led("PanCorLED")->value(), 300.0f);
    EXPECT_FLOAT_EQ(rig.led("TiltCorLED")->value(), 0.0f);
    rig.click("ClrLEDBut_2");
    EXPECT_FLOAT_EQ(rig.led("PanCorLED")->value(), 0.0f);
}
