// Find Units with a unit found, and the restore confirmation with the
// differences side by side and the warning that the lenses will move, as
// they were last looked at.

#include <gtest/gtest.h>

#include <QApplication>
#include <QRegularExpression>

#include "tests/commissioning/commissioning_rig.h"
#include "tests/support/kept_picture.h"

namespace halvex::testing {
namespace {

const KeptPictures kPictures{HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES};

TEST(CommissioningPictures, FindUnitsAndTheRestoreConfirmation) {
    sim::UnitOptions options;
    options.clockDate = sim::CalendarDate{2026, 11, 25};  // Find Units lists it
    CommissioningRig rig(options);
    ASSERT_TRUE(rig.connect());
    rig.trigger("MenuFindUnits");
    auto* found = rig.window->findChild<FindUnitsDialog*>();
    ASSERT_NE(found, nullptr);
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return found->FoundList->rowCount() == 1; }));
    QTest::qWait(50);
    expectLooksAsKept(*found, kPictures, QStringLiteral("find-units"));
    found->close();

    rig.trigger("MenuSaveUnit");
    // Saved at a fixed time: the confirmation names it.
    rig.writeFile(QString::fromStdString(rig.fileText())
                      .replace(QRegularExpression(QStringLiteral("\nsaved = [^\n]*")),
                               QStringLiteral("\nsaved = 2026-11-25 09:30:00"))
                      .toStdString());
    sim::UnitState& unit = rig.unit.state();
    unit.settings.panRates.ramp = 90;
    unit.settings.heater = 2;
    unit.presets.at(3).lens = {80, 120, 0, 0};
    unit.tours.append(1, {2, 15});
    bool shown = false;
    rig.menu->setConfirmer([&](RestoreDialog& dialog) -> QCoro::Task<bool> {
        dialog.show();
        if (QWidget* focus = QApplication::focusWidget()) {
            focus->clearFocus();
        }
        QTest::qWait(50);
        expectLooksAsKept(dialog, kPictures, QStringLiteral("restore-unit"));
        shown = true;
        co_return false;
    });
    rig.trigger("MenuRestoreUnit");
    EXPECT_TRUE(shown);
}

}  // namespace
}  // namespace halvex::testing
