#include "tools/commissioning_screenshots.h"

#include <QAction>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <cstdio>

#include "commissioning/commissioning_menu.h"
#include "commissioning/find_units_dialog.h"
#include "commissioning/progress_dialog.h"
#include "commissioning/restore_dialog.h"
#include "sim/unit.h"
#include "window/vornixu.h"

using namespace halvex::commissioning;

namespace {
bool saveWidget(QWidget& widget, const QString& path) {
    const bool ok = widget.grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "FAILED", qPrintable(path));
    return ok;
}
}  // namespace

bool saveCommissioningDialogs(halvex::VornixU& window, halvex::sim::Unit& unit,
                              const QString& out) {
    auto* menu = window.findChild<CommissioningMenu*>(QStringLiteral("CommissioningMenu"));
    const auto trigger = [&window](const char* name) {
        window.findChild<QAction*>(QLatin1String(name))->trigger();
    };
    bool ok = true;

    menu->setProbeWaitMs(20);
    trigger("MenuFindUnits");
    if (auto* found = window.findChild<FindUnitsDialog*>()) {
        QTest::qWait(300);
        ok = saveWidget(*found, out + QStringLiteral("/find-units.png")) && ok;
        found->close();
    } else {
        ok = false;
    }

    unit.state().presets.at(3).lens = {80, 120, 0, 0};
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("unit-0.txt"));
    menu->setFileChooser([&file](bool, QString) -> QCoro::Task<QString> { co_return file; });
    bool progressShown = false;
    QTimer::singleShot(400, [&] {
        if (auto* progress = window.findChild<ProgressDialog*>()) {
            progressShown =
                saveWidget(*progress, out + QStringLiteral("/commissioning-progress.png"));
        }
    });
    trigger("MenuSaveUnit");
    // The save goes on from the event loop: its picture, then its end.
    ok = QTest::qWaitFor([&] { return progressShown; }, 10000) && ok;
    ok = QTest::qWaitFor(
             [&window] {
                 auto* progress = window.findChild<ProgressDialog*>();
                 return progress == nullptr || !progress->isVisible();
             },
             60000) &&
         ok;

    // The unit since: other speeds, a soft limit, a preset with lens
    // positions, a tour step and a factory setting.
    halvex::sim::UnitState& state = unit.state();
    state.settings.panRates.ramp = 90;
    state.settings.heater = 2;
    state.settings.softLimits[0] = 12000;
    state.settings.directions = 0x10;
    state.presets.at(3).lens = {};
    state.presets.at(5) = {2500, -1000, {}};
    state.tours.append(1, {2, 15});
    bool confirmShown = false;
    menu->setConfirmer([&](RestoreDialog& dialog) -> QCoro::Task<bool> {
        dialog.show();
        QTest::qWait(300);
        confirmShown = saveWidget(dialog, out + QStringLiteral("/restore-unit.png"));
        co_return false;
    });
    trigger("MenuRestoreUnit");
    return QTest::qWaitFor([&] { return confirmShown; }, 60000) && ok;
}
