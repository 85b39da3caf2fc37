// The positioning pages against the virtual unit, through the whole console.

#include <gtest/gtest.h>

#include <QListWidget>
#include <QScrollBar>
#include <QTabWidget>
#include <cmath>

#include "sim/motion.h"
#include "tests/support/console_rig.h"
#include "views/widgets/led_display.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
QStringList entries(ConsoleRig& rig, const char* name) {
    QStringList texts;
    auto* list = rig.find<QListWidget>(QString::fromLatin1(name));
    for (int i = 0; list != nullptr && i < list->count(); ++i) {
        texts << list->item(i)->text();
    }
    return texts;
}

void selectRow(ConsoleRig& rig, const char* name, int row) {
    auto* list = rig.find<QListWidget>(QString::fromLatin1(name));
    ASSERT_NE(list, nullptr);
    ASSERT_LT(row, list->count());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                      list->visualItemRect(list->item(row)).center());
}

void doubleClickRow(ConsoleRig& rig, const char* name, int row) {
    selectRow(rig, name, row);
    auto* list = rig.find<QListWidget>(QString::fromLatin1(name));
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {},
                       list->visualItemRect(list->item(row)).center());
}

// Stores a preset from the console's preset page.
void storePreset(ConsoleRig& rig, int number, double pan, double tilt) {
    rig.find<QTabWidget>(QStringLiteral("SSTab1"))->setCurrentIndex(1);
    selectRow(rig, "PresetList", number);
    rig.find<LedDisplay>(QStringLiteral("PanPreLED"))->setValue(pan);
    rig.find<LedDisplay>(QStringLiteral("TiltPreLED"))->setValue(tilt);
    rig.click(QStringLiteral("SavePreBut"));
    ASSERT_TRUE(rig.waitFor(
        [&] { return rig.unit.state().presets.at(number).pan == std::lround(pan * 100); }));
}

double mechanicalPan(ConsoleRig& rig) {
    return rig.unit.state().motion.mechanicalPan() / 100.0;
}

void reconnect(ConsoleRig& rig) {
    rig.window.reset();
    rig.port = new TestPort(&rig.line);
    rig.window = std::make_unique<VornixU>(rig.port);
    rig.window->Form_Load();
    rig.window->show();
}
}  // namespace

TEST(PositioningWithUnit, StoredPresetsSurviveAReconnectAndListTheSame) {
    ConsoleRig rig;
    ASSERT_TRUE(rig.connect());
    storePreset(rig, 4, 12.34, -5.5);
    storePreset(rig, 30, -170.0, 80.25);
    QTest::qWait(200);  // the store replies refresh their entries
    const QStringList before = entries(rig, "PresetList");
    ASSERT_EQ(before.size(), 32);
    EXPECT_TRUE(before[4].startsWith(QStringLiteral("   4    12.34    -5.50")))
        << before[4].toStdString();
    EXPECT_TRUE(before[30].startsWith(QStringLiteral("  30  -170.00    80.25")))
        << before[30].toStdString();

    reconnect(rig);
    ASSERT_TRUE(rig.connect());
    EXPECT_EQ(entries(rig, "PresetList"), before);
}

TEST(PositioningWithUnit, TourBuiltFromTheConsoleRunsAndEndsOnAFault) {
    ConsoleRig rig;
    ASSERT_TRUE(rig.connect());
    storePreset(rig, 1, 4.0, 0.0);
    storePreset(rig, 2, -4.0, 0.0);

    auto* tabs = rig.find<QTabWidget>(QStringLiteral("SSTab1"));
    tabs->setCurrentIndex(3);  // the tour page refills its preset choices
    ASSERT_EQ(entries(rig, "ScriptPreList").size(), 32);
    rig.find<QScrollBar>(QStringLiteral("WaitScroll"))->setValue(0);
    doubleClickRow(rig, "ScriptPreList", 1);
    doubleClickRow(rig, "ScriptPreList", 2);
    ASSERT_TRUE(rig.waitFor([&] { return entries(rig, "ScriptList").size() == 2; }));
    EXPECT_EQ(rig.unit.state().tours.size(0), 2);

    rig.click(QStringLiteral("ExecScriptBut"));
    auto* exec = rig.find<QAbstractButton>(QStringLiteral("ExecScriptBut"));
    ASSERT_TRUE(rig.waitFor([&] { return exec->text() == QStringLiteral("Executing Tour 1"); }));
    // The platform goes to preset 1, then to preset 2.
    ASSERT_TRUE(rig.waitFor([&] { return std::abs(mechanicalPan(rig) - 4.0) < 0.05; }, 15000));
    ASSERT_TRUE(rig.waitFor([&] { return std::abs(mechanicalPan(rig) + 4.0) < 0.05; }, 15000));

    rig.unit.state().motion.latchFault(sim::Fault::PanTimeout);
    ASSERT_TRUE(rig.waitFor([&] { return exec->text() == QStringLiteral("Execute Tour 1"); }));
    EXPECT_TRUE(rig.find<QWidget>(QStringLiteral("ScriptList"))->isEnabled());
    EXPECT_TRUE(rig.find<QWidget>(QStringLiteral("TourSel_0"))->isEnabled());
}

TEST(PositioningWithUnit, AlignToCenterShiftsPositionPresetsAndLimits) {
    ConsoleRig rig;
    ASSERT_TRUE(rig.connect());
    storePreset(rig, 3, 6.0, 2.0);
    doubleClickRow(rig, "PresetList", 3);
    ASSERT_TRUE(rig.waitFor([&] { return std::abs(mechanicalPan(rig) - 6.0) < 0.01; }, 15000));
    auto* panPos = rig.find<LedDisplay>(QStringLiteral("PanPosLED"));
    auto* tiltPos = rig.find<LedDisplay>(QStringLiteral("TiltPosLED"));
    ASSERT_TRUE(rig.waitFor([&] { return std::abs(tiltPos->value() - 2.0) < 0.01; }, 15000));
    const QString cwBefore = rig.find<QLabel>(QStringLiteral("Label13_0"))->text();

    rig.find<QTabWidget>(QStringLiteral("SSTab1"))->setCurrentIndex(2);
    rig.line.clear();
    rig.click(QStringLiteral("AlignCenBut"));

    auto requests = rig.line.messages(false);
    ASSERT_FALSE(requests.empty());
    EXPECT_EQ(requests.front(), (std::vector<Byte>{0x82}));
    std::vector<std::vector<Byte>> expected;
    for (Byte i = 0; i < 4; ++i) {
        expected.push_back({0x81, static_cast<Byte>(0x80 | i)});
    }
    for (Byte n = 0; n < 32; ++n) {
        expected.push_back({0x40, n});
    }
    EXPECT_EQ(std::vector<std::vector<Byte>>(requests.begin() + 1, requests.end()), expected);

    ASSERT_TRUE(rig.waitFor([&] { return panPos->value() == 0.0 && tiltPos->value() == 0.0; }));
    EXPECT_TRUE(entries(rig, "PresetList")[3].startsWith(QStringLiteral("   3     0.00     0.00")));
    EXPECT_TRUE(entries(rig, "PresetList")[0].startsWith(QStringLiteral("   0    -6.00    -2.00")));
    EXPECT_NE(rig.find<QLabel>(QStringLiteral("Label13_0"))->text(), cwBefore);
    EXPECT_FLOAT_EQ(rig.find<LedDisplay>(QStringLiteral("PanCorLED"))->value(), -6.0f);
    EXPECT_TRUE(rig.find<QWidget>(QStringLiteral("SSTab1"))->isEnabled());
}
