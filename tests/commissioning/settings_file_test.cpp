#include <gtest/gtest.h>

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <string>

#include "commissioning/settings_files.h"
#include "commissioning/settings_lines.h"
#include "commissioning/settings_text.h"
#include "tests/support/full_disk.h"

using namespace halvex::commissioning;

namespace {

// A unit with a value in every setting, at the ends of the ranges, odd
// presets and tours, so that a lost or bent value cannot go unnoticed.
UnitSettings sample(int controllerType = 0) {
    UnitSettings settings;
    settings.identity = {7, controllerType, 2, 10, 2026, 11, 25};
    settings.saved = "2026-11-25 14:37:05";
    for (const SettingGroup& group : settingGroups()) {
        if (!appliesTo(group, controllerType)) {
            continue;
        }
        std::vector<std::int32_t> values;
        for (std::size_t i = 0; i < group.fields.size(); ++i) {
            values.push_back(i % 2 == 0 ? group.fields[i].maximum : group.fields[i].minimum);
        }
        settings.setGroupValues(group, values);
    }
    settings.values["speeds/pan-ramp"] = 40;
    settings.values["offsets/pan-offset"] = -1234;
    settings.values["cameras/camera1-baud"] = 7;
    settings.values["housekeeping/heater"] = 2;
    for (int n = 0; n < kPresets; ++n) {
        settings.presets[static_cast<std::size_t>(n)] = {
            -12345 + n * 100, 4500 - n, {static_cast<halvex::Byte>(n), 1, 0, 255}};
    }
    settings.tours[0] = {{5 | 0x40, 10 | 0x80}, {63 | 0xC0, 0}, {0, 127}};
    settings.tours[2] = std::vector<TourStep>(kMostTourSteps, TourStep{31, 5});
    return settings;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string problemWith(const std::string& text) {
    const SettingsRead read = readSettingsText(text);
    EXPECT_FALSE(read.settings.has_value()) << "accepted:\n" << text;
    return read.problem;
}

}  // namespace

TEST(SettingsFile, KeepsEveryValueOfEachControllerType) {
    for (int type : {0, 1, 2}) {
        const UnitSettings settings = sample(type);
        const std::string text = writeSettingsText(settings);
        const SettingsRead read = readSettingsText(text);
        ASSERT_TRUE(read.settings.has_value()) << "type " << type << ": " << read.problem;
        EXPECT_EQ(*read.settings, settings) << "type " << type;
        // Video settings only for the types that have that hardware.
        EXPECT_EQ(text.find("routing = ") != std::string::npos, type == 0);
        EXPECT_EQ(text.find("legacy-video = ") != std::string::npos, type == 2);
        EXPECT_EQ(text.find("camera1-aux-1 = ") != std::string::npos, type != 1);
    }
    // A unit whose clock was never set, at firmware 0.00, and at address 0.
    UnitSettings fresh = sample();
    fresh.identity = {0, 0, 0, 0, 2000, 0, 0};
    const std::string freshText = writeSettingsText(fresh);
    EXPECT_NE(freshText.find("\nclock-date = 2000-00-00\n"), std::string::npos);
    EXPECT_NE(freshText.find("\nfirmware = 0.00\n"), std::string::npos);
    EXPECT_EQ(readSettingsText(freshText).settings, fresh);
}

TEST(SettingsFile, ASaveCutShortByAFullDiskFails) {
    QTemporaryDir folder;
    const halvex::testing::FullDisk full(100);
    ASSERT_TRUE(full.active());
    const QString problem =
        saveSettingsFile(folder.filePath(QStringLiteral("unit.txt")), sample(0));
    EXPECT_TRUE(problem.contains(QStringLiteral("unit.txt cannot be written")))
        << problem.toStdString();
}

TEST(SettingsFile, NamesWhatIsWrongWithAValue) {
    const std::string text = writeSettingsText(sample());
    const struct {
        std::string from;
        std::string to;
        std::string problem;
    } cases[] = {
        {"pan-ramp = 40", "pan-ramp = 256", "speeds/pan-ramp is 256, outside 1..255"},
        {"pan-ramp = 40", "pan-ramp = 4O", "speeds/pan-ramp '4O' is not a valid value"},
        {"pan-offset = -12.34", "pan-offset = 360.01",
         "offsets/pan-offset is 360.01, outside -360.00..360.00"},
        {"heater = full power", "heater = hot",
         "housekeeping/heater is 'hot', not one of disabled, share power, full power"},
        {"blank-vout-2 = yes", "blank-vout-2 = maybe",
         "video/blank-vout-2 is 'maybe', not yes or no"},
        {"firmware = 2.10", "firmware = 2.x", "unit/firmware '2.x' is not a valid value"},
        {"firmware = 2.10", "firmware = 2.256", "unit/firmware is 2.256, outside 0..255"},
        {"clock-date = 2026-11-25", "clock-date = 1999-11-25", "outside 2000..2255"},
        {"clock-date = 2026-11-25", "clock-date = 2026-256-25", "is 2026-256-25, outside 0..255"},
        {"controller-type = 0", "controller-type = 4", "outside 0..3"},
        {"pan-ramp = 40", "pan-ramp = 40\npan-ramp = 41", "speeds/pan-ramp comes twice"},
        {"pan-ramp = 40", "pan-rampe = 40", "unknown setting speeds/pan-rampe"},
        {"pan-ramp = 40\n", "", "the setting speeds/pan-ramp is missing"},
        {"pan-ramp = 40", "pan-ramp 40", "expected 'name = value'"},
        {"[speeds]", "[speed]", "unknown section [speed]"},
        {"[lenses]", "[speeds]", "the section [speeds] comes twice"},
        {"[unit]\n", "", "a setting before the first [section]"},
        {"7 = -116.45 44.93 7 1 0 255", "7 = -116.45 44.93 7 1 0", "presets/7 needs six values"},
        {"7 = -116.45 44.93 7 1 0 255", "7 = -116.45 44.93 7 1 0 256",
         "presets/7 lens is 256, outside 0..255"},
        {"7 = -116.45 44.93 7 1 0 255", "7 = 540.01 44.93 7 1 0 255",
         "presets/7 pan is 540.01, outside"},
        {"7 = -116.45 44.93 7 1 0 255", "7 = -116.45 270.01 7 1 0 255",
         "presets/7 tilt is 270.01, outside"},
        {"1 = 5/1/10/yes", "1 = 5/1/10/y", "tours/1 step '5/1/10/y' is not preset/camera"},
        {"1 = 5/1/10/yes", "1 = 64/1/10/yes", "tours/1 preset is 64, outside 0..63"},
        {"3 = 31/0/5/no", "3 = 31/0/5/no 31/0/5/no", "tours/3 has more than 63 steps"},
        {kFormatLine, "halvex-unit-settings 2", "newer format"},
        {kFormatLine, "Halvex unit settings", "it is not a unit settings file"},
    };
    for (const auto& c : cases) {
        const std::string problem = problemWith(replaced(text, c.from, c.to));
        EXPECT_NE(problem.find(c.problem), std::string::npos)
            << c.from << " -> " << c.to << ": " << problem;
    }
    // A problem names its line.
    const std::size_t end = text.find("\nend\n");
    const auto endLine = std::count(text.begin(), text.begin() + end + 1, '\n') + 1;
    EXPECT_EQ(problemWith(replaced(text, "\nend\n", "\nend\naddress = 1\n")),
              "line " + std::to_string(endLine + 1) + ": there is more after the line 'end'");
    // Hand edits in another spacing are fine; the format line must lead.
    EXPECT_TRUE(readSettingsText(replaced(replaced(text, "pan-ramp = 40", "\tpan-ramp=40  \r"),
                                          "7 = -116.45 44.93", "7 =  -116.45\t44.93"))
                    .settings.has_value());
    EXPECT_EQ(problemWith(""), "it is not a unit settings file");
    EXPECT_EQ(problemWith(std::string(kMostBytes + 1, '#')),
              "it is larger than any unit settings file");
}

// A file saved while the settings had names of their own ("Dis", "9.6",
// "232", "full-power") still reads, and is written back with the Line
// Log's names.
TEST(SettingsFile, ReadsTheFormerValueNamesAndWritesTheLineLogs) {
    QFile file(QStringLiteral(HALVEX_FUZZ_CASES "/../tests/commissioning/old_names_settings.txt"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    const SettingsRead read = readSettingsText(std::string_view(bytes.constData(), bytes.size()));
    ASSERT_TRUE(read.settings.has_value()) << read.problem;
    const std::string text = writeSettingsText(*read.settings);
    for (const char* line :
         {"\ncamera1-baud = 115200\n", "\ncamera2-baud = off\n", "\ncamera1-level = RS-422\n",
          "\ncamera2-level = RS-232\n", "\nheater = full power\n"}) {
        EXPECT_NE(text.find(line), std::string::npos) << line;
    }
    EXPECT_EQ(readSettingsText(text).settings, read.settings);
}

// The inputs the file fuzzer keeps: none may crash the reader, and what it
// accepts it writes back the same.
TEST(SettingsFile, ReplaysTheFuzzerCases) {
    int files = 0;
    for (const char* folder : {"settings-corpus", "settings-regressions"}) {
        const QDir dir(QStringLiteral(HALVEX_FUZZ_CASES "/") + QString::fromLatin1(folder));
        for (const QString& name : dir.entryList(QDir::Files)) {
            QFile file(dir.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            const SettingsRead read =
                readSettingsText(std::string_view(bytes.constData(), bytes.size()));
            if (read.settings) {
                EXPECT_EQ(readSettingsText(writeSettingsText(*read.settings)).settings,
                          read.settings)
                    << name.toStdString();
            }
            ++files;
        }
    }
    EXPECT_GT(files, 0);
}

// The numbers of every value, angles in hundredths.
TEST(SettingsFile, ANumberTakesAMinusAndAtMostNineDigitsAndAnAngleAtMostTwoDecimals) {
    EXPECT_EQ(hundredths("12.5"), 1250);
    EXPECT_EQ(hundredths("-0.05"), -5);
    EXPECT_EQ(hundredths("7"), 700);
    for (const char* refused : {"1.x", "x.5", "1.", ".5", "1.234", "12345678.0", "1.-5", "--1"}) {
        EXPECT_EQ(hundredths(refused), std::nullopt) << refused;
    }
    EXPECT_EQ(wholeNumber("-5"), -5);
    EXPECT_EQ(wholeNumber("-123456789"), -123456789);
    EXPECT_EQ(wholeNumber("123456789"), 123456789);
    for (const char* refused : {"", "-", "+5", "1234567890", "-1234567890", "5 ", "1.5"}) {
        EXPECT_EQ(wholeNumber(refused), std::nullopt) << refused;
    }
}
