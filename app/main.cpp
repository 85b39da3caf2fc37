#include <QApplication>
#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTimer>
#include <cstdio>
#include <ctime>
#include <memory>
#include <optional>

#include "app/commissioning_command.h"
#include "connection/connection_sequence.h"
#include "console/data_folder.h"
#include "console/messages.h"
#include "network/rotctld_server.h"
#include "recorder/line_recorder.h"
#include "sim/pty_unit.h"
#include "window/network_control.h"
#include "window/vornixu.h"

namespace {
// The virtual unit in this process, on a pseudo-terminal that COM1 maps to.
std::unique_ptr<halvex::sim::PtyUnit> startVirtualUnit() {
    auto unit = std::make_unique<halvex::sim::PtyUnit>(halvex::sim::PtyUnitOptions{});
    QString error;
    if (!unit->open(&error)) {
        std::fprintf(stderr, "halvex: cannot start the virtual unit: %s\n", qPrintable(error));
        return nullptr;
    }
    qputenv("HALVEX_COM1", unit->slavePath().toLocal8Bit());
    std::fprintf(stderr, "halvex: virtual unit on %s (COM1)\n", qPrintable(unit->slavePath()));
    return unit;
}

// One line on stderr when the connection sequence ends, for scripts and for
// whoever watches the terminal: frames, wall time and CPU time it took.
void reportConnection(halvex::VornixU& window) {
    struct Start {
        QElapsedTimer wall;
        quint64 frames = 0;
        std::clock_t cpu = 0;
    };
    auto start = std::make_shared<Start>();
    QObject::connect(window.findChild<QPushButton*>(QStringLiteral("StartBut")),
                     &QPushButton::pressed, &window, [start, &window] {
                         start->wall.start();
                         start->frames = window.link().framesSent();
                         start->cpu = std::clock();
                     });
    QObject::connect(
        &window.connection(), &halvex::ConnectionSequence::finished, &window,
        [start, &window](bool online) {
            if (!online) {
                std::fprintf(stderr, "halvex: no connection\n");
                return;
            }
            const long cpuMs =
                static_cast<long>((std::clock() - start->cpu) * 1000 / CLOCKS_PER_SEC);
            std::fprintf(
                stderr, "halvex: online after %llu frames in %lld ms (CPU %ld ms)\n",
                static_cast<unsigned long long>(window.link().framesSent() - start->frames),
                static_cast<long long>(start->wall.elapsed()), cpuMs);
        });
}

// The console's options, read before the window system is touched, so that
// --help, --version and every mistake are answered with no display; Qt's own
// options (-platform, -style, ...) are left for QApplication.
class CommandLine {
  public:
    CommandLine() {
        parser_.setApplicationDescription(
            QStringLiteral("Operator console for Halvex pan & tilt units.\n"
                           "COMn is the device in $HALVEX_COM<n>, else the one chosen in\n"
                           "Port > Device For COMn, else /dev/ttyS<n-1>."));
        parser_.addOption(help_);
        parser_.addOption(version_);
        parser_.addOption(simulate_);
        parser_.addOption(connect_);
        parser_.addOption(rotctld_);
        parser_.addOption(rotctldPort_);
        parser_.addOption(rotctldListen_);
        parser_.addOption(record_);
        addCommissioningOptions(parser_);
    }

    // "--rotctld=PORT" is read as "--rotctld --rotctld-port PORT": the parser
    // has no options whose value may be left out.
    static QStringList spellOut(const QStringList& arguments) {
        QStringList out;
        const QString joined = QStringLiteral("--rotctld=");
        for (const QString& argument : arguments) {
            if (argument.startsWith(joined)) {
                out << QStringLiteral("--rotctld") << QStringLiteral("--rotctld-port")
                    << argument.mid(joined.size());
            } else {
                out << argument;
            }
        }
        return out;
    }

    // Answers --help, --version or a mistake before the window system starts;
    // the exit status when it did.
    std::optional<int> answerAtOnce(int& argc, char* argv[]) {
        QStringList arguments;
        for (int i = 0; i < argc; ++i) {
            arguments << QString::fromLocal8Bit(argv[i]);
        }
        const bool understood = parser_.parse(withoutToolkitOptions(spellOut(arguments)));
        if (parser_.isSet(help_)) {
            // The usage line names the program from QCoreApplication::arguments().
            const QCoreApplication core(argc, argv);
            std::fputs(qPrintable(parser_.helpText()), stdout);
            return 0;
        }
        if (parser_.isSet(version_)) {
            std::printf("halvex %s\n", HALVEX_VERSION);
            return 0;
        }
        // Every mistake is said here, before the window system starts: with
        // no display it would end the program before the options were read.
        QString error;
        if (!understood) {
            error = parser_.errorText();
        } else if (!parser_.positionalArguments().isEmpty()) {
            error = QStringLiteral("Unexpected argument '%1'.")
                        .arg(parser_.positionalArguments().constFirst());
        } else {
            error = readRotctld();
        }
        if (!error.isEmpty()) {
            std::fprintf(stderr, "halvex: %s\nTry 'halvex --help' for the options.\n",
                         qPrintable(error));
            return 2;
        }
        return std::nullopt;
    }

    bool simulate() const { return parser_.isSet(simulate_); }
    bool connectAtStart() const { return parser_.isSet(connect_); }
    // The file to record the line to from the start, or empty.
    QString recordPath() const { return parser_.value(record_); }
    // Network control asked for, and where.
    bool rotctld() const { return parser_.isSet(rotctld_); }
    quint16 rotctldPort() const { return rotctldPortNumber_; }
    const QHostAddress& rotctldAddress() const { return rotctldAddress_; }

  private:
    // The arguments without the toolkit's own options (-platform offscreen,
    // -style=fusion, ...), which QApplication takes out later.
    static QStringList withoutToolkitOptions(const QStringList& arguments) {
        static const QStringList valued = {
            QStringLiteral("platform"),      QStringLiteral("platformpluginpath"),
            QStringLiteral("platformtheme"), QStringLiteral("plugin"),
            QStringLiteral("qmljsdebugger"), QStringLiteral("qwindowgeometry"),
            QStringLiteral("qwindowicon"),   QStringLiteral("qwindowtitle"),
            QStringLiteral("session"),       QStringLiteral("display"),
            QStringLiteral("geometry"),      QStringLiteral("style"),
            QStringLiteral("stylesheet"),    QStringLiteral("name"),
            QStringLiteral("title"),         QStringLiteral("icon")};
        static const QStringList flags = {QStringLiteral("reverse"), QStringLiteral("widgetcount"),
                                          QStringLiteral("nograb"), QStringLiteral("dograb"),
                                          QStringLiteral("sync")};
        QStringList kept;
        for (int i = 0; i < arguments.size(); ++i) {
            QString name = arguments[i];
            if (i == 0 || !name.startsWith(QLatin1Char('-'))) {
                kept << arguments[i];
                continue;
            }
            name.remove(0, name.startsWith(QLatin1String("--")) ? 2 : 1);
            const bool joined = name.contains(QLatin1Char('='));
            name = name.section(QLatin1Char('='), 0, 0);
            if (flags.contains(name)) {
                continue;
            }
            if (valued.contains(name)) {
                if (!joined) {
                    ++i;  // its value
                }
                continue;
            }
            kept << arguments[i];
        }
        return kept;
    }

    // Checks the network control options; an error sentence when wrong.
    QString readRotctld() {
        if (parser_.isSet(rotctldPort_)) {
            bool ok = false;
            const uint port = parser_.value(rotctldPort_).toUInt(&ok);
            if (!ok || port == 0 || port > 65535) {
                return QStringLiteral("Bad port '%1' for --rotctld.")
                    .arg(parser_.value(rotctldPort_));
            }
            rotctldPortNumber_ = static_cast<quint16>(port);
        }
        if (parser_.isSet(rotctldListen_)) {
            const QString text = parser_.value(rotctldListen_);
            if (text == QStringLiteral("any")) {
                rotctldAddress_ = QHostAddress(QHostAddress::Any);
            } else if (!rotctldAddress_.setAddress(text)) {
                return QStringLiteral("Bad address '%1' for --rotctld-listen.").arg(text);
            }
        }
        return {};
    }

    QCommandLineParser parser_;
    const QCommandLineOption help_{{QStringLiteral("h"), QStringLiteral("help")},
                                   QStringLiteral("Show this text and exit.")};
    const QCommandLineOption version_{QStringLiteral("version"),
                                      QStringLiteral("Show the version and exit.")};
    const QCommandLineOption simulate_{
        QStringLiteral("simulate"), QStringLiteral("Run a virtual unit in this process on COM1.")};
    const QCommandLineOption connect_{QStringLiteral("connect"),
                                      QStringLiteral("Press Start as soon as the window is up.")};
    const QCommandLineOption rotctld_{
        QStringLiteral("rotctld"),
        QStringLiteral("Turn network control on at start: tracking programs steer the unit "
                       "with Hamlib's rotctld protocol. --rotctld=PORT also sets the port.")};
    const QCommandLineOption rotctldPort_{
        QStringLiteral("rotctld-port"),
        QStringLiteral("TCP port for network control (default 4533)."), QStringLiteral("PORT")};
    const QCommandLineOption rotctldListen_{
        QStringLiteral("rotctld-listen"),
        QStringLiteral("Address network control listens on (default 127.0.0.1; 'any' for all "
                       "interfaces). The protocol has no password: open it up only on a "
                       "network you trust."),
        QStringLiteral("ADDRESS")};
    const QCommandLineOption record_{
        QStringLiteral("record"),
        QStringLiteral("Record the line to FILE (pcapng, for the Line Log and Wireshark) from "
                       "the start."),
        QStringLiteral("FILE")};
    quint16 rotctldPortNumber_ = halvex::network::RotctldServer::kDefaultPort;
    QHostAddress rotctldAddress_{QHostAddress::LocalHost};
};
}  // namespace

int main(int argc, char* argv[]) {
    QApplication::setApplicationName(QStringLiteral("halvex"));
    QApplication::setApplicationVersion(QStringLiteral(HALVEX_VERSION));
    QApplication::setDesktopFileName(QStringLiteral(HALVEX_APP_ID));
    CommandLine commandLine;
    if (const auto status = commandLine.answerAtOnce(argc, argv)) {
        return *status;
    }
    if (const auto status = runCommissioningCommand(argc, argv)) {
        return *status;
    }
    QApplication app(argc, argv);
    std::fprintf(stderr, "halvex: data files in %s\n", qPrintable(halvex::dataFolder()));

    std::unique_ptr<halvex::sim::PtyUnit> virtualUnit;
    if (commandLine.simulate()) {
        virtualUnit = startVirtualUnit();
        if (!virtualUnit) {
            return 1;
        }
    }

    halvex::VornixU window;
    if (const QString path = commandLine.recordPath(); !path.isEmpty()) {
        const QString error = window.lineRecorder().startRecording(path);
        if (!error.isEmpty()) {
            std::fprintf(stderr, "halvex: %s\n", qPrintable(error));
            return 1;
        }
        std::fprintf(stderr, "halvex: recording the line to %s\n", qPrintable(path));
    }
    const QString settingsError = window.Form_Load();
    window.show();
    if (!settingsError.isEmpty()) {
        window.messages().exclamation(QStringLiteral("Settings File"), settingsError);
    }
    reportConnection(window);
    window.networkControl().setEndpoint(commandLine.rotctldAddress(), commandLine.rotctldPort());
    if (commandLine.rotctld()) {
        // A port in use is told on stderr and in the status bar; the console runs on.
        window.networkControl().start();
    }
    if (commandLine.connectAtStart()) {
        QTimer::singleShot(0, &window, [&window] {
            if (auto* start = window.findChild<QPushButton*>(QStringLiteral("StartBut"))) {
                start->click();
            }
        });
    }
    const int status = QApplication::exec();
    return status;
}
