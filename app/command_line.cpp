#include "app/command_line.h"

#include "live_video/video_source.h"

#include <QCoreApplication>
#include <cstdio>

namespace halvex {

CommandLine::CommandLine() {
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
    for (const QCommandLineOption* option :
         {&onvif_, &onvifUser_, &visca_, &pelco_, &pelcoAddress_, &pelcoBaud_, &viscaRefresh_,
          &pelcoRefresh_, &remoteListen_, &video1_, &video2_}) {
        parser_.addOption(*option);
    }
    ::addCommissioningOptions(parser_);
}

QStringList CommandLine::spellOut(const QStringList& arguments) {
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

std::optional<int> CommandLine::answerAtOnce(int& argc, char* argv[]) {
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
        for (const auto read : {&CommandLine::readRotctld, &CommandLine::readBaud,
                                &CommandLine::readBridges, &CommandLine::readVideo}) {
            if (error.isEmpty()) {
                error = (this->*read)();
            }
        }
    }
    if (!error.isEmpty()) {
        std::fprintf(stderr, "halvex: %s\nTry 'halvex --help' for the options.\n",
                     qPrintable(error));
        return 2;
    }
    return std::nullopt;
}

bool CommandLine::isNumber(const QString& text) {
    bool ok = false;
    text.toUInt(&ok);
    return ok;
}

QString CommandLine::readBaud() {
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

QStringList CommandLine::withoutToolkitOptions(const QStringList& arguments) {
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

std::optional<quint16> CommandLine::portNumber(const QString& text) {
    bool ok = false;
    const uint port = text.toUInt(&ok);
    if (!ok || port == 0 || port > 65535) {
        return std::nullopt;
    }
    return static_cast<quint16>(port);
}

QString CommandLine::readRotctld() {
    if (parser_.isSet(rotctldPort_)) {
        const auto port = portNumber(parser_.value(rotctldPort_));
        if (!port) {
            return QStringLiteral("Bad port '%1' for --rotctld.").arg(parser_.value(rotctldPort_));
        }
        rotctldPortNumber_ = *port;
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

QString CommandLine::readBridges() {
    const auto badValue = [](const QCommandLineOption& option, const QString& value) {
        return QStringLiteral("Bad value '%1' for --%2.").arg(value, option.names().constFirst());
    };
    for (const auto& [option, port] :
         {std::pair{&onvif_, &bridges_.onvifPort}, std::pair{&visca_, &bridges_.viscaPort}}) {
        if (parser_.isSet(*option)) {
            *port = portNumber(parser_.value(*option));
            if (!*port) {
                return badValue(*option, parser_.value(*option));
            }
        }
    }
    if (bridges_.onvifPort) {
        bridges_.onvifUser = parser_.value(onvifUser_);
        bridges_.onvifPassword = qEnvironmentVariable(kOnvifPasswordVariable);
        if (bridges_.onvifUser.isEmpty() || bridges_.onvifPassword.isEmpty()) {
            return QStringLiteral("--onvif needs --onvif-user NAME and the password in $%1.")
                .arg(QLatin1String(kOnvifPasswordVariable));
        }
    }
    if (parser_.isSet(pelco_)) {
        const QString where = parser_.value(pelco_);
        if (where.startsWith(QLatin1String("tcp:"))) {
            bridges_.pelcoTcpPort = portNumber(where.mid(4));
            if (!bridges_.pelcoTcpPort) {
                return badValue(pelco_, where);
            }
        } else if (where.isEmpty()) {
            return badValue(pelco_, where);
        } else {
            bridges_.pelcoDevice = where;
        }
    }
    if (parser_.isSet(pelcoAddress_)) {
        bool ok = false;
        bridges_.pelcoAddress = parser_.value(pelcoAddress_).toInt(&ok);
        if (!ok || bridges_.pelcoAddress < 1 || bridges_.pelcoAddress > 255) {
            return badValue(pelcoAddress_, parser_.value(pelcoAddress_));
        }
    }
    if (parser_.isSet(pelcoBaud_)) {
        bool ok = false;
        bridges_.pelcoBaud = parser_.value(pelcoBaud_).toInt(&ok);
        if (!ok || bridges_.pelcoBaud < 1200 || bridges_.pelcoBaud > 115200) {
            return badValue(pelcoBaud_, parser_.value(pelcoBaud_));
        }
    }
    for (const auto& [option, refresh] : {std::pair{&viscaRefresh_, &bridges_.viscaRefreshMs},
                                          std::pair{&pelcoRefresh_, &bridges_.pelcoRefreshMs}}) {
        if (parser_.isSet(*option)) {
            bool ok = false;
            *refresh = parser_.value(*option).toInt(&ok);
            if (!ok || *refresh < 0 || *refresh > BridgeSettings::kLongestRefreshMs) {
                return badValue(*option, parser_.value(*option));
            }
        }
    }
    if (parser_.isSet(remoteListen_)) {
        const QString text = parser_.value(remoteListen_);
        if (text == QStringLiteral("any")) {
            bridges_.listen = QHostAddress(QHostAddress::Any);
        } else if (!bridges_.listen.setAddress(text)) {
            return badValue(remoteListen_, text);
        }
    }
    return {};
}

QString CommandLine::readVideo() {
    for (std::size_t i = 0; i < videoSources_.size(); ++i) {
        const QCommandLineOption& option = i == 0 ? video1_ : video2_;
        if (!parser_.isSet(option)) {
            continue;
        }
        const QString text = parser_.value(option);
        QString why;
        if (!parseVideoSource(text, &why)) {
            return QStringLiteral("--%1: %2").arg(option.names().constFirst(), why);
        }
        videoSources_[i] = text;
    }
    return {};
}

}  // namespace halvex
