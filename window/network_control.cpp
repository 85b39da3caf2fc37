#include "window/network_control.h"

#include <QSignalBlocker>
#include <cstdio>

namespace halvex {

NetworkControl::NetworkControl(network::Rotator& rotator, QAction* action, QLabel* label,
                               QObject* parent)
    : QObject(parent), server_(rotator), action_(action), label_(label) {
    action_->setCheckable(true);
    connect(action_, &QAction::toggled, this, [this](bool on) {
        if (on) {
            start();
        } else {
            stop();
        }
    });
    connect(&server_, &network::RotctldServer::clientCountChanged, this,
            &NetworkControl::showState);
    connect(&server_, &network::RotctldServer::moveAccepted, this,
            [](double azimuth, double elevation, const QString& peer) {
                std::fprintf(stderr,
                             "halvex: network move to azimuth %.2f elevation %.2f from %s\n",
                             azimuth, elevation, qPrintable(peer));
            });
    showState();
}

void NetworkControl::setEndpoint(const QHostAddress& address, quint16 port) {
    address_ = address;
    port_ = port;
}

bool NetworkControl::start() {
    if (!server_.isListening()) {
        if (server_.listen(address_, port_)) {
            error_.clear();
        } else {
            error_ = QStringLiteral("Network control: cannot listen on %1:%2: %3")
                         .arg(address_.toString())
                         .arg(port_)
                         .arg(server_.errorString());
            std::fprintf(stderr, "halvex: %s\n", qPrintable(error_));
            emit failed(error_);
        }
    }
    showState();
    return server_.isListening();
}

void NetworkControl::stop() {
    server_.close();
    showState();
}

void NetworkControl::showState() {
    const bool on = server_.isListening();
    {
        // The menu follows the server without starting or stopping it again.
        const QSignalBlocker quiet(action_);
        action_->setChecked(on);
    }
    if (!on) {
        label_->clear();
        label_->hide();
        return;
    }
    const int clients = server_.clientCount();
    label_->setText(QStringLiteral("Network control on %1:%2, %3 %4")
                        .arg(address_.toString())
                        .arg(server_.serverPort())
                        .arg(clients)
                        .arg(clients == 1 ? QStringLiteral("client") : QStringLiteral("clients")));
    label_->show();
}

}  // namespace halvex
