#include <gtest/gtest.h>

#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QRadioButton>
#include <QScrollBar>
#include <QStatusBar>
#include <QTimer>
#include <algorithm>
#include <numeric>
#include <set>

#include "commissioning/commissioning_menu.h"
#include "commissioning/find_units_dialog.h"
#include "commissioning/progress_dialog.h"
#include "commissioning/restore_dialog.h"
#include "commissioning/settings_text.h"
#include "tests/support/console_rig.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;

namespace {

using Message_ = std::vector<Byte>;

bool isJog(const Message_& message) {
    return !message.empty() && message.front() == 0x31;
}

// Questions a save or restore asks; everything else it sends is a write.
bool isRead(const Message_& m) {
    for (const GroupSpec& group : settingGroups()) {
        if (m == group.request) {
            return true;
        }
    }
    const Byte code = m.front();
    return code == 0x9A || (code == 0x40 && m.size() == 2) || (code == 0x56 && m.size() == 2) ||
           (code == 0x51 && m.size() == 3);
}

// The console with its commissioning menu answering through the test: files
// chosen, the confirmation answered, a short wait for each address searched.
struct CommissioningRig : ConsoleRig {
    explicit CommissioningRig(const sim::UnitOptions& options = {}) : ConsoleRig(options) {
        menu = window->findChild<CommissioningMenu*>(QStringLiteral("CommissioningMenu"));
        menu->setFileChooser([this](bool, const QString&) { return file; });
        menu->setConfirmer([this](RestoreDialog& dialog) {
            confirmations.push_back(rows(dialog));
            moveWarned = dialog.MoveWarning->isVisibleTo(&dialog);
            cancelIsDefault =
                dialog.RestoreCancelBut->isDefault() && !dialog.RestoreOkBut->isDefault();
            return confirmAnswer;
        });
        menu->setProbeWaitMs(20);
        file = directory.filePath(QStringLiteral("unit.txt"));
    }
    ~CommissioningRig() { line.onFrame = nullptr; }

    void trigger(const char* action) {
        window->findChild<QAction*>(QLatin1String(action))->trigger();
    }
    QString status() const { return window->statusBar()->currentMessage(); }
    // Writes since the last line.clear().
    std::vector<Message_> writes() const {
        std::vector<Message_> out;
        for (const Message_& message : line.messages(false)) {
            if (!isRead(message)) {
                out.push_back(message);
            }
        }
        return out;
    }
    static QStringList rows(RestoreDialog& dialog) {
        QStringList out;
        for (int row = 0; row < dialog.DifferenceTable->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < 4; ++column) {
                cells << dialog.DifferenceTable->item(row, column)->text();
            }
            out << cells.join(QLatin1Char('|'));
        }
        return out;
    }
    std::string fileText() const {
        QFile in(file);
        EXPECT_TRUE(in.open(QIODevice::ReadOnly));
        return in.readAll().toStdString();
    }
    void writeFile(const std::string& text) const {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(text.data(), static_cast<qint64>(text.size()));
    }
    UnitSettings saved() const {
        const SettingsRead read = readSettingsText(fileText());
        EXPECT_TRUE(read.settings.has_value()) << read.problem;
        return read.settings.value_or(UnitSettings{});
    }
    QString lastMessage() const {
        return shown.empty() ? QString()
                             : shown.back().title + QStringLiteral(": ") + shown.back().text;
    }

    CommissioningMenu* menu = nullptr;
    QString file;
    bool confirmAnswer = true;
    std::vector<QStringList> confirmations;
    bool moveWarned = false;
    bool cancelIsDefault = false;
};

FindUnitsDialog* findDialog(ConsoleRig& rig) {
    return rig.window->findChild<FindUnitsDialog*>(QStringLiteral("FindUnitsDialog"));
}

std::vector<Byte> addressesAsked(const RecordingPeer& line, Byte code) {
    std::vector<Byte> out;
    for (const auto& frame : line.frames()) {
        if (!frame.message.empty() && frame.message.front() == code) {
            out.push_back(frame.address);
        }
    }
    return out;
}

}  // namespace

TEST(FindUnits, ListsTheUnitAtItsAddressAndTalksToIt) {
    sim::UnitOptions options;
    options.id = 7;
    options.variant = 1;
    options.firmwareMajor = 3;
    options.firmwareMinor = 4;
    options.clockDate = sim::CalendarDate{2025, 2, 3};
    CommissioningRig rig(options);

    // Offline: the search opens the chosen port for itself.
    rig.trigger("MenuFindUnits");
    FindUnitsDialog* dialog = findDialog(rig);
    ASSERT_NE(dialog, nullptr);
    ASSERT_EQ(dialog->FoundList->rowCount(), 1);
    QStringList cells;
    for (int column = 0; column < 4; ++column) {
        cells << dialog->FoundList->item(0, column)->text();
    }
    EXPECT_EQ(cells.join(QLatin1Char('|')),
              QStringLiteral("7|1 no camera 2 or video|3.04|2025-02-03"));
    EXPECT_TRUE(dialog->FindStatus->text().startsWith(QStringLiteral("One unit found.")));
    EXPECT_TRUE(dialog->FindStatus->text().contains(QStringLiteral("Address 0 was not asked")));

    // Every address once, one after the other, and never the broadcast address.
    std::vector<Byte> probes = addressesAsked(rig.line, 0x9A);
    probes.erase(std::unique(probes.begin(), probes.end()), probes.end());
    std::vector<Byte> expected(99);
    std::iota(expected.begin(), expected.end(), Byte{1});
    EXPECT_EQ(probes, expected);
    for (const auto& frame : rig.line.frames()) {
        EXPECT_NE(frame.address, 0) << int(frame.message.front());
    }
    EXPECT_EQ(addressesAsked(rig.line, 0x31), std::vector<Byte>{7});
    // Back to offline as it was, talking to address 0.
    EXPECT_FALSE(rig.port->isOpen());
    EXPECT_EQ(rig.window->state().UnitId, 0);
    EXPECT_FALSE(rig.window->state().SendInProgress);

    EXPECT_TRUE(dialog->TalkToBut->isEnabled());
    QTest::mouseClick(dialog->TalkToBut, Qt::LeftButton);
    EXPECT_EQ(rig.find<QScrollBar>(QStringLiteral("CurrIDScroll"))->value(), 7);
    EXPECT_EQ(rig.window->state().UnitId, 7);
    ASSERT_TRUE(rig.waitFor([&] { return findDialog(rig) == nullptr; }));
    // Now Start reaches it.
    EXPECT_TRUE(rig.connect());
}

TEST(FindUnits, AnEmptyLineEndsWithAnEmptyListAfterAskingAddressZero) {
    CommissioningRig rig;
    rig.line.setConnected(false);
    rig.trigger("MenuFindUnits");
    FindUnitsDialog* dialog = findDialog(rig);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->FoundList->rowCount(), 0);
    EXPECT_EQ(dialog->FindStatus->text(), QStringLiteral("No unit answered."));
    EXPECT_FALSE(dialog->TalkToBut->isEnabled());
    EXPECT_EQ(dialog->FindCloseBut->text(), QStringLiteral("Close"));
    const std::vector<Byte> probes = addressesAsked(rig.line, 0x9A);
    ASSERT_EQ(probes.size(), 100u);
    EXPECT_EQ(probes.back(), 0);
    EXPECT_EQ(probes[98], 99);
    EXPECT_FALSE(rig.port->isOpen());
    EXPECT_EQ(rig.window->state().lamp(), LinkLamp::None);
    QTest::mouseClick(dialog->FindCloseBut, Qt::LeftButton);
    EXPECT_TRUE(rig.waitFor([&] { return findDialog(rig) == nullptr; }));
}

TEST(FindUnits, CancelStopsTheSearchAndOnlineTheConsoleGoesOnTalkingToItsUnit) {
    sim::UnitOptions options;
    options.id = 3;
    CommissioningRig rig(options);
    rig.find<QScrollBar>(QStringLiteral("CurrIDScroll"))->setValue(3);
    ASSERT_TRUE(rig.connect());
    rig.line.clear();
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.address == 5) {
            QTimer::singleShot(
                0, [&] { QTest::mouseClick(findDialog(rig)->FindCloseBut, Qt::LeftButton); });
        }
    };
    rig.trigger("MenuFindUnits");
    FindUnitsDialog* dialog = findDialog(rig);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->FindStatus->text().left(17), QStringLiteral("Search cancelled."));
    EXPECT_EQ(dialog->FoundList->rowCount(), 1);  // unit 3, found before
    const std::vector<Byte> probes = addressesAsked(rig.line, 0x9A);
    EXPECT_LT(std::count_if(probes.begin(), probes.end(), [](Byte a) { return a > 6; }), 1);
    // The port stays open and the jog messages go to unit 3 again.
    EXPECT_TRUE(rig.port->isOpen());
    EXPECT_EQ(rig.window->state().UnitId, 3);
    const std::size_t before = rig.line.frames().size();
    ASSERT_TRUE(rig.waitFor([&] { return rig.line.frames().size() > before + 3; }));
    EXPECT_EQ(rig.line.frames().back().address, 3);
    EXPECT_TRUE(isJog(rig.line.frames().back().message));
}

TEST(SaveUnit, WritesEverythingTheUnitHoldsAndLeavesThePagesShowingIt) {
    CommissioningRig rig;
    sim::UnitState& unit = rig.unit.state();
    unit.settings.panRates.ramp = 77;
    unit.settings.tiltJogTop = 99;
    unit.settings.panOffset = -1250;
    unit.settings.cameraComm = {0x2B, 0x41};
    unit.presets.at(3) = sim::Preset{1234, -567, {10, 20, 30, 40}};
    unit.tours.append(1, sim::TourStep{5 | 0x40, 10 | 0x80});
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    EXPECT_TRUE(rig.status().startsWith(QStringLiteral("Saved the settings of unit 0 ")))
        << rig.status().toStdString();
    const UnitSettings saved = rig.saved();
    EXPECT_EQ(saved.identity.address, 0);
    EXPECT_EQ(saved.identity.firmwareMajor, 2);
    EXPECT_EQ(saved.values.at("speeds/pan-ramp"), 77);
    EXPECT_EQ(saved.values.at("speeds/tilt-second-top-speed"), 99);
    EXPECT_EQ(saved.values.at("offsets/pan-offset"), -1250);
    EXPECT_EQ(saved.values.at("cameras/camera1-baud"), 3);
    EXPECT_EQ(saved.values.at("cameras/camera1-format"), 1);
    EXPECT_EQ(saved.values.at("cameras/camera1-level"), 1);
    EXPECT_EQ(saved.values.at("cameras/camera2-stop-bits"), 1);
    // Presets and soft limits read as the unit reports them: offset applied.
    EXPECT_EQ(saved.presets[3], (StoredPreset{1234 - 1250, -567, {10, 20, 30, 40}}));
    EXPECT_EQ(saved.values.at("soft-limits/cw"), 17000 - 1250);
    EXPECT_EQ(saved.tours[1], (std::vector<TourStep>{{5 | 0x40, 10 | 0x80}}));
    EXPECT_NE(rig.fileText().find("\npan-ramp = 77\n"), std::string::npos);

    // The tour page shows tour 1 again, not the steps the save read.
    EXPECT_TRUE(rig.find<QRadioButton>(QStringLiteral("TourSel_0"))->isChecked());
    ASSERT_TRUE(rig.waitFor([&] { return !rig.window->state().SendInProgress; }));
    EXPECT_EQ(rig.find<QListWidget>(QStringLiteral("ScriptList"))->count(), 0);
    EXPECT_TRUE(rig.shown.empty());
}

TEST(SaveUnit, OfflineNothingIsAskedAndAFileThatCannotBeWrittenIsNamed) {
    CommissioningRig rig;
    rig.trigger("MenuSaveUnit");
    EXPECT_EQ(rig.lastMessage(), QStringLiteral("Save Unit Settings: The console is not "
                                                "connected. Press Start to connect to the unit "
                                                "first."));
    EXPECT_TRUE(rig.line.frames().empty());

    ASSERT_TRUE(rig.connect());
    rig.file = rig.directory.filePath(QStringLiteral("no/such/folder/unit.txt"));
    rig.trigger("MenuSaveUnit");
    EXPECT_TRUE(rig.lastMessage().startsWith(
        QStringLiteral("Could Not Save Unit Settings: unit.txt cannot be written")))
        << rig.lastMessage().toStdString();
}

TEST(RestoreUnit, ShowsTheDifferencesAndWritesOnlyThoseAfterOk) {
    CommissioningRig rig;
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    sim::UnitState& unit = rig.unit.state();
    unit.settings.panRates.ramp = 33;
    unit.settings.heater = 2;
    unit.settings.lensConfig[1] = 0x4A;
    unit.presets.at(4).pan = 999;
    unit.tours.append(2, sim::TourStep{7, 3});

    // Cancel writes nothing.
    rig.confirmAnswer = false;
    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    ASSERT_EQ(rig.confirmations.size(), 1u);
    EXPECT_TRUE(rig.cancelIsDefault);
    EXPECT_FALSE(rig.moveWarned);
    EXPECT_EQ(rig.confirmations[0],
              QStringList({QStringLiteral("speeds/pan-ramp|40|33|"),
                           QStringLiteral("housekeeping/heater|share-power|full-power|"),
                           QStringLiteral("lenses/camera2-focus-invert|no|yes|"),
                           QStringLiteral("presets/4|0.00 0.00 0 0 0 0|9.99 0.00 0 0 0 0|"),
                           QStringLiteral("tours/3|no steps|7/0/3/no|")}));
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.status(), QStringLiteral("Restore cancelled: nothing was written."));

    rig.confirmAnswer = true;
    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    const std::vector<Message_> expected = {
        {0x92, 20, 40, 20, 0, 20, 40, 20, 0}, {0x97, 1}, {0x61, 0x48, 10, 10, 0x48, 10, 10},
        {0x41, 4, 0, 0, 0, 0, 0, 0},          {0x50, 2},
    };
    EXPECT_EQ(rig.writes(), expected);
    EXPECT_EQ(unit.settings.panRates.ramp, 40);
    EXPECT_EQ(unit.settings.heater, 1);
    EXPECT_EQ(unit.presets.at(4).pan, 0);
    EXPECT_EQ(unit.tours.size(2), 0);
    EXPECT_EQ(rig.status(), QStringLiteral("Restored unit.txt onto unit 0; read back, the unit "
                                           "holds every value of the file."));
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();

    // Nothing left to do: nothing asked, nothing written.
    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.confirmations.size(), 2u);
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.status(), QStringLiteral("The unit already holds every value of unit.txt."));
}

TEST(RestoreUnit, FactorySettingsWaitForTheFactoryArea) {
    CommissioningRig rig;
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    rig.unit.state().settings.directions = 0x05;
    rig.unit.state().settings.panEncoder = 321;

    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    ASSERT_EQ(rig.confirmations.size(), 1u);
    EXPECT_TRUE(rig.confirmations[0].contains(
        QStringLiteral("factory/pan-motor-reverse|no|yes|factory area closed")));
    EXPECT_TRUE(rig.writes().empty());
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: Restored, except the factory settings, which "
                             "are written only while the factory area is open: "
                             "factory/pan-motor-reverse (file no, unit yes); "
                             "factory/pan-resolver-invert (file no, unit yes); "
                             "factory/pan-encoder (file 15, unit 321)."));
    EXPECT_EQ(rig.unit.state().settings.directions, 0x05);

    rig.find<QLineEdit>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
    rig.click(QStringLiteral("PassEntBut"));
    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    EXPECT_EQ(rig.writes(), (std::vector<Message_>{{0x95, 0}, {0xA5, 0, 15, 0, 15, 0}}));
    EXPECT_EQ(rig.unit.state().settings.directions, 0);
    EXPECT_EQ(rig.unit.state().settings.panEncoder, 15);
}

TEST(RestoreUnit, RefusesABadFileByNameWithNothingOnTheWire) {
    CommissioningRig rig;
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    const std::string good = rig.fileText();
    const struct {
        std::string text;
        const char* problem;
    } cases[] = {
        {good.substr(0, good.size() / 2), "it is cut short: the line 'end' is missing"},
        {std::string(good).replace(good.find("pan-ramp = 40"), 13, "pan-ramp = 300"),
         "speeds/pan-ramp is 300, outside 1..255"},
        {"PNG\r\n", "it is not a unit settings file"},
    };
    for (const auto& c : cases) {
        rig.writeFile(c.text);
        rig.line.clear();
        rig.trigger("MenuRestoreUnit");
        EXPECT_TRUE(rig.lastMessage().startsWith(QStringLiteral(
            "Could Not Restore Unit Settings: unit.txt was refused, and nothing was sent: ")));
        EXPECT_TRUE(rig.lastMessage().contains(QLatin1String(c.problem)))
            << rig.lastMessage().toStdString();
        EXPECT_TRUE(rig.line.messages(false).empty());
    }
    // A file from another controller type is refused after reading the unit.
    UnitSettings other = readSettingsText(good).settings.value();
    other.identity.controllerType = 1;
    rig.writeFile(writeSettingsText(other));
    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.lastMessage().contains(QStringLiteral("controller type 1")));
    EXPECT_TRUE(rig.writes().empty());
}

// Lens positions reach a preset only from where the lenses stand, and lens
// bytes go back to none only by clearing every preset.
TEST(RestoreUnit, MovesTheLensesForPresetLensPositionsOnlyAfterSayingSo) {
    CommissioningRig rig;
    sim::UnitState& unit = rig.unit.state();
    unit.presets.at(5) = sim::Preset{1000, 500, {60, 70, 80, 90}};
    unit.presets.at(6) = sim::Preset{100, 200, {}};
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    unit.presets.at(5) = sim::Preset{1000, 500, {}};
    unit.presets.at(6) = sim::Preset{100, 200, {1, 2, 3, 4}};

    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.moveWarned);
    const std::vector<Message_> writes = rig.writes();
    ASSERT_GE(writes.size(), 4u);
    EXPECT_EQ(writes[0], (Message_{0x94}));
    EXPECT_EQ(writes[1], (Message_{0x41, 5, 0xE8, 0x03, 0, 0xF4, 0x01, 0}));
    // Both axes held (99999), the lenses to the preset's positions, then
    // the preset takes them.
    EXPECT_EQ(writes[2], (Message_{0x3A, 0x9F, 0x86, 0x01, 0x9F, 0x86, 0x01, 60, 70, 80, 90}));
    EXPECT_EQ(writes[3], (Message_{0x43, 5}));
    EXPECT_EQ(writes[4], (Message_{0x41, 6, 100, 0, 0, 200, 0, 0}));
    // And back to where they stood.
    EXPECT_EQ(writes.back(),
              (Message_{0x3A, 0x9F, 0x86, 0x01, 0x9F, 0x86, 0x01, 128, 128, 128, 128}));
    EXPECT_EQ(unit.presets.at(5), (sim::Preset{1000, 500, {60, 70, 80, 90}}));
    EXPECT_EQ(unit.presets.at(6), (sim::Preset{100, 200, {}}));
    EXPECT_EQ(unit.lenses.position(0), 128);
    EXPECT_TRUE(rig.shown.empty()) << rig.lastMessage().toStdString();
}

// A soft limit is set where the platform stands: the platform drives there
// with the limits overridden, and back. A limit the unit cannot reach is
// named afterwards.
TEST(RestoreUnit, DrivesToEachSoftLimitAndNamesTheOneItCannotReach) {
    CommissioningRig rig;
    sim::UnitState& unit = rig.unit.state();
    unit.settings.panTop = 255;
    unit.settings.panRates = {127, 255, 63};
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    UnitSettings file = rig.saved();
    file.values["soft-limits/cw"] = 2000;
    file.values["soft-limits/ccw"] = -20000;  // past the mechanical end
    rig.writeFile(writeSettingsText(file));

    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(rig.moveWarned);
    const std::vector<Message_> sent = rig.line.messages();
    const auto at = [&](const Message_& message) {
        return std::find(sent.begin(), sent.end(), message) - sent.begin();
    };
    const auto toLimit = at({0x33, 0xD0, 0x07, 0, 0x9F, 0x86, 0x01});
    const auto setLimit = at({0x81, 0});
    ASSERT_LT(setLimit, static_cast<long>(sent.size()));
    ASSERT_LT(toLimit, setLimit);
    // The override was on for the move, and is off at the end.
    EXPECT_TRUE(std::any_of(sent.begin(), sent.begin() + toLimit,
                            [](const Message_& m) { return isJog(m) && (m[1] & 0x04) != 0; }));
    EXPECT_EQ(unit.settings.softLimits[0], 2000);
    EXPECT_EQ(unit.motion.mechanicalPan(), 0);
    EXPECT_FALSE(unit.motion.overrideOn());
    EXPECT_FALSE(unit.motion.moving());
    EXPECT_EQ(rig.lastMessage(),
              QStringLiteral("Restore Unit Settings: The unit did not take 1 of the values: "
                             "soft-limits/ccw (file -200.00, unit -170.00)."));
}

TEST(RestoreUnit, CancelDuringAMoveStopsThePlatform) {
    CommissioningRig rig;
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");
    UnitSettings file = rig.saved();
    file.values["soft-limits/cw"] = 9000;  // a few seconds away at the unit's top speed
    rig.writeFile(writeSettingsText(file));
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message.front() == 0x33) {
            QTimer::singleShot(200, [&] {
                auto* dialog = rig.window->findChild<ProgressDialog*>();
                QTest::mouseClick(dialog->CommissioningCancelBut, Qt::LeftButton);
            });
        }
    };
    rig.line.clear();
    rig.trigger("MenuRestoreUnit");
    const std::vector<Message_> sent = rig.line.messages();
    const auto move =
        std::find_if(sent.begin(), sent.end(), [](const Message_& m) { return m.front() == 0x33; });
    ASSERT_NE(move, sent.end());
    EXPECT_TRUE(std::any_of(move, sent.end(),
                            [](const Message_& m) { return isJog(m) && (m[1] & 0x02) != 0; }));
    EXPECT_EQ(std::count_if(move, sent.end(), [](const Message_& m) { return m.front() == 0x81; }),
              0);
    ASSERT_TRUE(rig.waitFor([&] { return !rig.unit.state().motion.moving(); }, 3000));
    EXPECT_GT(rig.unit.state().motion.mechanicalPan(), 0);
    EXPECT_LT(rig.unit.state().motion.mechanicalPan(), 9000);
    EXPECT_EQ(rig.unit.state().settings.softLimits[0], 17000);
    EXPECT_EQ(rig.lastMessage(), QStringLiteral("Restore Unit Settings: The restore was stopped. "
                                                "The unit holds part of the file's settings."));
    EXPECT_FALSE(rig.window->state().SendInProgress);
}
