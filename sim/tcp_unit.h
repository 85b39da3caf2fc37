#pragma once

// The virtual unit on a TCP port, as a serial device server's raw port puts a
// unit on the network: the line's bytes as they are, one console at a time.
// A second console is let in and closed at once, so it reports the unit as
// lost and keeps looking until the first one leaves.

#include <QString>
#include <QTcpServer>
#include <functional>

#include "sim/stream_unit.h"

namespace halvex::sim {

class TcpUnit : public StreamUnit {
    Q_OBJECT

  public:
    explicit TcpUnit(const PtyUnitOptions& options, QObject* parent = nullptr);
    ~TcpUnit() override;

    // Listens on every address on `port` (0: a free port). False, with a
    // reason, when it cannot.
    bool listen(quint16 port, QString* error = nullptr);
    quint16 port() const { return server_.serverPort(); }
    bool consoleConnected() const { return connection_ >= 0; }

    // Told of every console that comes, goes or is turned away.
    void setLog(std::function<void(const QString&)> log) { log_ = std::move(log); }

  protected:
    void lineEnded() override;
    long writeLine(const Byte* bytes, std::size_t count) override;

  private:
    // Hands every accepted connection's descriptor to take().
    class Listener : public QTcpServer {
      public:
        explicit Listener(TcpUnit& unit) : unit_(unit) {}

      protected:
        void incomingConnection(qintptr descriptor) override {
            unit_.take(static_cast<int>(descriptor));
        }

      private:
        TcpUnit& unit_;
    };

    void take(int descriptor);
    void dropConnection();
    void say(const QString& line) const;

    Listener server_{*this};
    int connection_ = -1;
    std::function<void(const QString&)> log_;
};

}  // namespace halvex::sim
