#include <gtest/gtest.h>

#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTimer>
#include <numeric>

#include "commissioning/progress_dialog.h"
#include "tests/commissioning/commissioning_rig.h"

using namespace halvex;
using namespace halvex::commissioning;
using namespace halvex::testing;
namespace v = halvex::vocab;

// Offline, the search opens the chosen port for itself and closes it again.
TEST(FindUnits, AnEmptyLineListsNoneAndTheUnitIsListedAndTalkedTo) {
    sim::UnitOptions options;
    options.id = 7;
    options.variant = 1;
    options.firmwareMajor = 3;
    options.firmwareMinor = 4;
    options.clockDate = sim::CalendarDate{2025, 2, 3};
    CommissioningRig rig(options);

    // Nobody answers: every address asked, 0 last, and an empty list.
    rig.line.setConnected(false);
    rig.menu->setProbeWaitMs(1);  // no answer to miss
    rig.trigger("MenuFindUnits");
    FindUnitsDialog* dialog = findDialog(rig);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->FoundList->rowCount(), 0);
    EXPECT_EQ(dialog->FindStatus->text(), QStringLiteral("No unit answered."));
    EXPECT_FALSE(dialog->TalkToBut->isEnabled());
    std::vector<Byte> everyAddress(100);  // 1 to 99, then 0
    std::iota(everyAddress.begin(), everyAddress.end() - 1, Byte{1});
    EXPECT_EQ(addressesAsked(rig.line, v::FirmwareRequest::kCode), everyAddress);
    EXPECT_FALSE(rig.port->isOpen());
    ASSERT_TRUE(closeWith(rig, dialog->FindCloseBut));
    // Closed while it searches: it stops after the address it is asking.
    rig.line.clear();
    rig.window->findChild<QAction*>(QStringLiteral("MenuFindUnits"))->trigger();
    ASSERT_TRUE(rig.waitFor([&] { return (dialog = findDialog(rig)) != nullptr; }));
    QTest::mouseClick(dialog->FindCloseBut, Qt::LeftButton);
    EXPECT_TRUE(settle(CommissioningRig::kLongestJobMs));
    EXPECT_EQ(dialog->FindStatus->text(), QStringLiteral("Search cancelled. No unit answered."));
    EXPECT_LT(addressesAsked(rig.line, v::FirmwareRequest::kCode).size(), 10u);
    ASSERT_TRUE(closeWith(rig, dialog->FindCloseBut));

    rig.line.setConnected(true);
    rig.menu->setProbeWaitMs(CommissioningRig::kProbeWaitMs);
    rig.trigger("MenuFindUnits");
    dialog = findDialog(rig);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(rows(dialog->FoundList), QStringList{"7|1 no camera 2 or video|3.04|2025-02-03"});

    // Never the broadcast address, and no jog that moves anything.
    for (const auto& frame : rig.line.frames()) {
        EXPECT_NE(frame.address, 0) << int(frame.message.front());
        if (isJog(frame.message)) {  // a standing jog: no speed, no lens
            EXPECT_EQ(frame.message, v::blank<v::JogMessage>());
        }
    }
    EXPECT_EQ(addressesAsked(rig.line, v::JogMessage::kCode), std::vector<Byte>{7});
    // Back to offline as it was, talking to address 0.
    EXPECT_FALSE(rig.port->isOpen());
    EXPECT_EQ(rig.window->state().UnitId, 0);
    EXPECT_FALSE(rig.window->state().SendInProgress);

    EXPECT_TRUE(dialog->TalkToBut->isEnabled());
    ASSERT_TRUE(closeWith(rig, dialog->TalkToBut));
    EXPECT_EQ(rig.find<QScrollBar>(QStringLiteral("CurrIDScroll"))->value(), 7);
    // Now Start reaches it.
    EXPECT_TRUE(rig.connect());
}

// The file as kept, line for line but for the dates, which change.
static void expectFileAsKept(const CommissioningRig& rig, const char* name) {
    QFile file(QStringLiteral(COMMISSIONING_TEST_DATA "/") + QLatin1String(name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QString written =
        QString::fromStdString(rig.fileText())
            .remove(QRegularExpression(QStringLiteral("(clock-date|saved) = [^\n]*\n")));
    EXPECT_EQ(written.toStdString(), file.readAll().toStdString()) << name;
}

// Offline nothing is asked. The menu entry starts the save and returns: the
// save goes on from the event loop, holding the line and its dialog until
// the last reply. Cancel pressed as the third setting group is asked for
// saves nothing.
TEST(SaveUnit, GoesOnFromTheEventLoopAndOfflineOrCancelledSavesNothing) {
    CommissioningRig rig;
    rig.trigger("MenuSaveUnit");
    EXPECT_EQ(rig.lastMessage(), QStringLiteral("Save Unit Settings: The console is not "
                                                "connected. Press Start to connect to the unit "
                                                "first."));
    EXPECT_TRUE(rig.line.frames().empty());
    rig.shown.clear();
    rig.asked.clear();

    sim::UnitState& unit = rig.unit.state();
    unit.settings.panJogTop = 0x20;  // no bit of its own that marks the variant
    ASSERT_TRUE(rig.connect());
    QFile::remove(rig.file);
    rig.window->findChild<QAction*>(QStringLiteral("MenuSaveUnit"))->trigger();
    EXPECT_FALSE(QFile::exists(rig.file));
    EXPECT_TRUE(rig.window->state().SendInProgress);
    const auto* dialog =
        rig.window->findChild<QDialog*>(QStringLiteral("CommissioningProgressDialog"));
    ASSERT_NE(dialog, nullptr);

    ASSERT_TRUE(settle(CommissioningRig::kLongestJobMs));
    EXPECT_EQ(rig.asked, (std::vector<std::pair<bool, QString>>{{true, "unit-0.txt"}}));
    EXPECT_TRUE(rig.status().startsWith(QStringLiteral("Saved the settings of unit 0 ")))
        << rig.status().toStdString();
    EXPECT_EQ(rig.window->findChild<QDialog*>(QStringLiteral("CommissioningProgressDialog")),
              nullptr);
    EXPECT_EQ(rig.saved().values.at("speeds/pan-second-top-speed"), 0x20);
    ASSERT_TRUE(rig.waitFor([&] { return !rig.window->state().SendInProgress; }));
    EXPECT_TRUE(rig.shown.empty());

    // Cancelled while the settings are read, and while the tours are.
    for (const Byte code :
         {settingGroups().at(2).request.front(), v::TourStepCountRequest::kCode}) {
        SCOPED_TRACE(int{code});
        QFile::remove(rig.file);
        QString afterCancel;  // how the dialog looks once Cancel is clicked
        bool cancelling = false;
        rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
            if (frame.message.front() == code && !std::exchange(cancelling, true)) {
                QTimer::singleShot(0, rig.window.get(), [&] {
                    auto* dialog = rig.window->findChild<ProgressDialog*>();
                    dialog->CommissioningCancelBut->click();
                    afterCancel = QStringLiteral("%1 %2").arg(
                        dialog->CommissioningStep->text(),
                        dialog->CommissioningCancelBut->isEnabled() ? "enabled" : "disabled");
                });
            }
        };
        rig.trigger("MenuSaveUnit");
        rig.line.onFrame = nullptr;
        EXPECT_EQ(afterCancel, QStringLiteral("Stopping... disabled"));
        EXPECT_EQ(rig.status(), QStringLiteral("Save Unit Settings cancelled: nothing was saved."));
        EXPECT_TRUE(rig.shown.empty());
        EXPECT_FALSE(QFile::exists(rig.file));
    }
}

// The file takes a value exactly when the page's own control would.
TEST(SettingsRanges, MatchThePagesControls) {
    CommissioningRig rig;
    // Each setting followed by the scroll bar that sets it.
    const QStringList controls =
        QStringLiteral(
            "speeds/pan-safe-speed PSafeScroll speeds/tilt-safe-speed TSafeScroll "
            "speeds/pan-ramp PRampScroll speeds/tilt-ramp TRampScroll "
            "speeds/pan-deceleration PDecelScroll speeds/tilt-deceleration TDecelScroll "
            "speeds/pan-top-speed PTopScroll speeds/tilt-top-speed TTopScroll "
            "speeds/pan-second-top-speed PITopScroll speeds/tilt-second-top-speed TITopScroll "
            "speeds/pan-minimum PMinScroll speeds/pan-maximum PMaxScroll "
            "speeds/tilt-minimum TMinScroll speeds/tilt-maximum TMaxScroll "
            "housekeeping/comm-timeout TOScroll factory/pan-encoder PEncScroll "
            "factory/tilt-encoder TEncScroll display/angle-line AngLineScroll "
            "display/name-line NumLineScroll")
            .split(' ');
    qsizetype withControls = 0;
    for (const SettingGroup& group : settingGroups()) {
        for (const SettingField& field : group.fields) {
            const std::string key = settingKey(group, field);
            const qsizetype control = controls.indexOf(QString::fromStdString(key));
            if (control >= 0) {
                const auto* bar = rig.find<QScrollBar>(controls[control + 1]);
                ASSERT_NE(bar, nullptr);
                EXPECT_EQ(field.minimum, bar->minimum()) << key;
                EXPECT_EQ(field.maximum, bar->maximum()) << key;
                ++withControls;
            }
        }
    }
    EXPECT_EQ(withControls * 2, controls.size());
    // The heater's choices (0 to 2, above) are its visible options.
    EXPECT_FALSE(rig.find<QRadioButton>(QStringLiteral("HeatOp_3"))->isVisibleTo(rig.window.get()));
}

// A new unit saved: every question byte for byte, and the file line for line
// as an operator reads and edits it.
TEST(SaveUnit, AsksExactlyTheseQuestionsAndWritesEachValueInItsPlace) {
    CommissioningRig rig;
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuSaveUnit");

    // Each read request padded to its write.
    const auto read = [](auto m) { return v::readRequest<decltype(m)>(); };
    std::vector<Message_> expected(
        {v::blank<v::FirmwareRequest>(), read(v::Rates{}), read(v::TopSpeeds{}),
         test::withBits(read(v::TopSpeeds{}), {v::top_speeds::kSecond}), read(v::PanSteps{}),
         read(v::TiltSteps{}), read(v::CommTimeout{}), read(v::Heater{}), read(v::Directions{}),
         read(v::Encoders{}), v::blank<v::OffsetsRequest>()});
    for (int limit = 0; limit < v::soft_limit::kLimits; ++limit) {
        expected.push_back(
            test::withBits(test::message<v::SoftLimit>({{v::soft_limit::kLimit, limit}}),
                           {v::kReadRequest<v::SoftLimit>}));
    }
    expected.insert(expected.end(), {read(v::LensConfiguration{}), read(v::CameraLines{}),
                                     read(v::CameraTimeouts{}), read(v::VideoConfiguration{}),
                                     read(v::AuxOutputs{}), read(v::AngleDisplay{}),
                                     read(v::NameDisplay{}), v::blank<v::CentreRequest>()});
    for (int preset = 0; preset < 32; ++preset) {
        expected.push_back(test::message<v::PresetRequest>({{v::preset_request::kPreset, preset}}));
    }
    // The tours, and tour 0 again so that the Presets page shows it.
    for (int tour : {2, 1, 0, 0}) {
        expected.push_back(
            test::message<v::TourStepCountRequest>({{v::tour_step_count_request::kTour, tour}}));
    }
    EXPECT_EQ(rig.line.messages(false), expected);

    expectFileAsKept(rig, "new_unit_settings.txt");

    // Each value of a unit set up unlike a new one in its own place: presets
    // and soft limits as the unit reports them, offsets applied.
    loadInto(rig.unit.state(), distinctUnit());
    rig.trigger("MenuSaveUnit");
    expectFileAsKept(rig, "distinct_unit_settings.txt");
}
