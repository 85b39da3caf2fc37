#pragma once

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QHostAddress>
#include <QString>
#include <cstdio>
#include <optional>

#include "app/commissioning_command.h"
#include "network/rotctld_server.h"

namespace halvex {

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
        parser_.addOption(headless_);
        parser_.addOption(port_);
        parser_.addOption(baud_);
        ::addCommissioningOptions(parser_);
    }

    // "--rotctld=PORT" and "--rotctld PORT" are read as "--rotctld
    // --rotctld-port PORT": the parser has no options whose value may be
    // left out.
    static QStringList spellOut(const QStringList& arguments) {
        QStringList out;
        const QString flag = QStringLiteral("--rotctld");
        const QString joined = flag + QLatin1Char('=');
        for (qsizetype i = 0; i < arguments.size(); ++i) {
            const QString& argument = arguments[i];
            if (argument.startsWith(joined)) {
                out << flag << QStringLiteral("--rotctld-port") << argument.mid(joined.size());
            } else if (argument == flag && i + 1 < arguments.size() && isNumber(arguments[i + 1])) {
                out << flag << QStringLiteral("--rotctld-port") << arguments[++i];
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
            if (error.isEmpty()) {
                error = readBaud();
            }
        }
        if (!error.isEmpty()) {
            std::fprintf(stderr, "halvex: %s\nTry 'halvex --help' for the options.\n",
                         qPrintable(error));
            return 2;
        }
        return std::nullopt;
    }

    bool simulate() const { return parser_.isSet(simulate_); }
    // No window: the session alone, reporting on stderr.
    bool headless() const { return parser_.isSet(headless_); }
    // The device asked for with --port, or empty for COMn's.
    QString portDevice() const { return parser_.value(port_); }
    // The line speed asked for with --baud, or nothing for the kept one.
    std::optional<qint32> baudRate() const { return baudRate_; }
    bool connectAtStart() const { return parser_.isSet(connect_); }
    // The file to record the line to from the start, or empty.
    QString recordPath() const { return parser_.value(record_); }
    // Network control asked for, and where.
    bool rotctld() const { return parser_.isSet(rotctld_); }
    quint16 rotctldPort() const { return rotctldPortNumber_; }
    const QHostAddress& rotctldAddress() const { return rotctldAddress_; }

  private:
    static bool isNumber(const QString& text) {
        bool ok = false;
        text.toUInt(&ok);
        return ok;
    }
    // Checks --baud; an error sentence when wrong.
    QString readBaud() {
        if (!parser_.isSet(baud_)) {
            return {};
        }
        bool ok = false;
        const int baud = parser_.value(baud_).toInt(&ok);
        if (!ok || baud < 300 || baud > 4000000) {
            return QStringLiteral("Bad speed '%1' for --baud.").arg(parser_.value(baud_));
        }
        baudRate_ = baud;
        return {};
    }

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
    const QCommandLineOption headless_{
        QStringLiteral("headless"),
        QStringLiteral("Run without a window or a display: connect to the unit, serve network "
                       "control when asked (--rotctld), report on stderr and look for a lost "
                       "unit again by itself. SIGTERM or SIGINT stops the platform, then "
                       "the program.")};
    const QCommandLineOption port_{
        QStringLiteral("port"),
        QStringLiteral("With --headless: the device or network address of the line "
                       "(/dev/ttyUSB0, socket://HOST:PORT, rfc2217://HOST:PORT) instead of "
                       "COMn's."),
        QStringLiteral("DEVICE")};
    const QCommandLineOption baud_{
        QStringLiteral("baud"),
        QStringLiteral("With --headless: the line speed instead of the kept one."),
        QStringLiteral("SPEED")};
    std::optional<qint32> baudRate_;
    quint16 rotctldPortNumber_ = network::RotctldServer::kDefaultPort;
    QHostAddress rotctldAddress_{QHostAddress::LocalHost};
};

}  // namespace halvex
