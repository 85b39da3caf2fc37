#include <gtest/gtest.h>

#include "connection/movement_monitor_format.h"
#include "tests/positioning/pages_rig.h"

using namespace halvex;
using namespace halvex::testing;

TEST(MovementLog, LogsMovesWhileRunningInEightCharacterColumnsAndKeepsSumsAcrossARestart) {
    PagesRig rig;  // the reports are sent by hand from here on
    rig.window->link().stop();
    auto move = [&](float fromPan, float fromTilt, float toPan, float toTilt) {
        emit rig.window->events().currentPositionReported(fromPan, fromTilt);
        emit rig.window->events().targetPositionReported(toPan, toTilt);
    };
    // Largest and average pan move, largest and average tilt move, count.
    auto statistics = [&] {
        return QStringList{rig.text("Label6"), rig.text("Label1_24"), rig.text("Label1_22"),
                           rig.text("Label1_25"), rig.text("MoveCountLabel")}
            .join(' ');
    };
    move(10.0f, 2.0f, 20.0f, 3.0f);  // monitor off: nothing logged
    EXPECT_TRUE(rig.lines("MoveList").isEmpty());

    rig.click("MoveMonBut");
    EXPECT_EQ(rig.text("MoveMonBut"), QStringLiteral("Stop Monitor"));
    move(10.0f, 2.0f, 20.0f, 3.0f);  // the first line is a zero move
    move(10.0f, 2.0f, -5.5f, -2.0f);
    EXPECT_EQ(rig.lines("MoveList").join('|'),
              QStringLiteral("   20.00    20.00     0.00      3.00     3.00     0.00|"
                             "   -5.50    10.00   -15.50     -2.00     2.00    -4.00"));
    EXPECT_EQ(rig.list("MoveList")->currentRow(), 1);
    EXPECT_EQ(statistics(), QStringLiteral("15.50 7.750 4.00 2.000 2 Moves"));

    // A restart starts the maxima afresh; the averages run over all lines.
    rig.click("MoveMonBut");
    EXPECT_EQ(rig.text("MoveMonBut"), QStringLiteral("Start Monitor"));
    move(0.0f, 0.0f, 90.0f, 90.0f);  // stopped: not logged
    rig.click("MoveMonBut");
    move(30.0f, 10.0f, 40.0f, 11.0f);
    EXPECT_EQ(statistics(), QStringLiteral("10.00 8.500 1.00 1.667 3 Moves"));
    // A move equal to the maximum leaves it; the statistics still count it.
    move(40.0f, 11.0f, 30.0f, 11.0f);
    EXPECT_EQ(statistics(), QStringLiteral("10.00 8.875 1.00 1.250 4 Moves"));

    rig.click("MoveClearBut");
    EXPECT_TRUE(rig.lines("MoveList").isEmpty());
    EXPECT_EQ(statistics(), QStringLiteral("0.00 0.000 0.00 0.000 4 Moves"));
    EXPECT_EQ(rig.text("MoveMonBut"), QStringLiteral("Stop Monitor"));
    // The first line after a clear is a zero move and counts once.
    move(0.0f, 0.0f, 50.0f, 5.0f);
    EXPECT_EQ(rig.lines("MoveList"),
              QStringList{"   50.00    50.00     0.00      5.00     5.00     0.00"});
    EXPECT_EQ(statistics(), QStringLiteral("0.00 0.000 0.00 0.000 1 Moves"));
    // A number longer than its column keeps its leftmost eight characters.
    EXPECT_EQ(movementLine(123456.5f, 0.0f, 0.0f, 0.0f).left(26),
              QStringLiteral("123456.5     0.00 123456.5"));
}
