#pragma once

#include <QAction>
#include <QHostAddress>
#include <QLabel>
#include <QObject>

#include "network/rotctld_server.h"

namespace halvex {

// Network control: the rotctld server over the console's rotator, the
// checkable menu entry that runs it and the status bar label that tells
// where it listens and how many clients it has.
class NetworkControl : public QObject {
    Q_OBJECT
  public:
    NetworkControl(network::Rotator& rotator, QAction* action, QLabel* label,
                   QObject* parent = nullptr);

    // Where start() listens; port 0 picks a free one.
    void setEndpoint(const QHostAddress& address, quint16 port);
    // False, with the reason in errorString(), when the port cannot be had.
    bool start();
    void stop();

    network::RotctldServer& server() { return server_; }
    QString errorString() const { return error_; }

  signals:
    // A line for the status bar: the server could not start.
    void failed(const QString& message);

  private:
    void showState();

    network::RotctldServer server_;
    QAction* action_;
    QLabel* label_;
    QHostAddress address_ = QHostAddress(QHostAddress::LocalHost);
    quint16 port_ = network::RotctldServer::kDefaultPort;
    QString error_;
};

}  // namespace halvex
