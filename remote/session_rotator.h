#pragma once

#include <QObject>
#include <functional>
#include <optional>

#include "network/rotator.h"
#include "session/session.h"

namespace halvex {

// The unit as rotctld clients see it, through the session: a target is an
// absolute move of both axes, checked as any program's move is (offline,
// tables being read again, the operator jogging, outside the soft limits);
// stop is the session's Stop and park its move home.
//
// Every call returns at once; the move goes on from the event loop and the
// client asks for the position to follow it.
class SessionRotator : public QObject, public network::Rotator {
    Q_OBJECT
  public:
    // `lineName` names the line in info(): "COM1".
    SessionRotator(Session& session, std::function<QString()> lineName, QObject* parent = nullptr);

    bool isOnline() const override;
    std::optional<network::AzEl> position() const override;
    network::RotatorResult setPosition(double azimuth, double elevation) override;
    network::RotatorResult stop() override;
    network::RotatorResult park() override;
    std::string info() const override;
    network::RotatorLimits limits() const override;

    // Forgets the last position; the next report brings a new one.
    void forgetPosition() { position_.reset(); }

  private:
    static network::RotatorResult resultFor(Refusal refusal);
    // Runs a move to its end; a range fault is told as the console tells
    // any other.
    void launchMove(QCoro::Task<Outcome> move);

    Session& session_;
    std::function<QString()> lineName_;
    std::optional<network::AzEl> position_;
};

}  // namespace halvex
