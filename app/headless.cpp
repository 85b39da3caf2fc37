#include "app/headless.h"

#include <sys/socket.h>
#include <unistd.h>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <csignal>
#include <cstdio>

#include "app/line_tick.h"
#include "connection/settings_file.h"
#include "network/rotctld_server.h"
#include "protocol/fault_guard.h"
#include "protocol/port_map.h"
#include "remote/remote_bridges.h"
#include "remote/session_rotator.h"
#include "session/session.h"
#include "session/unit_connection.h"

namespace halvex {

namespace {

void say(const QString& text) {
    std::fprintf(stderr, "halvex: %s\n", qPrintable(text));
    std::fflush(stderr);
}

// A signal handler may only write to a descriptor; the event loop reads the
// other end and stops the platform from there.
std::array<int, 2> signalPipe{-1, -1};

extern "C" void onStopSignal(int) {
    const char byte = 1;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[0], &byte, 1);
}

bool catchStopSignals() {
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalPipe.data()) != 0) {
        return false;
    }
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    return ::sigaction(SIGTERM, &action, nullptr) == 0 &&
           ::sigaction(SIGINT, &action, nullptr) == 0;
}

// The line: --port and --baud, else COMn and the speed kept in the settings
// file, as the console's window would open them.
LineChoice chooseLine(const CommandLine& commandLine) {
    QString ignored;
    const PortSettings kept = SettingsFile().read(ignored).value_or(PortSettings{});
    const QString device = commandLine.portDevice();
    const int com = kept.comPort;
    const qint32 baud = commandLine.baudRate().value_or(kept.baudRate);
    if (!device.isEmpty()) {
        return {[device] { return device; }, [baud] { return baud; }, [device] { return device; }};
    }
    return {[com] { return comPortDevice(com); }, [baud] { return baud; },
            [com] { return QStringLiteral("COM%1 (%2)").arg(com).arg(comPortDevice(com)); }};
}

// Coroutines of their own rather than lambdas: a lambda's captures die with
// the lambda, before the coroutine that uses them ends.
QCoro::Task<> connectOnce(UnitConnection& connection) {
    co_await connection.start();
}

QCoro::Task<> stopThenQuit(UnitConnection& connection) {
    co_await connection.exit();
    QCoreApplication::exit(0);
}

}  // namespace

int runHeadless(int& argc, char* argv[], const CommandLine& commandLine) {
    const QCoreApplication app(argc, argv);
    if (!catchStopSignals()) {
        say(QStringLiteral("cannot catch SIGTERM and SIGINT"));
        return 1;
    }
    Session session(nullptr, lineTickMs());
    const LineChoice line = chooseLine(commandLine);
    UnitConnection connection(session, line);
    connection.setLaterSteps(connection.unitReads());
    const qint32 baud = line.baudRate();
    QObject::connect(&session.state(), &FormState::faultReported, &app,
                     [](const QString& text) { say(text); });

    // Told once for each way of failing; the next attempt is a second later.
    QTimer retry;
    retry.setSingleShot(true);
    retry.setInterval(UnitConnection::kReconnectMs);
    QString lastFailure;
    const auto failed = [&](const QString& why) {
        if (why != lastFailure) {
            say(why);
            lastFailure = why;
        }
        retry.start();
    };
    QObject::connect(&connection, &UnitConnection::openFailed, &app, [&] {
        failed(QStringLiteral("Could Not Open %1. Trying again every second.")
                   .arg(connection.lineName()));
    });
    QObject::connect(&connection, &UnitConnection::noUnitAnswered, &app, [&] {
        failed(QStringLiteral("Could Not Establish Connection on %1. Trying again every second.")
                   .arg(connection.lineName()));
    });
    QObject::connect(&connection, &UnitConnection::stageChanged, &app, [&](ConnectStage stage) {
        if (stage == ConnectStage::FirstAnswer) {
            say(QStringLiteral("%1 At %2 Initializing Pan & Tilt")
                    .arg(connection.lineName())
                    .arg(baud));
        } else if (stage == ConnectStage::Online) {
            lastFailure.clear();
            say(QStringLiteral("%1 At %2 Online").arg(connection.lineName()).arg(baud));
        }
    });
    QObject::connect(&connection, &UnitConnection::wentOffline, &app, [&] {
        say(QStringLiteral("%1 At %2 Offline").arg(connection.lineName()).arg(baud));
    });
    QObject::connect(&retry, &QTimer::timeout, &app,
                     [&] { launch(session.state(), "StartBut_Click", connectOnce(connection)); });

    SessionRotator rotator(session, [&connection] { return connection.lineName(); });
    network::RotctldServer server(rotator);
    if (commandLine.rotctld()) {
        if (!server.listen(commandLine.rotctldAddress(), commandLine.rotctldPort())) {
            say(QStringLiteral("network control cannot listen on %1 port %2: %3")
                    .arg(commandLine.rotctldAddress().toString())
                    .arg(commandLine.rotctldPort())
                    .arg(server.errorString()));
            return 1;
        }
        say(QStringLiteral("network control on %1 port %2")
                .arg(commandLine.rotctldAddress().toString())
                .arg(server.serverPort()));
    }

    RemoteBridges bridges(session);
    QStringList started;
    const QStringList failures = bridges.apply(commandLine.bridges(), &started);
    for (const QString& line : started + failures) {
        say(line);
    }
    if (!failures.isEmpty()) {
        return 1;
    }

    QSocketNotifier stopSignal(signalPipe[1], QSocketNotifier::Read);
    QObject::connect(&stopSignal, &QSocketNotifier::activated, &app, [&] {
        // One stop is enough: the notifier is switched off rather than the
        // signal's byte read, and later signals are left unread.
        stopSignal.setEnabled(false);
        retry.stop();
        server.close();
        bridges.closeAll();
        say(QStringLiteral("stopping the platform"));
        launch(session.state(), "ExitBut_Click", stopThenQuit(connection));
    });

    retry.setInterval(0);
    retry.start();
    retry.setInterval(UnitConnection::kReconnectMs);
    return QCoreApplication::exec();
}

}  // namespace halvex
