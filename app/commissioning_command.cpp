#include "app/commissioning_command.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QTextStream>
#include <cstdio>
#include <exception>

#include "app/line_tick.h"
#include "commissioning/command_line_runs.h"
#include "connection/settings_file.h"
#include "protocol/port_map.h"
#include "protocol/qt_serial_port.h"

namespace {

using namespace halvex;
using namespace halvex::commissioning;

constexpr int kBadCommandLine = 2;

const QCommandLineOption kSave{QStringLiteral("save-unit"),
                               QStringLiteral("Read the unit's settings into FILE and exit "
                                              "(no window; exit status 0 when all was read)."),
                               QStringLiteral("FILE")};
const QCommandLineOption kRestore{
    QStringLiteral("restore-unit"),
    QStringLiteral("Write FILE's settings to the unit, read them back and exit (no window; exit "
                   "status 0 when the unit holds them all, 1 when not, 3 when FILE is "
                   "refused)."),
    QStringLiteral("FILE")};
const QCommandLineOption kYes{QStringLiteral("yes"),
                              QStringLiteral("With --restore-unit: write without asking.")};
const QCommandLineOption kAddress{
    QStringLiteral("address"),
    QStringLiteral("With --save-unit or --restore-unit: the unit's address (default 0)."),
    QStringLiteral("N")};
const QCommandLineOption kFactoryCode{
    QStringLiteral("factory-code"),
    QStringLiteral("With --restore-unit: the factory access code, to write the factory "
                   "settings (directions, encoders) too."),
    QStringLiteral("CODE")};
const char* const kFactoryAccessCode = "7214";

void say(const QString& line) {
    std::fprintf(stderr, "halvex: %s\n", qPrintable(line));
}

bool askOnTerminal(const QString& question) {
    std::fprintf(stderr, "%s [y/N] ", qPrintable(question));
    std::fflush(stderr);
    QTextStream in(stdin);
    const QString answer = in.readLine().trimmed().toLower();
    if (!isatty(STDIN_FILENO)) {
        // Nobody typed the answer and its Enter: show it, for the log.
        std::fprintf(stderr, "%s\n", qPrintable(answer));
    }
    return answer == QStringLiteral("y") || answer == QStringLiteral("yes");
}

bool named(const char* argument, const QCommandLineOption& option) {
    const QString text = QString::fromLocal8Bit(argument);
    const QString name = QStringLiteral("--") + option.names().constFirst();
    return text == name || text.startsWith(name + QLatin1Char('='));
}

// The port and speed the console would use: HALVEX.BIN, else COM1 at 9600.
PortSettings chosenPort() {
    PortSettings chosen;
    const SettingsFile file;
    QString error;
    if (file.exists()) {
        const std::optional<PortSettings> kept = file.read(error);
        if (kept) {
            chosen = *kept;
        } else {
            say(error);
        }
    }
    if (chosen.comPort < 1 || chosen.comPort > 8) {
        chosen.comPort = 1;
    }
    if (chosen.baudRate == 0) {
        chosen.baudRate = 9600;
    }
    return chosen;
}

// How the command's coroutine ended: its status, or the fault that stopped it.
struct Outcome {
    std::optional<int> status;
    std::exception_ptr fault;
};

// Runs the command on the event loop and ends the loop with it.
QCoro::Task<> runToEnd(QCoro::Task<int> command, Outcome& outcome) {
    try {
        outcome.status = co_await std::move(command);
    } catch (...) {
        outcome.fault = std::current_exception();
    }
    QCoreApplication::exit(outcome.status.value_or(kUnitFailed));
}

int run(const QCommandLineParser& parser) {
    const bool saving = parser.isSet(kSave);
    if (saving == parser.isSet(kRestore) || !parser.positionalArguments().isEmpty()) {
        say(
            QStringLiteral("give either --save-unit FILE or --restore-unit FILE, and nothing "
                           "else but --yes, --address and --factory-code."));
        return kBadCommandLine;
    }
    bool ok = true;
    const uint address = parser.isSet(kAddress) ? parser.value(kAddress).toUInt(&ok) : 0;
    if (!ok || address > 99) {
        say(QStringLiteral("bad address '%1' for --address: 0..99.").arg(parser.value(kAddress)));
        return kBadCommandLine;
    }
    const bool factoryOpen = parser.isSet(kFactoryCode);
    if (factoryOpen &&
        parser.value(kFactoryCode)
                .compare(QString::fromLatin1(kFactoryAccessCode), Qt::CaseInsensitive) != 0) {
        say(QStringLiteral("that is not the factory access code."));
        return kBadCommandLine;
    }

    const CommandIo io{say, askOnTerminal};
    UnitSettings file;
    if (!saving) {
        // A file that is refused never gets as far as the port.
        if (const int status = checkSettingsFile(parser.value(kRestore), file, io);
            status != kDone) {
            return status;
        }
    }

    const PortSettings chosen = chosenPort();
    const QString device = comPortDevice(chosen.comPort);
    Session session(new QtSerialPort, lineTickMs());
    if (!session.open(device, chosen.baudRate)) {
        say(QStringLiteral("cannot open COM%1 (%2).").arg(chosen.comPort).arg(device));
        return kUnitFailed;
    }
    say(QStringLiteral("talking to unit %1 on COM%2 (%3) at %4.")
            .arg(address)
            .arg(chosen.comPort)
            .arg(device)
            .arg(chosen.baudRate));
    const Byte unit = static_cast<Byte>(address);
    Outcome outcome;
    // Started here; it goes on from the event loop, which it ends.
    static_cast<void>(
        runToEnd(saving ? saveUnitCommand(session, unit, parser.value(kSave), io)
                        : restoreUnitCommand(session, unit, std::move(file),
                                             RestoreOptions{parser.isSet(kYes), factoryOpen}, io),
                 outcome));
    // A command that ended before the loop started has nobody to end it.
    if (!outcome.status && !outcome.fault) {
        QCoreApplication::exec();
    }
    if (outcome.fault) {
        // As uncaught as it would have been without the loop in between.
        std::rethrow_exception(outcome.fault);
    }
    return outcome.status.value_or(kUnitFailed);
}

}  // namespace

void addCommissioningOptions(QCommandLineParser& parser) {
    parser.addOptions({kSave, kRestore, kYes, kAddress, kFactoryCode});
}

std::optional<int> runCommissioningCommand(int& argc, char* argv[]) {
    bool asked = false;
    bool companion = false;
    for (int i = 1; i < argc; ++i) {
        asked = asked || named(argv[i], kSave) || named(argv[i], kRestore);
        companion = companion || named(argv[i], kYes) || named(argv[i], kAddress) ||
                    named(argv[i], kFactoryCode);
    }
    if (!asked && !companion) {
        return std::nullopt;
    }
    // No QApplication: nothing here needs a display.
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOptions({kSave, kRestore, kYes, kAddress, kFactoryCode});
    if (!parser.parse(QCoreApplication::arguments())) {
        say(parser.errorText());
        return kBadCommandLine;
    }
    return run(parser);
}
