// Through a pseudo-terminal to a halvex-sim program, and the halvex
// program's own --save-unit and --restore-unit with no display at all.

#include <gtest/gtest.h>

#include <numeric>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <fstream>

#include "commissioning/unit_restore.h"
#include "tests/support/pty_pair.h"
#include "tests/support/sim_process.h"

using namespace halvex;
using namespace halvex::commissioning;

namespace {

struct HalvexRun {
    int exitCode = -1;
    QString errors;
};

HalvexRun runHalvex(const QString& device, const QString& folder, const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(name));
    }
    environment.insert(QStringLiteral("HALVEX_COM1"), device);
    environment.insert(QStringLiteral("HALVEX_TICK_MS"), QStringLiteral("10"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral(HALVEX_PATH), arguments);
    HalvexRun run;
    if (process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit) {
        run.exitCode = process.exitCode();
    }
    run.errors = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}

}  // namespace

// The program saves the unit, and the file, one value changed, goes back,
// each at a pace only halvex-sim keeps up with. Command lines
// and files the program refuses stop before anything is sent.
TEST(CommissioningCommandLine, SavesAndRestoresWithoutADisplayAndRefusesBadCommandLinesAndFiles) {
    QTemporaryDir folder;
    const QDir here(folder.path());
    SimProcess unit({QStringLiteral("--id"), QStringLiteral("7")});
    const HalvexRun save = runHalvex(unit.device(), folder.path(),
                                     QStringLiteral("--save-unit u.txt --address=7").split(' '));
    EXPECT_EQ(save.exitCode, 0) << save.errors.toStdString();
    // A line for each step, counted 1 to 57 in order, and none for the end.
    QList<int> counted;
    for (const QRegularExpressionMatch& step :
         QRegularExpression(QStringLiteral("^halvex: \\[(-?\\d+)/57\\] "),
                            QRegularExpression::MultilineOption)
             .globalMatch(save.errors)) {
        counted << step.captured(1).toInt();
    }
    QList<int> oneTo57(57);
    std::iota(oneTo57.begin(), oneTo57.end(), 1);
    EXPECT_EQ(counted, oneTo57) << save.errors.toStdString();
    EXPECT_TRUE(save.errors.contains(
        QRegularExpression(QStringLiteral("^halvex: Saved the settings of unit 7 "),
                           QRegularExpression::MultilineOption)))
        << save.errors.toStdString();
    QFile saved(here.filePath(QStringLiteral("u.txt")));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const std::string text = saved.readAll().toStdString();

    // One value off, and saved from another address, which is never copied:
    // the differences side by side, in columns two spaces past the longest
    // entry, each value whole.
    std::string changed =
        std::string(text).replace(text.find("tilt-ramp = 40"), 14, "tilt-ramp = 41");
    changed.replace(changed.find("address = 7"), 11, "address = 3");
    std::ofstream(here.filePath(QStringLiteral("one.txt")).toStdString()) << changed;
    const HalvexRun restore =
        runHalvex(unit.device(), folder.path(),
                  QStringLiteral("--restore-unit one.txt --yes --address=7").split(' '));
    EXPECT_EQ(restore.exitCode, 0) << restore.errors.toStdString();
    for (const char* row :
         {"differs from the file in 2 values", "  speeds/tilt-ramp  41           40\n",
          "  unit/address      3            7            (an address is never "
          "copied)\n"}) {
        EXPECT_TRUE(restore.errors.contains(QLatin1String(row))) << restore.errors.toStdString();
    }
    EXPECT_FALSE(restore.errors.contains(movesWarning()));

    halvex::testing::PtyPair nobody;
    ASSERT_TRUE(nobody.ok());
    std::ofstream(here.filePath(QStringLiteral("cut.txt")).toStdString())
        << text.substr(0, text.size() - 10);
    const struct {
        const char* arguments;
        int exitCode;
        const char* says;
    } refused[] = {
        {"--yes", 2, "give either --save-unit FILE or --restore-unit FILE"},
        {"--save-unit a --address 100", 2, "bad address '100' for --address: 0..99."},
        {"--restore-unit u.txt --factory-code 1234", 2, "that is not the factory access code."},
        {"--restore-unit none.txt", 3, "none.txt cannot be read"},
        {"--restore-unit cut.txt --yes", 3, "it is cut short"},
    };
    for (const auto& run : refused) {
        const HalvexRun result = runHalvex(nobody.slavePath(), folder.path(),
                                           QString::fromLatin1(run.arguments).split(' '));
        EXPECT_EQ(result.exitCode, run.exitCode) << run.arguments;
        EXPECT_TRUE(result.errors.contains(QLatin1String(run.says))) << result.errors.toStdString();
    }
    EXPECT_TRUE(nobody.readAvailable().empty());
}
