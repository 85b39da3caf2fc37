#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include "input/mapping_settings.h"

using namespace halvex;

namespace {
struct ScratchSettings {
    QTemporaryDir folder;
    QSettings settings{folder.filePath(QStringLiteral("halvex.conf")), QSettings::IniFormat};
};
}  // namespace

TEST(MappingSettings, AMappingReadsBackAsSavedForItsOwnDeviceOnly) {
    ScratchSettings scratch;
    const QString guid = QStringLiteral("03000000de280000ff11000001000000");
    EXPECT_FALSE(loadMapping(scratch.settings, guid));
    ControllerMapping mapping;
    mapping.axes = {{3, JogAxis::Focus2, AxisResponse{0.3, 1.5, true}},
                    {0, JogAxis::Pan, AxisResponse{}}};
    mapping.buttons = {{7, ButtonAction::GoToPreset, 9}, {1, ButtonAction::Stop, 0}};
    saveMapping(scratch.settings, guid, mapping);
    const std::optional<ControllerMapping> back = loadMapping(scratch.settings, guid);
    ASSERT_TRUE(back);
    ASSERT_EQ(back->axes.size(), 2u);
    EXPECT_EQ(back->axes[0].axis, 3);
    EXPECT_EQ(back->axes[0].target, JogAxis::Focus2);
    EXPECT_DOUBLE_EQ(back->axes[0].response.deadZone, 0.3);
    EXPECT_DOUBLE_EQ(back->axes[0].response.curve, 1.5);
    EXPECT_TRUE(back->axes[0].response.invert);
    EXPECT_FALSE(back->axes[1].response.invert);
    ASSERT_EQ(back->buttons.size(), 2u);
    EXPECT_EQ(back->buttons[0].action, ButtonAction::GoToPreset);
    EXPECT_EQ(back->buttons[0].preset, 9);
    EXPECT_EQ(back->buttons[1].button, 1);
    EXPECT_FALSE(loadMapping(scratch.settings, QStringLiteral("0300000000000000")));

    // A mapping with everything taken off stays empty, not the standard one.
    saveMapping(scratch.settings, guid, {});
    const std::optional<ControllerMapping> none = loadMapping(scratch.settings, guid);
    ASSERT_TRUE(none);
    EXPECT_TRUE(none->axes.empty());
    EXPECT_TRUE(none->buttons.empty());
}

TEST(MappingSettings, ValuesEditedOutOfRangeAreBroughtIntoIt) {
    ScratchSettings scratch;
    const QString guid = QStringLiteral("abc");
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Axes/size"), 1);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Axes/1/Axis"), -4);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Axes/1/Target"), 99);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Axes/1/DeadZone"), 7);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Axes/1/Curve"),
                              QStringLiteral("x"));
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Buttons/size"), 1);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Buttons/1/Action"), -1);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-abc/Buttons/1/Preset"), 40);
    const std::optional<ControllerMapping> mapping = loadMapping(scratch.settings, guid);
    ASSERT_TRUE(mapping);
    ASSERT_EQ(mapping->axes.size(), 1u);
    EXPECT_EQ(mapping->axes[0].axis, 0);
    EXPECT_EQ(mapping->axes[0].target, JogAxis::Focus2);
    EXPECT_DOUBLE_EQ(mapping->axes[0].response.deadZone, 0.95);
    EXPECT_GE(mapping->axes[0].response.curve, 0.2);
    ASSERT_EQ(mapping->buttons.size(), 1u);
    EXPECT_EQ(mapping->buttons[0].action, ButtonAction::Stop);
    EXPECT_EQ(mapping->buttons[0].preset, 9);
}

// The mapping fuzzer's first case is a settings file as the console writes
// it: an older file keeps reading the same, and the fuzzer starts from a
// mapping that loads.
TEST(MappingSettings, AFileAsTheConsoleWritesItReadsAsItsMapping) {
    QSettings file(QStringLiteral(HALVEX_FUZZ_CASES "/input-mapping-corpus/standard.ini"),
                   QSettings::IniFormat);
    const std::optional<ControllerMapping> mapping = loadMapping(file, QStringLiteral("fuzz"));
    ASSERT_TRUE(mapping);
    ASSERT_EQ(mapping->axes.size(), 3u);
    EXPECT_EQ(mapping->axes[1].axis, 1);
    EXPECT_EQ(mapping->axes[1].target, JogAxis::Tilt);
    EXPECT_DOUBLE_EQ(mapping->axes[1].response.deadZone, 0.2);
    EXPECT_DOUBLE_EQ(mapping->axes[1].response.curve, 1.5);
    EXPECT_TRUE(mapping->axes[1].response.invert);
    EXPECT_EQ(mapping->axes[2].target, JogAxis::Zoom1);
    ASSERT_EQ(mapping->buttons.size(), 1u);
    EXPECT_EQ(mapping->buttons[0].action, ButtonAction::GoToPreset);
    EXPECT_EQ(mapping->buttons[0].preset, 3);

    ScratchSettings scratch;
    saveMapping(scratch.settings, QStringLiteral("fuzz"), *mapping);
    scratch.settings.sync();
    QFile written(scratch.settings.fileName());
    QFile kept(file.fileName());
    ASSERT_TRUE(written.open(QIODevice::ReadOnly));
    ASSERT_TRUE(kept.open(QIODevice::ReadOnly));
    EXPECT_EQ(written.readAll(), kept.readAll()) << "the console writes it differently now";
}

// A damaged file once claimed 755555555555555555 buttons and the console
// filled its memory making room for them; the file is kept with the fuzzer's
// cases.
TEST(MappingSettings, AListSizeFromADamagedFileDoesNotDecideTheMemoryTaken) {
    QSettings damaged(
        QStringLiteral(HALVEX_FUZZ_CASES "/input-mapping-regressions/list-size-past-memory.ini"),
        QSettings::IniFormat);
    const std::optional<ControllerMapping> read = loadMapping(damaged, QStringLiteral("fuzz"));
    ASSERT_TRUE(read);
    EXPECT_LE(read->buttons.size(), 64u);

    ScratchSettings scratch;
    scratch.settings.setValue(QStringLiteral("Input/Mapping-big/Axes/size"), 2000000000);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-big/Axes/1/Target"), 1);
    scratch.settings.setValue(QStringLiteral("Input/Mapping-big/Buttons/size"), 1000000);
    const std::optional<ControllerMapping> big =
        loadMapping(scratch.settings, QStringLiteral("big"));
    ASSERT_TRUE(big);
    ASSERT_EQ(big->axes.size(), 64u) << "a long list is cut short, not thrown away";
    EXPECT_EQ(big->axes[0].target, JogAxis::Tilt);
    EXPECT_EQ(big->buttons.size(), 64u);
}
