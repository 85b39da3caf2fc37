#include "window/data_watch.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

using namespace halvex;

TEST(DataWatch, SpinnerWalksTheCodeTableAndOnlyFramesOfTheWatchedCodeAreCaptured) {
    DataWatch window;
    auto* label = window.findChild<QLabel*>(QStringLiteral("Label5"));
    auto* spinner = window.findChild<QWidget*>(QStringLiteral("SpinButton1"));
    auto* up = spinner->findChild<QToolButton*>(QStringLiteral("up"));
    const auto line = [&window](const char* name) {
        return window.findChild<QLineEdit*>(QLatin1String(name))->text();
    };
    EXPECT_EQ(label->text(), QStringLiteral("31"));
    // "92" would match at characters 4..5 of a short line if the length test
    // were missing; with "31" watched, a five-character "06 31" must not match.
    window.showReceivedFrame(QStringLiteral("06 31"));
    EXPECT_TRUE(line("CapRXData").isEmpty());
    window.showReceivedFrame(QStringLiteral("06 00 31"));
    EXPECT_EQ(line("CapRXData"), QStringLiteral("06 00 31"));

    QTest::mouseClick(spinner->findChild<QToolButton*>(QStringLiteral("down")), Qt::LeftButton);
    EXPECT_EQ(label->text(), QStringLiteral("A2"));
    // All the way round passes only codes of the table (0x3A cannot be watched).
    QStringList seen;
    for (int i = 0; i < DataWatch::kCodeCount; ++i) {
        QTest::mouseClick(up, Qt::LeftButton);
        seen << label->text();
    }
    EXPECT_EQ(seen.first(), QStringLiteral("31"));
    EXPECT_EQ(seen.last(), QStringLiteral("A2"));
    // Upwards, each code once.
    for (qsizetype i = 1; i < seen.size(); ++i) {
        EXPECT_LT(seen[i - 1].toInt(nullptr, 16), seen[i].toInt(nullptr, 16))
            << seen[i].toStdString();
    }
    EXPECT_FALSE(seen.contains(QStringLiteral("3A")));
    while (label->text() != QStringLiteral("92")) {
        QTest::mouseClick(up, Qt::LeftButton);
    }

    const QString watched = QStringLiteral("02 01 92 80 00 00 00 00 00 00 13 03");
    window.showSentFrame(watched);
    EXPECT_EQ(line("TXData"), watched);
    EXPECT_EQ(line("CapTXData"), watched);
    window.showSentFrame(QStringLiteral("02 01 31 00 00 00 00 00 00 30 03"));
    window.showSentFrame(QStringLiteral("02 1B 03 92 80 11 03"));  // escaped address: not captured
    EXPECT_EQ(line("CapTXData"), watched);
    window.showReceivedFrame(QStringLiteral("06 01 92 10 03"));
    EXPECT_EQ(line("CapRXData"), QStringLiteral("06 01 92 10 03"));
}
