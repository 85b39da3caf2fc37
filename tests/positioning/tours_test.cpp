#include <gtest/gtest.h>

#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>

#include "positioning/tour_step_line.h"
#include "tests/positioning/positioning_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
QString caption(PositioningRig& rig, const char* name) {
    return rig.find<QAbstractButton>(QString::fromLatin1(name))->text();
}

QStringList lines(QListWidget* list) {
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) {
        texts << list->item(i)->text();
    }
    return texts;
}

// A rig whose preset choices hold presets 0..7.
void fillPresetChoices(PositioningRig& rig) {
    for (Byte n = 0; n < 8; ++n) {
        rig.inject(*rig.model.answer({0x40, n}));
    }
    emit rig.events.tourPresetChoicesRefillRequested();
}
}  // namespace

TEST(TourStepLine, FieldsLineUpAndTheCameraColumnFollowsTheControllerType) {
    EXPECT_EQ(tourStepLine(3, 5 | 64, 10 | 128, 0),
              QStringLiteral(" 3   Pre  5   10 Secs  Y       1"));
    EXPECT_EQ(tourStepLine(12, 31, 127, 0), QStringLiteral("12   Pre 31  127 Secs  N       0"));
    EXPECT_EQ(tourStepLine(0, 2 | 128, 0, 1), QStringLiteral(" 0   Pre  2    0 Secs  N "));
}

TEST(TourSelect, CaptionsChangeBeforeTheCountRequestThenEachStepIsRead) {
    PositioningRig rig;
    rig.model.tours[1] = {{5, 10}, {6 | 64, 3 | 128}, {7, 0}};
    QString execAtCount;
    QString clearAtCount;
    rig.model.onFrame = [&](const Message_& m) {
        if (m[0] == 0x56) {
            execAtCount = caption(rig, "ExecScriptBut");
            clearAtCount = caption(rig, "ClearScriptBut");
        }
    };
    rig.click("TourSel_1");

    EXPECT_EQ(execAtCount, QStringLiteral("Execute Tour 2"));
    EXPECT_EQ(clearAtCount, QStringLiteral("Clear Tour 2"));
    EXPECT_EQ(rig.sent(),
              (std::vector<Message_>{{0x56, 1}, {0x51, 1, 0}, {0x51, 1, 1}, {0x51, 1, 2}}));
    EXPECT_EQ(lines(rig.list("ScriptList")),
              (QStringList{QStringLiteral(" 0   Pre  5   10 Secs  N       0"),
                           QStringLiteral(" 1   Pre  6    3 Secs  Y       1"),
                           QStringLiteral(" 2   Pre  7    0 Secs  N       0")}));
    EXPECT_EQ(rig.find<QLabel>(QStringLiteral("Label23"))->text(), QStringLiteral("3"));
    EXPECT_FALSE(rig.state.SendInProgress);

    // An empty tour: the count is asked for and no step.
    rig.clearSent();
    rig.click("TourSel_2");
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x56, 2}}));
    EXPECT_EQ(rig.list("ScriptList")->count(), 0);
    EXPECT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Execute Tour 3"));
    EXPECT_EQ(rig.find<QLabel>(QStringLiteral("Label23"))->text(), QStringLiteral("0"));
}

TEST(TourEdit, AppendSendsPresetCameraAndDwellBytesAndTheReplyAddsTheLine) {
    PositioningRig rig;
    fillPresetChoices(rig);
    rig.click("TourSel_0");
    rig.clearSent();

    rig.click("CamSel_1");
    rig.find<QScrollBar>(QStringLiteral("WaitScroll"))->setValue(10);
    rig.videoBlank = true;
    rig.doubleClickRow("ScriptPreList", 5);
    rig.settle();
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x52, 0, 69, 138}}));
    EXPECT_EQ(lines(rig.list("ScriptList")),
              QStringList{QStringLiteral(" 0   Pre  5   10 Secs  Y       1")});

    // Camera 3 sets bit 7 of the preset byte.
    rig.clearSent();
    rig.click("CamSel_2");
    rig.videoBlank = false;
    rig.doubleClickRow("ScriptPreList", 2);
    rig.settle();
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x52, 0, 130, 10}}));
    EXPECT_EQ(rig.list("ScriptList")->count(), 2);
}

TEST(TourEdit, StepRepliesNeverGrowTheListPastTheLongestTour) {
    PositioningRig rig;
    for (int i = 0; i < 300; ++i) {
        rig.inject({0x52, 0, static_cast<Byte>(i % 200), 1, 5});
    }
    EXPECT_EQ(rig.list("ScriptList")->count(), 255);
}

TEST(TourEdit, InsertAndReplaceNeedASelectedStep) {
    PositioningRig rig;
    rig.model.tours[0] = {{1, 5}};
    fillPresetChoices(rig);
    rig.click("TourSel_0");
    rig.list("ScriptList")->setCurrentRow(-1);
    rig.clearSent();

    rig.click("Option1_1");
    rig.doubleClickRow("ScriptPreList", 3);
    rig.click("Option1_2");
    rig.doubleClickRow("ScriptPreList", 3);
    rig.settle();
    EXPECT_TRUE(rig.sent().empty());
    ASSERT_EQ(rig.messages.size(), 2u);
    EXPECT_EQ(rig.messages[0].title, QStringLiteral("Could Not Insert Into Tour"));
    EXPECT_EQ(rig.messages[0].text,
              QStringLiteral("You must select a position in the tour list to insert."));
    EXPECT_EQ(rig.messages[1].title, QStringLiteral("Could Not Replace In The Tour"));
    EXPECT_EQ(rig.messages[1].text,
              QStringLiteral("You must select a position in the tour list to replace."));
}

TEST(TourEdit, InsertReplaceAndDeleteSendTheStepAndReloadTheTour) {
    PositioningRig rig;
    rig.model.tours[0] = {{1, 5}, {2, 5}};
    fillPresetChoices(rig);
    rig.click("TourSel_0");
    rig.find<QScrollBar>(QStringLiteral("WaitScroll"))->setValue(7);

    rig.clearSent();
    rig.click("Option1_1");
    rig.selectRow("ScriptList", 1);
    rig.doubleClickRow("ScriptPreList", 4);
    auto sent = rig.sent();
    ASSERT_GE(sent.size(), 2u);
    EXPECT_EQ(sent[0], (Message_{0x53, 0, 1, 4, 7}));
    EXPECT_EQ(sent[1], (Message_{0x56, 0}));
    EXPECT_EQ(lines(rig.list("ScriptList")),
              (QStringList{QStringLiteral(" 0   Pre  1    5 Secs  N       0"),
                           QStringLiteral(" 1   Pre  4    7 Secs  N       0"),
                           QStringLiteral(" 2   Pre  2    5 Secs  N       0")}));

    rig.clearSent();
    rig.click("Option1_2");
    rig.selectRow("ScriptList", 0);
    rig.doubleClickRow("ScriptPreList", 6);
    sent = rig.sent();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], (Message_{0x55, 0, 0, 6, 7}));
    EXPECT_TRUE(rig.list("ScriptList")->item(0)->text().startsWith(QStringLiteral(" 0   Pre  6")));

    rig.clearSent();
    rig.doubleClickRow("ScriptList", 1);
    sent = rig.sent();
    ASSERT_FALSE(sent.empty());
    EXPECT_EQ(sent[0], (Message_{0x54, 0, 1}));
    EXPECT_EQ(sent[1], (Message_{0x56, 0}));
    EXPECT_EQ(rig.list("ScriptList")->count(), 2);
    EXPECT_FALSE(rig.state.SendInProgress);
}

TEST(TourExecute, ExecutingLookEndsWhenAReplyShowsALimitFault) {
    PositioningRig rig;
    rig.model.tours[1] = {{1, 5}};
    rig.click("TourSel_1");
    rig.clearSent();
    rig.click("ExecScriptBut");
    rig.settle();
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x37, 1}}));
    EXPECT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Executing Tour 2"));
    for (const char* name :
         {"ScriptList", "ScriptPreList", "ClearScriptBut", "TourSel_0", "TourSel_1", "TourSel_2"}) {
        EXPECT_FALSE(rig.find<QWidget>(QString::fromLatin1(name))->isEnabled()) << name;
    }

    // A report without faults leaves it executing.
    rig.inject(*rig.model.answer({0x31}));
    EXPECT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Executing Tour 2"));

    // CW hard limit: the lamps set LimitFault and the tour display ends.
    rig.model.statusA = 0x20;
    rig.inject(*rig.model.answer({0x31}));
    EXPECT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Execute Tour 2"));
    for (const char* name : {"ScriptList", "ScriptPreList", "ClearScriptBut", "TourSel_0"}) {
        EXPECT_TRUE(rig.find<QWidget>(QString::fromLatin1(name))->isEnabled()) << name;
    }
}

TEST(TourExecute, StopHookEndsTheDisplayAndAnEmptyTourIsReported) {
    PositioningRig rig;
    rig.model.tours[0] = {{1, 5}};
    rig.click("TourSel_0");
    rig.click("ExecScriptBut");
    rig.settle();
    ASSERT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Executing Tour 1"));
    emit rig.events.tourDisplayEndRequested();
    EXPECT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Execute Tour 1"));
    EXPECT_TRUE(rig.list("ScriptList")->isEnabled());

    rig.click("TourSel_2");
    rig.click("ExecScriptBut");
    rig.settle();
    ASSERT_EQ(rig.messages.size(), 1u);
    EXPECT_EQ(rig.messages[0].title, QStringLiteral("Execute Tour"));
    EXPECT_EQ(rig.messages[0].text, QStringLiteral("The tour is empty."));
    EXPECT_EQ(caption(rig, "ExecScriptBut"), QStringLiteral("Execute Tour 3"));
}

TEST(TourClear, TheReplySelectsTheTourAndReloadsItEmpty) {
    PositioningRig rig;
    rig.model.tours[2] = {{1, 5}, {2, 5}};
    rig.click("TourSel_2");
    ASSERT_EQ(rig.list("ScriptList")->count(), 2);
    rig.clearSent();
    rig.click("ClearScriptBut");
    rig.settle(150);
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x50, 2}, {0x56, 2}}));
    EXPECT_EQ(rig.list("ScriptList")->count(), 0);
    EXPECT_TRUE(rig.find<QRadioButton>(QStringLiteral("TourSel_2"))->isChecked());

    // Tour count.
    rig.clearSent();
    rig.model.tours[2] = {{1, 1}};
    rig.click("Command3");
    rig.settle();
    EXPECT_EQ(rig.sent(), (std::vector<Message_>{{0x56, 2}}));
    EXPECT_EQ(rig.find<QLabel>(QStringLiteral("Label23"))->text(), QStringLiteral("1"));

    // A clear reply naming a tour without a selector stops only that reply.
    rig.inject({0x50, 3});
    EXPECT_EQ(rig.faults.size(), 1);
}

TEST(TourPage, DwellLabelAndPresetChoices) {
    PositioningRig rig;
    auto* scroll = rig.find<QScrollBar>(QStringLiteral("WaitScroll"));
    auto* label = rig.find<QLabel>(QStringLiteral("WaitLabel"));
    EXPECT_EQ(scroll->maximum(), 127);
    scroll->setValue(1);
    EXPECT_EQ(label->text(), QStringLiteral("Dwell 1 Sec"));
    scroll->setValue(0);
    EXPECT_EQ(label->text(), QStringLiteral("Dwell 0 Secs"));
    scroll->setValue(2);
    EXPECT_EQ(label->text(), QStringLiteral("Dwell 2 Secs"));

    fillPresetChoices(rig);
    EXPECT_EQ(lines(rig.list("ScriptPreList")), lines(rig.list("PresetList")));
}
