#include <gtest/gtest.h>

#include <QProcess>
#include <QProcessEnvironment>

namespace {
struct Outcome {
    int status = -1;
    bool crashed = false;
    QString out;
    QString err;
};

// A program with the given arguments and no display of any kind.
Outcome runWithoutDisplay(const QStringList& arguments,
                          const QString& program = QStringLiteral(HALVEX_PATH)) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(name));
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Outcome run;
    if (!process.waitForFinished(10000)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.crashed = process.exitStatus() == QProcess::CrashExit;
    run.status = process.exitCode();
    run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
    run.err = QString::fromLocal8Bit(process.readAllStandardError());
    return run;
}
}  // namespace

TEST(CommandLine, MistakesAreToldAndExitTwoWithoutADisplay) {
    const QStringList cases[] = {
        {QStringLiteral("--no-such-option")},
        {QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("--bogus")},
        {QStringLiteral("--rotctld-port")},
        {QStringLiteral("--rotctld-port"), QStringLiteral("65536")},
        {QStringLiteral("--rotctld=0")},
        {QStringLiteral("--rotctld-listen"), QStringLiteral("nowhere")},
        {QStringLiteral("--rotctld"), QStringLiteral("0")},
        {QStringLiteral("--headless"), QStringLiteral("--baud"), QStringLiteral("fast")},
        {QStringLiteral("stray")},
    };
    for (const QStringList& arguments : cases) {
        SCOPED_TRACE(arguments.join(' ').toStdString());
        const Outcome run = runWithoutDisplay(arguments);
        EXPECT_FALSE(run.crashed) << run.err.toStdString();
        EXPECT_EQ(run.status, 2) << run.err.toStdString();
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("halvex: "))) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QStringLiteral("Try 'halvex --help'")));
    }
    EXPECT_TRUE(runWithoutDisplay({QStringLiteral("--no-such-option")})
                    .err.contains(QStringLiteral("no-such-option")));
    // The highest port is a port: what is wrong here is the address.
    EXPECT_TRUE(runWithoutDisplay({QStringLiteral("--rotctld-port"), QStringLiteral("65535"),
                                   QStringLiteral("--rotctld-listen"), QStringLiteral("nowhere")})
                    .err.contains(QStringLiteral("Bad address 'nowhere'")));
}

TEST(CommandLine, HelpAndVersionNeedNoDisplayEvenAfterToolkitOptions) {
    const QString sim = QStringLiteral(HALVEX_SIM_PATH);
    const Outcome simVersion = runWithoutDisplay({QStringLiteral("--version")}, sim);
    EXPECT_EQ(simVersion.status, 0) << simVersion.err.toStdString();
    EXPECT_EQ(simVersion.out.trimmed(), QStringLiteral("halvex-sim " HALVEX_VERSION));
    EXPECT_EQ(runWithoutDisplay({QStringLiteral("--help")}, sim).status, 0);
    EXPECT_EQ(runWithoutDisplay({QStringLiteral("--bogus")}, sim).status, 2);

    const Outcome version =
        runWithoutDisplay({QStringLiteral("-style=fusion"), QStringLiteral("--version")});
    EXPECT_EQ(version.status, 0) << version.err.toStdString();
    EXPECT_EQ(version.out.trimmed(), QStringLiteral("halvex " HALVEX_VERSION));
    const Outcome help = runWithoutDisplay(
        {QStringLiteral("-platform"), QStringLiteral("xcb"), QStringLiteral("--help")});
    EXPECT_EQ(help.status, 0) << help.err.toStdString();
    EXPECT_TRUE(help.out.contains(QStringLiteral("--simulate")));
    // A toolkit option with its value joined on is left for the toolkit
    // whole: the mistake told is the console's own.
    EXPECT_TRUE(runWithoutDisplay({QStringLiteral("-style=fusion"), QStringLiteral("--baud"),
                                   QStringLiteral("fast")})
                    .err.contains(QStringLiteral("Bad speed 'fast' for --baud.")));
}
