#pragma once

// The whole console and its Unit menu against the virtual unit in process,
// with files chosen, the restore confirmation answered and a short wait for
// each address searched by the test; a unit set up unlike a new one; and
// what the restore tests, with and without a window, look for in the frames
// a restore sends.

#include <gtest/gtest.h>

#include <QAction>
#include <QFile>
#include <QLineEdit>
#include <QStatusBar>
#include <QTableWidget>
#include <algorithm>
#include <iterator>

#include "commissioning/commissioning_menu.h"
#include "commissioning/find_units_dialog.h"
#include "commissioning/restore_dialog.h"
#include "commissioning/settings_text.h"
#include "commissioning/unit_restore.h"
#include "protocol/vocabulary.h"
#include "sim/state_file.h"
#include "tests/support/console_rig.h"
#include "tests/support/finish.h"
#include "tests/support/messages.h"

namespace halvex::testing {

using namespace halvex::commissioning;

namespace v = halvex::vocab;

using Message_ = std::vector<Byte>;

// A table's rows, each its four cells joined by '|'.
inline QStringList rows(const QTableWidget* table) {
    QStringList out;
    for (int row = 0; row < table->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < 4; ++column) {
            cells << table->item(row, column)->text();
        }
        out << cells.join(QLatin1Char('|'));
    }
    return out;
}

inline bool isJog(const Message_& message) {
    return !message.empty() && message.front() == v::JogMessage::kCode;
}

// Questions a save or restore asks; everything else it sends is a write.
inline bool isRead(const Message_& m) {
    const auto is = [&m]<class M>(M) {
        return m.front() == M::kCode && m.size() == static_cast<std::size_t>(M::kLength);
    };
    return std::ranges::any_of(settingGroups(),
                               [&m](const SettingGroup& group) { return m == group.request; }) ||
           is(v::FirmwareRequest{}) || is(v::PresetRequest{}) || is(v::TourStepCountRequest{}) ||
           is(v::TourStepRequest{});
}

// The console with its commissioning menu answering through the test: files
// chosen, the confirmation answered, a short wait for each address searched.
struct CommissioningRig : ConsoleRig {
    // A save or restore is a long run of request and reply: the unit in
    // the same process keeps up with a frame every millisecond.
    static constexpr int kCommissioningTickMs = 1;
    // A restore that drives the platform to its soft limits takes a while.
    static constexpr int kLongestJobMs = 60000;

    // The platform and lenses travel four times as fast as a real unit's.
    static constexpr int kUnitTimeScale = 4;
    // The unit in the same process answers within a tick or two.
    static constexpr int kProbeWaitMs = 8;

    explicit CommissioningRig(const sim::UnitOptions& options = {},
                              int unitTimeScale = kUnitTimeScale)
        : ConsoleRig(options, kCommissioningTickMs, unitTimeScale) {
        menu = window->findChild<CommissioningMenu*>(QStringLiteral("CommissioningMenu"));
        menu->setFileChooser([this](bool save, QString suggested) -> QCoro::Task<QString> {
            asked.push_back({save, suggested});
            co_return QString(file);  // GCC 12 would move the member out
        });
        menu->setConfirmer([this](RestoreDialog& dialog) -> QCoro::Task<bool> {
            confirmations.push_back(rows(dialog.DifferenceTable));
            moveWarned = dialog.MoveWarning->isVisibleTo(&dialog);
            cancelIsDefault =
                dialog.RestoreCancelBut->isDefault() && !dialog.RestoreOkBut->autoDefault();
            co_return confirmAnswer;
        });
        menu->setProbeWaitMs(kProbeWaitMs);
        file = directory.filePath(QStringLiteral("unit.txt"));
    }
    ~CommissioningRig() { line.onFrame = nullptr; }

    // Triggers the menu entry, with the line's record cleared, and lets the
    // job it starts run to its end.
    void trigger(const char* action) {
        line.clear();
        window->findChild<QAction*>(QLatin1String(action))->trigger();
        EXPECT_TRUE(settle(kLongestJobMs)) << action << " still running";
    }
    QString status() const { return window->statusBar()->currentMessage(); }
    // Writes since the last trigger (or line.clear()).
    std::vector<Message_> writes() const {
        std::vector<Message_> out;
        std::ranges::remove_copy_if(line.messages(false), std::back_inserter(out), isRead);
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
    // The saved file as `edit` leaves it.
    void editFile(const std::function<void(UnitSettings&)>& edit) const {
        UnitSettings settings = saved();
        edit(settings);
        writeFile(writeSettingsText(settings));
    }
    void openFactoryArea() {
        find<QLineEdit>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
        click(QStringLiteral("PassEntBut"));
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
    // What the file chooser was asked: to save (or to open), and the name it
    // offered.
    std::vector<std::pair<bool, QString>> asked;
    bool confirmAnswer = true;
    std::vector<QStringList> confirmations;
    bool moveWarned = false;
    bool cancelIsDefault = false;
};

inline FindUnitsDialog* findDialog(ConsoleRig& rig) {
    return rig.window->findChild<FindUnitsDialog*>(QStringLiteral("FindUnitsDialog"));
}

// Presses a button of the Find Units dialog, which then closes.
inline bool closeWith(ConsoleRig& rig, QPushButton* button) {
    QTest::mouseClick(button, Qt::LeftButton);
    return rig.waitFor([&rig] { return findDialog(rig) == nullptr; });
}

inline std::vector<Byte> addressesAsked(const RecordingPeer& line, Byte code) {
    std::vector<Byte> out;
    for (const auto& frame : line.frames()) {
        if (!frame.message.empty() && frame.message.front() == code) {
            out.push_back(frame.address);
        }
    }
    return out;
}

// A unit set up unlike a new one in every setting the console restores, the
// bits of each setting byte alternating so that a value read from its
// neighbour's bit shows, kept as the unit's own state file. The lenses a
// configuration disables stay where they start (128) in the presets.
inline sim::StoredState distinctUnit() {
    const auto loaded = sim::loadState(COMMISSIONING_TEST_DATA "/distinct_unit.state");
    EXPECT_TRUE(loaded.has_value());
    sim::StoredState state = loaded.value_or(sim::StoredState{});
    sim::applyPowerUp(state.settings, state.powerUp);  // as the unit starts
    return state;
}

// What the unit would keep in its state file.
inline sim::StoredState stored(const sim::UnitState& unit) {
    return {unit.settings, unit.powerUp, unit.presets, unit.tours};
}

// Puts a stored state into the unit in place of what it holds.
inline void loadInto(sim::UnitState& unit, const sim::StoredState& state) {
    const Byte id = unit.settings.unitId;
    unit.settings = state.settings;
    unit.settings.unitId = id;
    unit.powerUp = state.powerUp;
    unit.presets = state.presets;
    unit.tours = state.tours;
}

// A jog message with this bit of its flags set.
inline bool jogWith(const Message_& m, v::Bit<v::JogMessage> bit) {
    return isJog(m) && v::isSet(m[v::jog::kFlagsByte.offset], bit);
}

template <class M>
inline bool is(const Message_& m) {
    return m.front() == M::kCode;
}

// Both axes held, the lenses to these positions.
inline Message_ lensesTo(std::array<std::uint32_t, 4> lens) {
    namespace move = v::absolute_move_with_lenses;
    Message_ m = test::message<v::AbsoluteMoveWithLenses>(
        {{move::kPan, v::absolute_move::kHoldAxis}, {move::kTilt, v::absolute_move::kHoldAxis}});
    for (std::size_t i = 0; i < lens.size(); ++i) {
        v::put(m, move::kLens[i], lens[i]);
    }
    return m;
}

inline Message_ storePreset(int preset, std::int32_t pan, std::int32_t tilt) {
    namespace store = v::store_preset;
    return test::message<v::StorePreset>(
        {{store::kPreset, preset}, {store::kPan, pan}, {store::kTilt, tilt}});
}

}  // namespace halvex::testing
