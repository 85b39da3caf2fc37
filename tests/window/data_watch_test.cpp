#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

#include "window/data_watch.h"

using namespace halvex;

namespace {
struct WatchRig {
    DataWatch window;
    QLabel* label = window.findChild<QLabel*>(QStringLiteral("Label5"));
    QToolButton* up = window.findChild<QWidget*>(QStringLiteral("SpinButton1"))
                          ->findChild<QToolButton*>(QStringLiteral("up"));
    QToolButton* down = window.findChild<QWidget*>(QStringLiteral("SpinButton1"))
                            ->findChild<QToolButton*>(QStringLiteral("down"));
    QLineEdit* line(const char* name) { return window.findChild<QLineEdit*>(QLatin1String(name)); }
};
}  // namespace

TEST(DataWatch, SpinnerWrapsAroundTheCodeTableBothWays) {
    WatchRig rig;
    ASSERT_NE(rig.label, nullptr);
    EXPECT_EQ(rig.label->text(), QStringLiteral("31"));
    QTest::mouseClick(rig.down, Qt::LeftButton);
    EXPECT_EQ(rig.label->text(), QStringLiteral("A2"));
    EXPECT_EQ(rig.window.watchCode(), 162);
    QTest::mouseClick(rig.up, Qt::LeftButton);
    EXPECT_EQ(rig.label->text(), QStringLiteral("31"));
    // Walking all the way round comes back to the start, passing only codes
    // of the table (0x3A, for one, cannot be watched).
    QStringList seen;
    for (int i = 0; i < DataWatch::kCodeCount; ++i) {
        QTest::mouseClick(rig.up, Qt::LeftButton);
        seen << rig.label->text();
    }
    EXPECT_EQ(seen.last(), QStringLiteral("31"));
    EXPECT_FALSE(seen.contains(QStringLiteral("3A")));
    EXPECT_TRUE(seen.contains(QStringLiteral("9F")));
}

TEST(DataWatch, CapturesOnlyFramesOfTheWatchedCode) {
    WatchRig rig;
    // Select 0x92.
    while (rig.label->text() != QStringLiteral("92")) {
        QTest::mouseClick(rig.up, Qt::LeftButton);
    }
    rig.window.showSentFrame(QStringLiteral("02 01 92 80 00 00 00 00 00 00 13 03"));
    EXPECT_EQ(rig.line("TXData")->text(), QStringLiteral("02 01 92 80 00 00 00 00 00 00 13 03"));
    EXPECT_EQ(rig.line("CapTXData")->text(), rig.line("TXData")->text());

    rig.window.showSentFrame(QStringLiteral("02 01 31 00 00 00 00 00 00 30 03"));
    EXPECT_EQ(rig.line("CapTXData")->text(), QStringLiteral("02 01 92 80 00 00 00 00 00 00 13 03"));

    // Escaped address: the code is out of place and not captured.
    rig.window.showSentFrame(QStringLiteral("02 1B 03 92 80 11 03"));
    EXPECT_EQ(rig.line("CapTXData")->text(), QStringLiteral("02 01 92 80 00 00 00 00 00 00 13 03"));

    rig.window.showReceivedFrame(QStringLiteral("06 01 92 10 03"));
    EXPECT_EQ(rig.line("CapRXData")->text(), QStringLiteral("06 01 92 10 03"));
    EXPECT_TRUE(rig.line("CapTXData")->text().startsWith(QStringLiteral("02 01 92")));
}

TEST(DataWatch, ShortLinesNeverReachACapture) {
    WatchRig rig;
    // "92" would match at characters 4..5 of a short line if the length test
    // were missing; with "31" watched, a five-character "02 31" must not match.
    rig.window.showReceivedFrame(QStringLiteral("06 31"));
    EXPECT_TRUE(rig.line("CapRXData")->text().isEmpty());
    rig.window.showReceivedFrame(QStringLiteral("06 00 31"));
    EXPECT_EQ(rig.line("CapRXData")->text(), QStringLiteral("06 00 31"));
}
