#include <gtest/gtest.h>

#include "connection/movement_monitor_format.h"
#include "tests/positioning/positioning_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
struct MonitorRig : PositioningRig {
    void current(float pan, float tilt) { emit events.currentPositionReported(pan, tilt); }
    void target(float pan, float tilt) { emit events.targetPositionReported(pan, tilt); }
    QString label(const char* name) { return find<QLabel>(QString::fromLatin1(name))->text(); }
    QListWidget* log() { return list("MoveList"); }
};
}  // namespace

TEST(MovementLog, LineColumnsAreEightCharactersAndLongNumbersAreCut) {
    EXPECT_EQ(movementLine(-5.5f, 10.0f, 1.25f, 0.0f),
              QStringLiteral("   -5.50    10.00   -15.50      1.25     0.00     1.25"));
    EXPECT_EQ(movementLine(123456.5f, 0.0f, 0.0f, 0.0f).left(26),
              QStringLiteral("123456.5     0.00 123456.5"));
}

TEST(MovementLog, LogsTargetsOnlyWhileRunningWithAZeroFirstMove) {
    MonitorRig rig;
    rig.current(10.0f, 2.0f);
    rig.target(20.0f, 3.0f);  // monitor off: nothing logged
    EXPECT_EQ(rig.log()->count(), 0);

    rig.click("MoveMonBut");
    EXPECT_EQ(rig.find<QAbstractButton>(QStringLiteral("MoveMonBut"))->text(),
              QStringLiteral("Stop Monitor"));
    rig.current(10.0f, 2.0f);
    rig.target(20.0f, 3.0f);
    ASSERT_EQ(rig.log()->count(), 1);
    EXPECT_EQ(rig.log()->item(0)->text(),
              QStringLiteral("   20.00    20.00     0.00      3.00     3.00     0.00"));

    rig.current(10.0f, 2.0f);
    rig.target(-5.5f, -2.0f);
    ASSERT_EQ(rig.log()->count(), 2);
    EXPECT_EQ(rig.log()->item(1)->text(),
              QStringLiteral("   -5.50    10.00   -15.50     -2.00     2.00    -4.00"));
    EXPECT_EQ(rig.log()->currentRow(), 1);
    EXPECT_EQ(rig.label("MoveCountLabel"), QStringLiteral("2 Moves"));
    EXPECT_EQ(rig.label("Label6"), QStringLiteral("15.50"));
    EXPECT_EQ(rig.label("Label1_24"), QStringLiteral("7.750"));
    EXPECT_EQ(rig.label("Label1_22"), QStringLiteral("4.00"));
    EXPECT_EQ(rig.label("Label1_25"), QStringLiteral("2.000"));
}

TEST(MovementLog, RestartKeepsSumsButResetsMaximaAndClearResetsAll) {
    MonitorRig rig;
    rig.click("MoveMonBut");
    rig.target(0.0f, 0.0f);
    rig.current(0.0f, 0.0f);
    rig.target(30.0f, 10.0f);
    EXPECT_EQ(rig.label("Label6"), QStringLiteral("30.00"));

    rig.click("MoveMonBut");
    EXPECT_EQ(rig.find<QAbstractButton>(QStringLiteral("MoveMonBut"))->text(),
              QStringLiteral("Start Monitor"));
    rig.click("MoveMonBut");
    rig.current(30.0f, 10.0f);
    rig.target(40.0f, 11.0f);
    // Maxima start afresh, averages run over all three lines.
    EXPECT_EQ(rig.label("Label6"), QStringLiteral("10.00"));
    EXPECT_EQ(rig.label("Label1_24"), QStringLiteral("13.333"));
    EXPECT_EQ(rig.label("Label1_22"), QStringLiteral("1.00"));
    EXPECT_EQ(rig.label("Label1_25"), QStringLiteral("3.667"));

    // A move equal to the maximum leaves it; the statistics still count it.
    rig.current(40.0f, 11.0f);
    rig.target(30.0f, 11.0f);
    EXPECT_EQ(rig.label("Label6"), QStringLiteral("10.00"));
    EXPECT_EQ(rig.label("MoveCountLabel"), QStringLiteral("4 Moves"));

    rig.click("MoveClearBut");
    EXPECT_EQ(rig.log()->count(), 0);
    EXPECT_EQ(rig.label("Label6"), QStringLiteral("0.00"));
    EXPECT_EQ(rig.label("Label1_24"), QStringLiteral("0.000"));
    EXPECT_EQ(rig.label("Label1_22"), QStringLiteral("0.00"));
    EXPECT_EQ(rig.label("Label1_25"), QStringLiteral("0.000"));
    EXPECT_EQ(rig.label("MoveCountLabel"), QStringLiteral("4 Moves"));
    EXPECT_EQ(rig.find<QAbstractButton>(QStringLiteral("MoveMonBut"))->text(),
              QStringLiteral("Stop Monitor"));

    // The first line after a clear is a zero move and counts once.
    rig.current(0.0f, 0.0f);
    rig.target(50.0f, 5.0f);
    EXPECT_TRUE(rig.log()->item(0)->text().contains(QStringLiteral("    0.00  ")));
    EXPECT_EQ(rig.label("MoveCountLabel"), QStringLiteral("1 Moves"));
    EXPECT_EQ(rig.label("Label1_24"), QStringLiteral("0.000"));
}
