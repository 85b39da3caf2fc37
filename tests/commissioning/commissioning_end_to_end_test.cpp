#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include "commissioning/command_line_runs.h"
#include "commissioning/settings_text.h"
#include "commissioning/unit_finder.h"
#include "commissioning/unit_restore.h"
#include "protocol/qt_serial_port.h"
#include "sim/state_file.h"
#include "tests/commissioning/commissioning_rig.h"
#include "tests/support/finish.h"
#include "tests/support/pty_pair.h"
#include "tests/support/sim_process.h"

using namespace halvex;
using namespace halvex::commissioning;
using halvex::testing::distinctUnit;
using halvex::testing::finish;

namespace {

// Faster than a real line allows: halvex-sim answers at once.
constexpr int kTickMs = 5;
// A save is a few hundred frames; a restore also drives the platform.
constexpr int kSaveMs = 60000;
constexpr int kRestoreMs = 180000;

QStringList linesOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
}

struct Transcript {
    QStringList lines;
    CommandIo io{[this](const QString& line) { lines << line; }, {}};
};

// The halvex program itself, with no display at all.
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

// Save unit A, restore the file onto unit B, save B: the two files agree but
// for the address and the time they were saved.
TEST(CommissioningEndToEnd, ClonesOneUnitOntoAnotherThroughTheirLines) {
    QTemporaryDir directory;
    const QString stateA = directory.filePath(QStringLiteral("a.state"));
    ASSERT_TRUE(sim::saveState(stateA.toStdString(), distinctUnit(3)));
    SimProcess unitA(
        {QStringLiteral("--state"), stateA, QStringLiteral("--id"), QStringLiteral("3")});
    SimProcess unitB({QStringLiteral("--state"), directory.filePath(QStringLiteral("b.state")),
                      QStringLiteral("--id"), QStringLiteral("5")});
    ASSERT_TRUE(unitA.device().startsWith(QStringLiteral("/dev/")));
    ASSERT_TRUE(unitB.device().startsWith(QStringLiteral("/dev/")));
    const QString fileA = directory.filePath(QStringLiteral("a.txt"));
    const QString fileB = directory.filePath(QStringLiteral("b.txt"));

    Transcript transcript;
    Session lineA(new QtSerialPort, kTickMs);
    ASSERT_TRUE(lineA.open(unitA.device(), 9600));
    ASSERT_EQ(finish(saveUnitCommand(lineA, 3, fileA, transcript.io), kSaveMs), kDone)
        << transcript.lines.join('\n').toStdString();

    Session lineB(new QtSerialPort, kTickMs);
    ASSERT_TRUE(lineB.open(unitB.device(), 9600));
    UnitSettings file;
    ASSERT_EQ(checkSettingsFile(fileA, file, transcript.io), kDone);
    ASSERT_EQ(finish(restoreUnitCommand(lineB, 5, file, RestoreOptions{true, true}, transcript.io),
                     kRestoreMs),
              kDone)
        << transcript.lines.join('\n').toStdString();
    EXPECT_TRUE(transcript.lines.contains(movesWarning()));
    // The address differs, and says why it is left as it is.
    const QRegularExpression addressRow(
        QStringLiteral("^  unit/address +3 +5 +\\(an address is never copied\\)$"));
    EXPECT_GE(transcript.lines.indexOf(addressRow), 0) << transcript.lines.join('\n').toStdString();
    ASSERT_EQ(finish(saveUnitCommand(lineB, 5, fileB, transcript.io), kSaveMs), kDone);

    const QStringList a = linesOf(fileA);
    const QStringList b = linesOf(fileB);
    ASSERT_EQ(a.size(), b.size());
    QStringList differing;
    for (int i = 0; i < a.size(); ++i) {
        if (a[i] != b[i]) {
            differing << a[i] + QStringLiteral(" | ") + b[i];
        }
    }
    ASSERT_EQ(differing.size(), 2) << differing.join('\n').toStdString();
    EXPECT_EQ(differing[0], QStringLiteral("address = 3 | address = 5"));
    EXPECT_TRUE(differing[1].startsWith(QStringLiteral("saved = ")));
    // What was cloned is what unit A was set up with.
    EXPECT_TRUE(a.contains(QStringLiteral("2 = 25.00 -12.00 128 120 90 128")));
    EXPECT_TRUE(a.contains(QStringLiteral("1 = 2/1/10/yes 7/0/3/no")));
    EXPECT_TRUE(a.contains(QStringLiteral("cw = 70.00")));
}

TEST(CommissioningEndToEnd, FindsTheUnitAtAddressSevenOnItsLine) {
    SimProcess unit({QStringLiteral("--id"), QStringLiteral("7")});
    ASSERT_TRUE(unit.device().startsWith(QStringLiteral("/dev/")));
    Session line(new QtSerialPort, kTickMs);
    ASSERT_TRUE(line.open(unit.device(), 9600));
    // The console's usual wait for a reply, which a loaded machine keeps to;
    // the search stops once it has asked a few addresses past 7.
    UnitLine asking(line, Link::kWatchdogMs);
    int asked = 0;
    Progress progress;
    progress.report = [&asked](const QString&, int done, int) { asked = done + 1; };
    progress.cancelled = [&asked] { return asked >= 9; };
    const UnitSearch search = finish(findUnits(asking, progress), kSaveMs);
    EXPECT_TRUE(search.cancelled);
    ASSERT_EQ(search.found.size(), 1u);
    EXPECT_EQ(search.found[0].address, 7);
    EXPECT_EQ(search.found[0].firmwareMinor, 10);
    EXPECT_FALSE(search.askedZero);
    EXPECT_EQ(line.state().UnitId, 0);
}

// halvex --save-unit needs no display; a restore refuses a bad file before
// it opens the line.
TEST(CommissioningCommandLine, SavesWithoutADisplayAndRefusesBadFilesWithNothingOnTheWire) {
    QTemporaryDir folder;
    SimProcess unit({QStringLiteral("--id"), QStringLiteral("7")});
    ASSERT_TRUE(unit.device().startsWith(QStringLiteral("/dev/")));
    const auto saveAs = [&](const char* name) {
        return runHalvex(
            unit.device(), folder.path(),
            {QStringLiteral("--save-unit"), QLatin1String(name), QStringLiteral("--address=7")});
    };
    const HalvexRun save = saveAs("u.txt");
    ASSERT_EQ(save.exitCode, 0) << save.errors.toStdString();
    EXPECT_TRUE(save.errors.contains(QStringLiteral("halvex: Saved the settings of unit 7 ")));
    EXPECT_TRUE(save.errors.contains(QStringLiteral("halvex: [1/")));
    QFile saved(QDir(folder.path()).filePath(QStringLiteral("u.txt")));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    const std::string text = saved.readAll().toStdString();
    ASSERT_TRUE(readSettingsText(text).settings.has_value());

    // A file one value off: that value is written, and the unit keeps it.
    QFile oneOff(QDir(folder.path()).filePath(QStringLiteral("one.txt")));
    ASSERT_TRUE(oneOff.open(QIODevice::WriteOnly));
    const std::string changed =
        std::string(text).replace(text.find("tilt-ramp = 40"), 14, "tilt-ramp = 41");
    oneOff.write(changed.data(), static_cast<qint64>(changed.size()));
    oneOff.close();
    const HalvexRun restore =
        runHalvex(unit.device(), folder.path(),
                  {QStringLiteral("--restore-unit"), QStringLiteral("one.txt"),
                   QStringLiteral("--address=7"), QStringLiteral("--yes")});
    EXPECT_EQ(restore.exitCode, 0) << restore.errors.toStdString();
    EXPECT_TRUE(restore.errors.contains(QStringLiteral("differs from the file in 1 value")))
        << restore.errors.toStdString();
    // Side by side, in columns, each value whole.
    EXPECT_TRUE(restore.errors.contains(
        QRegularExpression(QStringLiteral("^halvex:   speeds/tilt-ramp +41 +40$"),
                           QRegularExpression::MultilineOption)))
        << restore.errors.toStdString();
    {
        Session line(new QtSerialPort, kTickMs);
        ASSERT_TRUE(line.open(unit.device(), 9600));
        line.talkTo(7);
        ASSERT_TRUE(finish(line.readDriveRates(Requester::Operator)).isDone());
        EXPECT_EQ(line.status().Rates.tilt.ramp, 41);
    }

    halvex::testing::PtyPair line;
    ASSERT_TRUE(line.ok());
    // Command lines that cannot mean what they say stop before the port.
    const struct {
        QStringList arguments;
        int exitCode;
        const char* says;
    } refused[] = {
        {{QStringLiteral("--yes")}, 2, "give either --save-unit FILE or --restore-unit FILE"},
        {{QStringLiteral("--save-unit"), QStringLiteral("a"), QStringLiteral("--restore-unit"),
          QStringLiteral("b")},
         2,
         "give either"},
        {{QStringLiteral("--save-unit"), QStringLiteral("a"), QStringLiteral("--address"),
          QStringLiteral("100")},
         2,
         "bad address '100' for --address: 0..99."},
        {{QStringLiteral("--restore-unit"), QStringLiteral("u.txt"),
          QStringLiteral("--factory-code"), QStringLiteral("1234")},
         2,
         "that is not the factory access code."},
        {{QStringLiteral("--restore-unit"), QStringLiteral("none.txt")},
         3,
         "none.txt cannot be read"},
    };
    for (const auto& run : refused) {
        const HalvexRun result = runHalvex(line.slavePath(), folder.path(), run.arguments);
        EXPECT_EQ(result.exitCode, run.exitCode) << run.arguments.join(' ').toStdString();
        EXPECT_TRUE(result.errors.contains(QLatin1String(run.says))) << result.errors.toStdString();
    }
    EXPECT_TRUE(line.readAvailable().empty());
    // A port that will not open ends the command before anything is sent.
    const HalvexRun closed =
        runHalvex(QDir(folder.path()).filePath(QStringLiteral("no-such-port")), folder.path(),
                  {QStringLiteral("--save-unit"), QStringLiteral("never.txt")});
    EXPECT_EQ(closed.exitCode, 1) << closed.errors.toStdString();
    EXPECT_TRUE(closed.errors.contains(QStringLiteral("cannot open COM1")))
        << closed.errors.toStdString();
    EXPECT_FALSE(QFile::exists(QDir(folder.path()).filePath(QStringLiteral("never.txt"))));
    const struct {
        std::string text;
        const char* problem;
    } cases[] = {
        {text.substr(0, text.size() - 10), "it is cut short"},
        {std::string(text).replace(text.find("tilt-ramp = 40"), 14, "tilt-ramp = 0"),
         "speeds/tilt-ramp is 0, outside 1..255"},
    };
    for (const auto& c : cases) {
        QFile bad(QDir(folder.path()).filePath(QStringLiteral("bad.txt")));
        ASSERT_TRUE(bad.open(QIODevice::WriteOnly | QIODevice::Truncate));
        bad.write(c.text.data(), static_cast<qint64>(c.text.size()));
        bad.close();
        const HalvexRun restore = runHalvex(
            line.slavePath(), folder.path(),
            {QStringLiteral("--restore-unit"), QStringLiteral("bad.txt"), QStringLiteral("--yes")});
        EXPECT_EQ(restore.exitCode, 3) << restore.errors.toStdString();
        EXPECT_TRUE(restore.errors.contains(QLatin1String(c.problem)))
            << restore.errors.toStdString();
        EXPECT_TRUE(line.readAvailable().empty());
    }
}
