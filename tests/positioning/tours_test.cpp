#include <gtest/gtest.h>

#include <QListWidget>
#include <QScrollBar>

#include "positioning/tour_step_line.h"
#include "sim/motion.h"
#include "tests/positioning/pages_rig.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;
using halvex::test::message;

namespace {
Message_ countRequest(int tour) {
    return message<v::TourStepCountRequest>({{v::tour_step_count_request::kTour, tour}});
}
Message_ stepRequest(int tour, int step) {
    namespace r = v::tour_step_request;
    return message<v::TourStepRequest>({{r::kTour, tour}, {r::kStep, step}});
}
// A step reply of tour 0 under `code`, the default camera's, not blanking.
Message_ stepReply(Byte code, int step, int preset, int dwell) {
    namespace t = v::tour_step;
    Message_ reply = message<v::TourStep>(
        {{t::kStep, step}, {t::Step::kPreset, preset}, {t::Step::kDwell, dwell}});
    reply[0] = code;
    return reply;
}
}  // namespace

TEST(TourStepLine, TheCameraColumnIsLeftOutForTheSecondControllerType) {
    const TourStep step{0, 2, 2, 0, false};
    EXPECT_EQ(tourStepLine(step, 1), QStringLiteral(" 0   Pre  2    0 Secs  N "));
}

TEST(TourEdit, SelectingATourReadsItsStepsAndEachEditSendsItsBytes) {
    PagesRig rig;
    finish(rig.window->events().presetsReload());
    rig.window->SSTab1().setCurrentIndex(3);  // the tour page offers the presets
    EXPECT_EQ(rig.lines("ScriptPreList"), rig.lines("PresetList"));
    // The preset picked for a step stays picked when the page comes back,
    // the first one too.
    auto* choices = rig.find<QListWidget>(QStringLiteral("ScriptPreList"));
    for (const int row : {0, 5}) {
        choices->setCurrentRow(row);
        rig.window->SSTab1().setCurrentIndex(0);
        rig.window->SSTab1().setCurrentIndex(3);
        EXPECT_EQ(choices->currentRow(), row);
    }
    auto* dwell = rig.find<QScrollBar>(QStringLiteral("WaitScroll"));
    dwell->setValue(1);  // "Dwell 0 Secs" is in the tour page's pictures
    EXPECT_EQ(rig.text("WaitLabel"), QStringLiteral("Dwell 1 Sec"));

    for (sim::TourStep step : {sim::TourStep{5, 10}, {6 | 64, 3 | 128}, {31, 127}}) {
        rig.unit.state().tours.append(1, step);
    }
    QString captionsAtCount;
    rig.line.clear();
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message[0] == v::TourStepCountRequest::kCode) {
            captionsAtCount = rig.text("ExecScriptBut") + '|' + rig.text("ClearScriptBut");
        }
    };
    rig.click("TourSel_1");
    EXPECT_EQ(captionsAtCount, QStringLiteral("Execute Tour 2|Clear Tour 2"));
    EXPECT_EQ(rig.sent(), (Messages_{countRequest(1), stepRequest(1, 0), stepRequest(1, 1),
                                     stepRequest(1, 2)}));
    EXPECT_EQ(rig.lines("ScriptList").join('|'),
              QStringLiteral(" 0   Pre  5   10 Secs  N       0| 1   Pre  6    3 Secs  Y       1|"
                             " 2   Pre 31  127 Secs  N       0"));

    // Tour 0, empty (an empty tour's reload is checked with Clear, below).
    rig.click("TourSel_0");

    struct Case {
        const char *mode, *camera;
        bool blank;
        int step, preset, dwell;  // step -1: none selected
        Message_ request;
        int row;  // the line that shows the edit
        const char* line;
    };
    // Tour 0's step: the preset, its camera (camera 3 is number 2), the dwell
    // and the blank bit.
    using Append = v::append_tour_step::Step;
    using Insert = v::insert_tour_step::Step;
    using Replace = v::replace_tour_step::Step;
    // clang-format off
    const Case cases[] = {
        {"Option1_0", "CamSel_1", true, -1, 5, 10,
         message<v::AppendTourStep>({{Append::kPreset, 5}, {Append::kCamera, 1}, {Append::kDwell, 10}, {Append::kBlank, 1}}),
         0, " 0   Pre  5   10 Secs  Y       1"},
        {"Option1_0", "CamSel_2", false, -1, 1, 5,
         message<v::AppendTourStep>({{Append::kPreset, 1}, {Append::kCamera, 2}, {Append::kDwell, 5}}),
         1, " 1   Pre  1    5 Secs  N       2"},
        {"Option1_1", "CamSel_0", false, 1, 4, 7,
         message<v::InsertTourStep>({{v::insert_tour_step::kStep, 1}, {Insert::kPreset, 4}, {Insert::kDwell, 7}}),
         1, " 1   Pre  4    7 Secs  N       0"},
        {"Option1_2", "CamSel_1", false, 0, 6, 7,
         message<v::ReplaceTourStep>({{v::replace_tour_step::kStep, 0}, {Replace::kPreset, 6}, {Replace::kCamera, 1}, {Replace::kDwell, 7}}),
         0, " 0   Pre  6    7 Secs  N       1"},
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
        EXPECT_EQ(rig.sent().size() > 1 && rig.sent()[1] == countRequest(0), c.step >= 0);
    }
    EXPECT_EQ(rig.lines("ScriptList").size(), 3);

    rig.line.clear();
    rig.selectRow("ScriptList", 1, true);
    EXPECT_EQ(rig.sent(), (Messages_{message<v::DeleteTourStep>({{v::delete_tour_step::kStep, 1}}),
                                     countRequest(0), stepRequest(0, 0), stepRequest(0, 1)}));
    EXPECT_EQ(rig.lines("ScriptList").size(), 2);

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
    EXPECT_EQ(rig.shown[0].title, "Could Not Insert Into Tour");
    EXPECT_EQ(rig.shown[1].title, "Could Not Replace In The Tour");

    // A replace reply rewrites its own line; only other step replies add one.
    rig.inject(stepReply(v::ReplaceTourStep::kCode, 0, 9, 4));
    EXPECT_EQ(rig.lines("ScriptList"), QStringList({" 0   Pre  9    4 Secs  N       0",
                                                    " 1   Pre  1    5 Secs  N       2"}));
    // Step replies never grow the list past the longest tour.
    for (int i = 0; i < 260; ++i) {
        rig.inject(stepReply(v::AppendTourStep::kCode, i % 200, 1, 5));
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
    EXPECT_EQ(rig.sent(), (Messages_{message<v::ExecuteTour>({{v::execute_tour::kTour, 1}})}));
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
    EXPECT_EQ(rig.sent(),
              (Messages_{message<v::ClearTour>({{v::clear_tour::kTour, 1}}), countRequest(1)}));
    EXPECT_TRUE(rig.lines("ScriptList").isEmpty());
    rig.unit.state().tours.append(0, {1, 1});
    rig.inject(message<v::TourCleared>({{v::tour_cleared::kTour, 0}}));
    ASSERT_TRUE(rig.waitFor([&] { return rig.text("Label23") == "1"; }));
    EXPECT_TRUE(rig.find<QAbstractButton>(QStringLiteral("TourSel_0"))->isChecked());
    EXPECT_EQ(rig.text("ExecScriptBut"), QStringLiteral("Execute Tour 1"));

    // Tour count asks for the selected tour's count.
    rig.line.clear();
    rig.unit.state().tours.append(0, {2, 2});
    rig.click("Command3");
    ASSERT_TRUE(rig.waitFor([&] { return rig.text("Label23") == "2"; }));
    EXPECT_EQ(rig.sent(), (Messages_{countRequest(0)}));

    // A clear reply naming a tour without a selector stops only that reply.
    rig.inject(message<v::TourCleared>({{v::tour_cleared::kTour, 3}}));
    EXPECT_EQ(rig.faults.size(), 1);
}
