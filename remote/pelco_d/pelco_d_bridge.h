#pragma once

#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <cstdint>
#include <map>
#include <span>

#include "remote/pelco_d/pelco_d_frames.h"
#include "remote/remote_jog.h"

class QTcpSocket;

namespace halvex {

class Session;
class SerialPort;

// Lets a control room's Pelco-D keyboard (or a matrix that speaks it) drive
// the unit as one camera at one address: from a serial line of its own (an
// RS-485 adapter) or from TCP clients, each connection a byte stream.
//
// Pan and tilt with their speeds, and zoom and focus on camera 1's lens, go
// to the unit as a jog (JogSource::PelcoD). A keyboard repeats its frame
// while the stick is held, so the jog stops when no frame has come for the
// refresh time; it also stops on a stop frame from any keyboard, when the
// keyboard that drives it goes away, and when the serial line is lost. Set,
// clear and call preset reach the unit's presets 0..30 by their own number.
//
// Pelco-D has no answers for these commands: what a frame did, and why one
// did nothing (the unit offline, the operator jogging, outside the soft
// limits), is told by commandHandled for the console's status line. Repeats
// of a frame are told once.
//
// Off until asked; TCP on the address given (the protocol has no
// authentication: loopback unless the operator chooses otherwise). The
// session must outlive the bridge.
class PelcoDBridge : public QObject {
    Q_OBJECT
  public:
    static constexpr qint32 kDefaultBaudRate = 2400;
    static constexpr int kDefaultAddress = 1;
    // A keyboard repeats a held stick's frame several times a second; 800 ms
    // rides out two or three lost repeats on a noisy line, and still stops
    // the platform within a second of a keyboard that hangs or is unplugged.
    static constexpr int kDefaultRefreshMs = 800;

    // The serial speeds offered: 2400 (the usual setting), 4800 and 9600.
    static QList<qint32> baudRates() { return {2400, 4800, 9600}; }

    explicit PelcoDBridge(Session& session, QObject* parent = nullptr);
    ~PelcoDBridge() override;
    PelcoDBridge(const PelcoDBridge&) = delete;
    PelcoDBridge& operator=(const PelcoDBridge&) = delete;

    // The camera address 1..255 this unit answers to; false (and the
    // address kept) outside it. Frames for other addresses are ignored.
    bool setAddress(int address);
    int address() const { return address_; }

    // Opens the serial device at one of baudRates(), 8 data bits, no parity,
    // one stop bit; false with errorString() when it will not open.
    bool openSerial(const QString& device, qint32 baudRate = kDefaultBaudRate);
    bool serialOpen() const;
    // Port 0 picks a free one; serverPort() tells which.
    bool listen(const QHostAddress& address, quint16 port);
    bool isListening() const { return server_.isListening(); }
    quint16 serverPort() const { return server_.serverPort(); }
    // Stops listening, drops every client and closes the serial line; the
    // jog stops.
    void close();
    QString errorString() const { return error_; }

    // 0: the jog runs until a stop frame or the keyboard goes away.
    void setRefreshMs(int refreshMs) { jog_.setRefreshMs(refreshMs); }
    int refreshMs() const { return jog_.refreshMs(); }

    int clientCount() const { return static_cast<int>(clients_.size()); }

  signals:
    void clientCountChanged(int clients);
    // A frame's command and what became of it ("pan left 20, tilt up 8",
    // "call preset 4: refused: the operator is jogging"), or the jog stopped
    // by itself; `peer` is the client's "address:port" or the serial device.
    void commandHandled(const QString& what, const QString& peer);
    // The serial line was lost (the adapter unplugged); it stays closed.
    void serialLost(const QString& reason);

  private:
    // A keyboard: a TCP client or the serial line.
    struct Peer {
        QString name;
        pelco_d::FrameAssembler frames;
        QString lastTold;  // the last commandHandled text, to tell repeats once
    };

    void acceptClients();
    void forget(QTcpSocket* socket);
    void readSerial();
    void take(Peer& peer, std::span<const std::uint8_t> bytes);
    void handle(Peer& peer, const pelco_d::Command& command);
    void move(Peer& peer, const pelco_d::Motion& motion);
    void preset(Peer& peer, const pelco_d::Command& command);
    // The keyboard went away: its jog stops.
    void peerGone(const Peer& peer, const QString& why);
    // Tells what a frame did; a repeat of the keyboard's last frame is told
    // only when `evenIfRepeated`.
    void tell(Peer& peer, const QString& what, bool evenIfRepeated = false);

    Session& session_;
    RemoteJog jog_;
    int address_ = kDefaultAddress;
    // Camera 1's zoom and focus speeds as the keyboard set them (0..3).
    int zoomSetting_ = pelco_d::kFastestLensSetting;
    int focusSetting_ = pelco_d::kFastestLensSetting;
    QTcpServer server_;
    std::map<QTcpSocket*, Peer> clients_;
    SerialPort* serial_ = nullptr;
    Peer serialPeer_;
    // The keyboard whose frame drives the jog, if one does.
    Peer* driver_ = nullptr;
    // Counts the keyboards dropped, for a read that outlives its keyboard.
    std::uint64_t epoch_{};
    QString error_;
};

}  // namespace halvex
