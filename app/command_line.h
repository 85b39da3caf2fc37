#pragma once

#include <QCommandLineParser>
#include <QHostAddress>
#include <QString>
#include <array>
#include <optional>

#include "app/commissioning_command.h"
#include "network/rotctld_server.h"
#include "remote/bridge_settings.h"

namespace halvex {

// The console's options, read before the window system is touched, so that
// --help, --version and every mistake are answered with no display; Qt's own
// options (-platform, -style, ...) are left for QApplication.
class CommandLine {
  public:
    CommandLine();

    // "--rotctld=PORT" and "--rotctld PORT" are read as "--rotctld
    // --rotctld-port PORT": the parser has no options whose value may be
    // left out.
    static QStringList spellOut(const QStringList& arguments);

    // Answers --help, --version or a mistake before the window system starts;
    // the exit status when it did.
    std::optional<int> answerAtOnce(int& argc, char* argv[]);

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
    // The standard PTZ bridges asked for; the ONVIF password comes from the
    // environment, where other users cannot read it as they can a command
    // line.
    const BridgeSettings& bridges() const { return bridges_; }
    // What each video output shows for this run, where given, instead of
    // the kept choice.
    const std::array<std::optional<QString>, 2>& videoSources() const { return videoSources_; }

    static constexpr const char* kOnvifPasswordVariable = "HALVEX_ONVIF_PASSWORD";

  private:
    static bool isNumber(const QString& text);
    // Checks --baud; an error sentence when wrong.
    QString readBaud();

    // The arguments without the toolkit's own options (-platform offscreen,
    // -style=fusion, ...), which QApplication takes out later.
    static QStringList withoutToolkitOptions(const QStringList& arguments);

    // Checks the network control options; an error sentence when wrong.
    QString readRotctld();
    // Checks the bridges' options; an error sentence when wrong.
    QString readBridges();
    // Checks the video sources; an error sentence when wrong.
    QString readVideo();
    // A TCP or UDP port number from 1 to 65535, or nothing.
    static std::optional<quint16> portNumber(const QString& text);

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
    const QCommandLineOption onvif_{
        QStringLiteral("onvif"),
        QStringLiteral("Serve ONVIF (device, media and PTZ) on PORT for video management "
                       "systems; needs --onvif-user and the password in $HALVEX_ONVIF_PASSWORD."),
        QStringLiteral("PORT")};
    const QCommandLineOption onvifUser_{QStringLiteral("onvif-user"),
                                        QStringLiteral("The user ONVIF clients sign in as."),
                                        QStringLiteral("NAME")};
    const QCommandLineOption visca_{
        QStringLiteral("visca"),
        QStringLiteral("Serve VISCA over IP (UDP) and plain VISCA (TCP) on PORT, usually 52381."),
        QStringLiteral("PORT")};
    const QCommandLineOption pelco_{
        QStringLiteral("pelco"),
        QStringLiteral("Take Pelco-D from a PTZ keyboard on a serial DEVICE of its own (an RS-485 "
                       "adapter) or on tcp:PORT."),
        QStringLiteral("DEVICE|tcp:PORT")};
    const QCommandLineOption pelcoAddress_{
        QStringLiteral("pelco-address"),
        QStringLiteral("The camera address the keyboard calls this unit by (default 1)."),
        QStringLiteral("N")};
    const QCommandLineOption pelcoBaud_{QStringLiteral("pelco-baud"),
                                        QStringLiteral("The keyboard line's speed (default 2400)."),
                                        QStringLiteral("SPEED")};
    const QCommandLineOption viscaRefresh_{
        QStringLiteral("visca-refresh"),
        QStringLiteral("Stop a VISCA drive after MS milliseconds with nothing from its "
                       "client (default 10000; 0: only at its stop)."),
        QStringLiteral("MS")};
    const QCommandLineOption pelcoRefresh_{
        QStringLiteral("pelco-refresh"),
        QStringLiteral("Stop a Pelco-D drive after MS milliseconds without a frame (default "
                       "800; 0: only at its stop)."),
        QStringLiteral("MS")};
    const QCommandLineOption remoteListen_{
        QStringLiteral("remote-listen"),
        QStringLiteral("Address the ONVIF, VISCA and Pelco-D TCP bridges listen on (default "
                       "127.0.0.1; 'any' for all interfaces)."),
        QStringLiteral("ADDRESS")};
    const QCommandLineOption video1_{
        QStringLiteral("video1"),
        QStringLiteral("Show SOURCE for the unit's video output 1 in this run: a capture device "
                       "(/dev/video0), rtsp://, rtp://HOST:PORT, udp://HOST:PORT, srt://HOST:PORT, "
                       "an http:// MJPEG stream, or none."),
        QStringLiteral("SOURCE")};
    const QCommandLineOption video2_{
        QStringLiteral("video2"),
        QStringLiteral("Show SOURCE for the unit's video output 2 in this run, as --video1."),
        QStringLiteral("SOURCE")};
    std::optional<qint32> baudRate_;
    std::array<std::optional<QString>, 2> videoSources_;
    BridgeSettings bridges_;
    quint16 rotctldPortNumber_ = network::RotctldServer::kDefaultPort;
    QHostAddress rotctldAddress_{QHostAddress::LocalHost};
};

}  // namespace halvex
