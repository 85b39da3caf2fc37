#include <gtest/gtest.h>

#include <SDL_gamecontroller.h>

#include <QFile>
#include <QTemporaryDir>
#include <array>
#include <cmath>
#include <map>
#include <sstream>

#include "input/controller_mapping.h"
#include "input/mapping_settings.h"

using namespace halvex;

TEST(ShapedAxis, NothingInsideTheDeadZoneThenTheCurveUpToFullAtTheEnd) {
    const AxisResponse linear{0.2, 1.0, false};
    EXPECT_EQ(shapedAxis(0, linear), 0.0);
    EXPECT_EQ(shapedAxis(6553, linear), 0.0);   // just inside 20 %
    EXPECT_GT(shapedAxis(6700, linear), 0.0);   // just past it
    EXPECT_LT(shapedAxis(6700, linear), 0.01);  // and starting from nothing
    EXPECT_NEAR(shapedAxis(19660, linear), 0.5, 0.001);
    EXPECT_DOUBLE_EQ(shapedAxis(32767, linear), 1.0);
    EXPECT_DOUBLE_EQ(shapedAxis(-32768, linear), -1.0);  // the far end clamps

    const AxisResponse squared{0.2, 2.0, true};
    EXPECT_NEAR(shapedAxis(19660, squared), -0.25, 0.001);
    EXPECT_NEAR(shapedAxis(-19660, squared), 0.25, 0.001);
    // Odd settings from a settings file still give a speed within range.
    const AxisResponse odd{7.0, -3.0, false};
    EXPECT_EQ(shapedAxis(30000, odd), 0.0);
    EXPECT_LE(std::abs(shapedAxis(32767, AxisResponse{-1.0, 99.0, false})), 1.0);
}

// The plain joystick's mapping, and the standard one at full throw, are
// checked through the whole console (controller_jog_test.cpp).
TEST(StandardControllerMapping, SticksGiveSpeedsDirectionsAndCameraOneLensBytes) {
    std::map<int, int> axes = {{SDL_CONTROLLER_AXIS_LEFTX, -16384},
                               {SDL_CONTROLLER_AXIS_LEFTY, 32767},
                               {SDL_CONTROLLER_AXIS_RIGHTX, -32768}};
    const auto read = [&axes](int axis) { return axes.count(axis) ? axes[axis] : 0; };
    const JogDemand demand = demandFrom(standardControllerMapping(), read);
    EXPECT_EQ(demand.pan.direction, false);
    EXPECT_GT(demand.pan.speed, 40);
    EXPECT_LT(demand.pan.speed, 90);                   // half way, squared, less the dead zone
    EXPECT_EQ(demand.tilt, (AxisDemand{255, false}));  // pulled back: down
    EXPECT_EQ(demand.lens, (std::array<Byte, 4>{0, 254, 0, 0}));  // focus near
}

namespace {
struct ScratchSettings {
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("halvex.conf")), QSettings::IniFormat};
};

// Every field of a mapping on one line: axis -> target dead zone/curve, and
// button -> action preset.
std::string fields(const ControllerMapping& mapping) {
    std::ostringstream out;
    for (const AxisBinding& a : mapping.axes) {
        out << "axis " << a.axis << "->" << static_cast<int>(a.target) << " " << a.response.deadZone
            << "/" << a.response.curve << (a.response.invert ? "i" : "") << "; ";
    }
    for (const ButtonBinding& b : mapping.buttons) {
        out << "button " << b.button << "->" << static_cast<int>(b.action) << " " << b.preset
            << "; ";
    }
    return out.str();
}
}  // namespace

// Every field of a mapping is read and written by the kept file's test below.
TEST(MappingSettings, AMappingIsKeptForItsOwnDeviceOnlyAndKeySpeedsAsSaved) {
    ScratchSettings scratch;
    const QString guid = QStringLiteral("03000000de280000ff11000001000000");
    // A mapping with everything taken off stays empty, not the standard one.
    saveMapping(scratch.settings, guid, {});
    EXPECT_EQ(fields(loadMapping(scratch.settings, guid).value_or(standardControllerMapping())),
              "");
    EXPECT_FALSE(loadMapping(scratch.settings, QStringLiteral("0300000000000000")));

    // The keys' speeds as saved.
    saveKeySpeeds(scratch.settings, {.normal = 11, .fast = 22, .slow = 3, .zoom = 44});
    const auto [normal, fast, slow, zoom] = loadKeySpeeds(scratch.settings);
    EXPECT_EQ((std::array{normal, fast, slow, zoom}), (std::array{11, 22, 3, 44}));
}

// Two mappings edited by hand: "abc" with every value out of its range,
// "big" with lists longer than any device's.
TEST(MappingSettings, ValuesEditedOutOfRangeAreBroughtIntoItAndLongListsCutShort) {
    ScratchSettings scratch;
    const std::pair<const char*, QVariant> edited[] = {
        {"abc/Axes/size", 1},         {"abc/Axes/1/Axis", -4},      {"abc/Axes/1/Target", 99},
        {"abc/Axes/1/DeadZone", 7},   {"abc/Axes/1/Curve", "x"},    {"abc/Buttons/size", 1},
        {"abc/Buttons/1/Action", -1}, {"abc/Buttons/1/Preset", 40}, {"big/Axes/size", 2000000000},
        {"big/Axes/1/Target", 1}};
    for (const auto& [key, value] : edited) {
        scratch.settings.setValue(QStringLiteral("Input/Mapping-") + QLatin1String(key), value);
    }
    const std::optional<ControllerMapping> mapping = loadMapping(scratch.settings, "abc");
    ASSERT_TRUE(mapping);
    EXPECT_EQ(fields(*mapping), "axis 0->5 0.95/0.2; button 0->0 9; ");
    const std::optional<ControllerMapping> big = loadMapping(scratch.settings, "big");
    ASSERT_TRUE(big);
    ASSERT_EQ(big->axes.size(), 64u) << "a long list is cut short, not thrown away";
    EXPECT_EQ(big->axes[0].target, JogAxis::Tilt);

    // A damaged file once claimed 755555555555555555 buttons and the console
    // filled its memory making room for them; the file is kept with the
    // fuzzer's cases.
    QSettings damaged(
        QStringLiteral(HALVEX_FUZZ_CASES "/input-mapping-regressions/list-size-past-memory.ini"),
        QSettings::IniFormat);
    const std::optional<ControllerMapping> read = loadMapping(damaged, QStringLiteral("fuzz"));
    ASSERT_TRUE(read);
    EXPECT_LE(read->buttons.size(), 64u);
}

// The mapping fuzzer's first case is a settings file as the console writes
// it: an older file keeps reading the same, and the fuzzer starts from a
// mapping that loads.
TEST(MappingSettings, AFileAsTheConsoleWritesItReadsAsItsMapping) {
    QSettings file(QStringLiteral(HALVEX_FUZZ_CASES "/input-mapping-corpus/standard.ini"),
                   QSettings::IniFormat);
    const std::optional<ControllerMapping> mapping = loadMapping(file, QStringLiteral("fuzz"));
    ASSERT_TRUE(mapping);
    EXPECT_EQ(fields(*mapping),
              "axis 0->0 0.15/2; axis 1->1 0.2/1.5i; axis 3->2 0.1/2; button 0->7 3; ");
    ScratchSettings scratch;
    saveMapping(scratch.settings, QStringLiteral("fuzz"), *mapping);
    scratch.settings.sync();
    QFile written(scratch.settings.fileName());
    QFile kept(file.fileName());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), kept.readAll()) << "the console writes it differently now";
}
