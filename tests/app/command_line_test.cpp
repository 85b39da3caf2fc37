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

// A program with the arguments, split at spaces, and no display of any kind.
Outcome runWithoutDisplay(const char* arguments,
                          const QString& program = QStringLiteral(HALVEX_PATH)) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        environment.remove(QString::fromLatin1(name));
    }
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, QString::fromLatin1(arguments).split(' ', Qt::SkipEmptyParts));
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
    for (const char* arguments :
         {"--no-such-option", "-platform offscreen --bogus", "--rotctld-port",
          "--rotctld-port 65536", "--rotctld=0", "--rotctld-listen nowhere", "--rotctld 0",
          "--headless --baud fast", "stray"}) {
        SCOPED_TRACE(arguments);
        const Outcome run = runWithoutDisplay(arguments);
        EXPECT_FALSE(run.crashed) << run.err.toStdString();
        EXPECT_EQ(run.status, 2) << run.err.toStdString();
        EXPECT_TRUE(run.err.startsWith(QStringLiteral("halvex: "))) << run.err.toStdString();
        EXPECT_TRUE(run.err.contains(QStringLiteral("Try 'halvex --help'")));
    }
    EXPECT_TRUE(runWithoutDisplay("--no-such-option").err.contains("no-such-option"));
    // The highest port is a port: what is wrong here is the address.
    EXPECT_TRUE(runWithoutDisplay("--rotctld-port 65535 --rotctld-listen nowhere")
                    .err.contains("Bad address 'nowhere'"));
}

TEST(CommandLine, HelpAndVersionNeedNoDisplayEvenAfterToolkitOptions) {
    const QString sim = QStringLiteral(HALVEX_SIM_PATH);
    const Outcome simVersion = runWithoutDisplay("--version", sim);
    EXPECT_EQ(simVersion.status, 0) << simVersion.err.toStdString();
    EXPECT_EQ(simVersion.out.trimmed(), QStringLiteral("halvex-sim " HALVEX_VERSION));
    EXPECT_EQ(runWithoutDisplay("--help", sim).status, 0);
    EXPECT_EQ(runWithoutDisplay("--bogus", sim).status, 2);

    const Outcome version = runWithoutDisplay("-style=fusion --version");
    EXPECT_EQ(version.status, 0) << version.err.toStdString();
    EXPECT_EQ(version.out.trimmed(), QStringLiteral("halvex " HALVEX_VERSION));
    const Outcome help = runWithoutDisplay("-platform xcb --help");
    EXPECT_EQ(help.status, 0) << help.err.toStdString();
    EXPECT_TRUE(help.out.contains(QStringLiteral("--simulate")));
    // A toolkit option with its value joined on is left for the toolkit
    // whole: the mistake told is the console's own.
    EXPECT_TRUE(runWithoutDisplay("-style=fusion --baud fast")
                    .err.contains(QStringLiteral("Bad speed 'fast' for --baud.")));
}
