// A field session reproduced at a desk: a console recorded against a unit
// with settings of its own comes online against the recording through
// halvex-sim --replay on a pseudo-terminal, and every page shows what it
// showed in the session. How the virtual unit answers from a recording is
// in tests/sim.

#include <gtest/gtest.h>

#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTabWidget>

#include "protocol/line_recording.h"
#include "recorder/line_recorder.h"
#include "tests/support/console_rig.h"
#include "tests/support/sim_process.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

// What the pages show, control by control.
QStringList pages(VornixU& window) {
    QStringList shown;
    QTabWidget& tabs = window.SSTab1();
    for (int page = 0; page < tabs.count(); ++page) {
        for (QWidget* widget : tabs.widget(page)->findChildren<QWidget*>()) {
            QString value;
            for (const char* property : {"text", "currentText", "value", "checked"}) {
                value += widget->property(property).toString() + QLatin1Char('|');
            }
            if (auto* list = qobject_cast<QListWidget*>(widget)) {
                for (int row = 0; row < list->count(); ++row) {
                    value += list->item(row)->text() + QLatin1Char('|');
                }
            }
            if (!widget->objectName().isEmpty() && value != QStringLiteral("||||")) {
                shown << QStringLiteral("%1/%2=%3 %4")
                             .arg(page)
                             .arg(widget->objectName(), value)
                             .arg(widget->isVisibleTo(tabs.widget(page)));
            }
        }
    }
    shown.sort();
    return shown;
}

void tell(sim::Unit& unit, const std::vector<Byte>& message) {
    const auto wire = encodeFrame(kStx, 0, message, 0);
    unit.receiveFromConsole(wire.data(), wire.size());
    unit.takeOutput();
}

// A unit set up in the field: presets, a tour, limits, speeds, lenses, a
// time-out and a heater mode of its own.
void setUpInTheField(sim::Unit& unit) {
    tell(unit, {0x41, 5, 0xD2, 0x04, 0x00, 0x0C, 0xFE, 0xFF});  // 12.34, -5.00
    tell(unit, {0x41, 6, 0x30, 0x75, 0x00, 0x10, 0x27, 0x00});  // 300.00, 100.00
    tell(unit, {0x52, 0, 5, 10});
    tell(unit, {0x52, 0, 6 | 64, 130});
    tell(unit, {0x92, 20, 30, 12, 0, 21, 31, 13, 0});
    tell(unit, {0x96, 30});
    tell(unit, {0x97, 2});
    tell(unit, {0x61, 0x3E, 11, 12, 0x30, 13, 14});
    tell(unit, {0x65, 40, 50});
}

}  // namespace

TEST(Replay, HalvexSimReplaysARecordingThroughAPseudoTerminalWithTheSessionsPages) {
    QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("field-session.pcapng"));
    QStringList recorded;
    {
        ConsoleRig rig;
        setUpInTheField(rig.unit);
        ASSERT_EQ(rig.window->lineRecorder().startRecording(path), QString());
        ASSERT_TRUE(rig.connect());
        QTest::qWait(100);
        rig.window->lineRecorder().stopRecording();
        recorded = pages(*rig.window);
    }
    // The pages are worth comparing: they show the unit's own settings.
    ASSERT_GT(recorded.size(), 200);
    EXPECT_TRUE(recorded.filter(QStringLiteral("PresetList="))
                    .join(QString())
                    .contains(QStringLiteral("12.34")));

    SimProcess unit({QStringLiteral("--replay"), path});
    ASSERT_FALSE(unit.device().isEmpty());
    const QString previous = QDir::currentPath();
    QDir::setCurrent(directory.path());
    qputenv("HALVEX_COM1", unit.device().toLocal8Bit());
    {
        std::vector<Message> shown;
        VornixU window(
            nullptr,
            [&shown](QWidget*, const Message& m) {
                shown.push_back(m);
                return true;
            },
            ConsoleRig::kFastTickMs);
        window.Form_Load();
        window.show();
        window.findChild<QPushButton*>(QStringLiteral("StartBut"))->click();
        ASSERT_TRUE(ConsoleRig::waitFor(
            [&] { return window.windowTitle().endsWith(QStringLiteral(" Online")); }, 30000));
        QTest::qWait(150);
        EXPECT_TRUE(shown.empty());
        EXPECT_EQ(pages(window), recorded);
    }
    qunsetenv("HALVEX_COM1");
    QDir::setCurrent(previous);

    // A file that is no recording: the program says so and ends.
    QProcess bad;
    bad.start(QStringLiteral(HALVEX_SIM_PATH),
              {QStringLiteral("--replay"), QStringLiteral("/proc/version")});
    ASSERT_TRUE(bad.waitForFinished(5000));
    EXPECT_EQ(bad.exitCode(), 1);
    EXPECT_TRUE(bad.readAllStandardError().contains("holds no frames"));
}
