#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

#include "network/rotator.h"

class QTcpSocket;

namespace halvex::network {

// One client of the rotctld server: splits what it sends into lines and
// answers each in order.
class RotctldSession : public QObject {
    Q_OBJECT
  public:
    // Takes the socket over as a child.
    RotctldSession(QTcpSocket* socket, Rotator& rotator, QObject* parent = nullptr);

    // "address:port", kept from the connection so it still reads after it.
    const QString& peer() const { return peer_; }
    // Drops the connection at once, unsent answers and all.
    void abort();

  signals:
    void moveAccepted(double azimuth, double elevation, const QString& peer);
    // The connection is gone; emitted once.
    void finished(halvex::network::RotctldSession* session);

  private:
    void readLines();
    bool answer(const QByteArray& line);
    void closeAfterWriting();
    void finish();

    QTcpSocket* socket_;
    Rotator& rotator_;
    QString peer_;
    QByteArray pending_;
    bool closing_ = false;
    bool finished_ = false;
};

}  // namespace halvex::network
