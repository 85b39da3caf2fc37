#include <gtest/gtest.h>

#include <QScrollBar>

#include "positioning/tour_step_line.h"
#include "sim/motion.h"
#include "tests/positioning/pages_rig.h"

using namespace halvex;
using namespace halvex::testing;

TEST(TourStepLine, TheCameraColumnIsLeftOutForTheSecondControllerType) {
    EXPECT_EQ(tourStepLine(0, 2 | 128, 0, 1), QStringLiteral(" 0   Pre  2    0 Secs  N "));
}

TEST(TourEdit, SelectingATourReadsItsStepsAndEachEditSendsItsBytes) {
    PagesRig rig;
    emit rig.window->events().presetsReloadRequested();
    rig.window->SSTab1().setCurrentIndex(3);  // the tour page offers the presets
    EXPECT_EQ(rig.lines("ScriptPreList"), rig.lines("PresetList"));
    EXPECT_EQ(rig.lines("ScriptPreList").size(), 32);
    auto* dwell = rig.find<QScrollBar>(QStringLiteral("WaitScroll"));
    for (int seconds : {1, 0, 2}) {
        dwell->setValue(seconds);
        EXPECT_EQ(rig.text("WaitLabel"),
                  QStringLiteral("Dwell %1 Sec%2").arg(seconds).arg(seconds == 1 ? "" : "s"));
    }

    for (sim::TourStep step : {sim::TourStep{5, 10}, {6 | 64, 3 | 128}, {31, 127}}) {
        rig.unit.state().tours.append(1, step);
    }
    QString captionsAtCount;
    rig.line.clear();
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message[0] == 0x56) {
            captionsAtCount = rig.text("ExecScriptBut") + '|' + rig.text("ClearScriptBut");
        }
    };
    rig.click("TourSel_1");
    EXPECT_EQ(captionsAtCount, QStringLiteral("Execute Tour 2|Clear Tour 2"));
    EXPECT_EQ(rig.sent(), (Messages_{{0x56, 1}, {0x51, 1, 0}, {0x51, 1, 1}, {0x51, 1, 2}}));
    EXPECT_EQ(rig.lines("ScriptList").join('|'),
              QStringLiteral(" 0   Pre  5   10 Secs  N       0| 1   Pre  6    3 Secs  Y       1|"
                             " 2   Pre 31  127 Secs  N       0"));
    EXPECT_EQ(rig.text("Label23"), QStringLiteral("3"));

    // An empty tour: the count is asked for and no step.
    rig.line.clear();
    rig.click("TourSel_0");
    EXPECT_EQ(rig.sent(), (Messages_{{0x56, 0}}));
    EXPECT_TRUE(rig.lines("ScriptList").isEmpty());
    EXPECT_EQ(rig.text("ExecScriptBut") + rig.text("Label23"), QStringLiteral("Execute Tour 10"));

    struct Case {
        const char *mode, *camera;
        bool blank;
        int step, preset, dwell;  // step -1: none selected
        Message_ request;
        int row;  // the line that shows the edit
        const char* line;
    };
    // clang-format off
    const Case cases[] = {
        {"Option1_0", "CamSel_1", true, -1, 5, 10, {0x52, 0, 69, 138}, 0, " 0   Pre  5   10 Secs  Y       1"},
        // Camera 3 sets bit 7 of the preset byte.
        {"Option1_0", "CamSel_2", false, -1, 1, 5, {0x52, 0, 129, 5}, 1, " 1   Pre  1    5 Secs  N       2"},
        {"Option1_1", "CamSel_0", false, 1, 4, 7, {0x53, 0, 1, 4, 7}, 1, " 1   Pre  4    7 Secs  N       0"},
        {"Option1_2", "CamSel_1", false, 0, 6, 7, {0x55, 0, 0, 70, 7}, 0, " 0   Pre  6    7 Secs  N       1"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.line);
        rig.click(c.mode);
        rig.click(c.camera);
        rig.find<QAbstractButton>(QStringLiteral("VBlankCheck"))->setChecked(c.blank);
        dwell->setValue(c.dwell);
        rig.list("ScriptList")->setCurrentRow(c.step);
        rig.line.clear();
        rig.selectRow("ScriptPreList", c.preset, true);
        EXPECT_TRUE(rig.waitFor([&] { return rig.lines("ScriptList").value(c.row) == c.line; }));
        EXPECT_EQ(rig.sent().at(0), c.request);
        // Insert and replace reload the tour; an append's reply adds the line.
        EXPECT_EQ(rig.sent().size() > 1 && rig.sent()[1] == Message_({0x56, 0}), c.step >= 0);
    }
    EXPECT_EQ(rig.lines("ScriptList").size(), 3);
    EXPECT_EQ(rig.lines("ScriptList")[2], QStringLiteral(" 2   Pre  1    5 Secs  N       2"));

    rig.line.clear();
    rig.selectRow("ScriptList", 1, true);
    EXPECT_EQ(rig.sent(), (Messages_{{0x54, 0, 1}, {0x56, 0}, {0x51, 0, 0}, {0x51, 0, 1}}));
    EXPECT_EQ(rig.lines("ScriptList").size(), 2);
    EXPECT_FALSE(rig.window->state().SendInProgress);

    // Insert and replace need a selected step.
    rig.list("ScriptList")->setCurrentRow(-1);
    rig.line.clear();
    for (const char* mode : {"Option1_1", "Option1_2"}) {
        rig.click(mode);
        rig.selectRow("ScriptPreList", 3, true);
    }
    rig.ticks(3);
    EXPECT_TRUE(rig.sent().empty());
    ASSERT_EQ(rig.shown.size(), 2u);
    EXPECT_EQ(rig.shown[0].title + ": " + rig.shown[0].text,
              "Could Not Insert Into Tour: You must select a position in the tour list to insert.");
    EXPECT_EQ(rig.shown[1].title + ": " + rig.shown[1].text,
              "Could Not Replace In The Tour: You must select a position in the tour list to "
              "replace.");

    // A replace reply rewrites its own line; only other step replies add one.
    rig.inject({0x55, 0, 0, 9, 4});
    EXPECT_EQ(rig.lines("ScriptList"), QStringList({" 0   Pre  9    4 Secs  N       0",
                                                    " 1   Pre  1    5 Secs  N       2"}));
    // Step replies never grow the list past the longest tour.
    for (int i = 0; i < 300; ++i) {
        rig.inject({0x52, 0, static_cast<Byte>(i % 200), 1, 5});
    }
    EXPECT_EQ(rig.list("ScriptList")->count(), 255);
}

TEST(TourRun, ExecutingLookLastsUntilAFaultAndAClearReloadsTheTour) {
    PagesRig rig;
    rig.unit.state().tours.append(1, {1, 5});
    rig.click("TourSel_1");
    rig.line.clear();
    rig.click("ExecScriptBut");
    ASSERT_TRUE(rig.waitFor([&] { return rig.text("ExecScriptBut") == "Executing Tour 2"; }));
    EXPECT_EQ(rig.sent(), (Messages_{{0x37, 1}}));
    auto editable = [&] {  // how many of the editing controls are enabled
        return rig.enabled("ScriptList") + rig.enabled("ScriptPreList") +
               rig.enabled("ClearScriptBut") + rig.enabled("TourSel_0") + rig.enabled("TourSel_1") +
               rig.enabled("TourSel_2");
    };
    EXPECT_EQ(editable(), 0);
    // Reports without faults leave it executing; a fault ends the look.
    rig.ticks(4);
    EXPECT_EQ(rig.text("ExecScriptBut"), QStringLiteral("Executing Tour 2"));
    rig.unit.state().motion.latchFault(sim::Fault::PanTimeout);
    ASSERT_TRUE(rig.waitFor([&] { return rig.text("ExecScriptBut") == "Execute Tour 2"; }));
    EXPECT_EQ(editable(), 6);

    rig.click("TourSel_2");
    rig.click("ExecScriptBut");
    ASSERT_TRUE(rig.waitFor([&] { return !rig.shown.empty(); }));
    EXPECT_EQ(rig.shown[0].title + ": " + rig.shown[0].text, "Execute Tour: The tour is empty.");
    EXPECT_EQ(rig.text("ExecScriptBut"), QStringLiteral("Execute Tour 3"));

    // Clear: the reply selects the tour it names and reloads it, empty.
    rig.click("TourSel_1");
    ASSERT_EQ(rig.lines("ScriptList").size(), 1);
    rig.line.clear();
    rig.click("ClearScriptBut");
    ASSERT_TRUE(rig.waitFor([&] { return rig.sent().size() == 2; }));
    EXPECT_EQ(rig.sent(), (Messages_{{0x50, 1}, {0x56, 1}}));
    EXPECT_TRUE(rig.lines("ScriptList").isEmpty());
    rig.unit.state().tours.append(0, {1, 1});
    rig.inject({0x50, 0});
    ASSERT_TRUE(rig.waitFor([&] { return rig.text("Label23") == "1"; }));
    EXPECT_TRUE(rig.find<QAbstractButton>(QStringLiteral("TourSel_0"))->isChecked());
    EXPECT_EQ(rig.text("ExecScriptBut"), QStringLiteral("Execute Tour 1"));

    // Tour count asks for the selected tour's count.
    rig.line.clear();
    rig.unit.state().tours.append(0, {2, 2});
    rig.click("Command3");
    ASSERT_TRUE(rig.waitFor([&] { return rig.text("Label23") == "2"; }));
    EXPECT_EQ(rig.sent(), (Messages_{{0x56, 0}}));

    // A clear reply naming a tour without a selector stops only that reply.
    rig.inject({0x50, 3});
    EXPECT_EQ(rig.faults.size(), 1);
}
