#pragma once

#include <QAbstractButton>
#include <QObject>
#include <functional>
#include <optional>

#include "console/console_context.h"
#include "network/rotator.h"

namespace halvex {

class PanTiltPage;

// The unit as network clients see it. A move from the network is what the
// operator gets by entering the desired angles on the Pan/Tilt page and
// pressing "Move To Absolute Coord": the same checks against the soft limits
// and the same absolute move on the same send path, so the movement monitor and
// the data watch show it like any other. Stop is the Stop button, park is
// "Move To Home".
//
// A network target is meant for both axes, so the hold check boxes are set
// aside for that one move and put back after it.
//
// Every call returns at once; the clicks that send run from the event loop
// right after, because a send waits for the link's tick.
class ConsoleRotator : public QObject, public network::Rotator {
    Q_OBJECT
  public:
    ConsoleRotator(ConsoleContext& context, PanTiltPage& page, QAbstractButton* stopButton,
                   std::function<int()> comPort, QObject* parent = nullptr);

    bool isOnline() const override;
    std::optional<network::AzEl> position() const override;
    network::RotatorResult setPosition(double azimuth, double elevation) override;
    network::RotatorResult stop() override;
    network::RotatorResult park() override;
    std::string info() const override;
    network::RotatorLimits limits() const override;

    // While this says so, moves and park from the network are refused: the
    // operator jogging has the platform.
    void setOperatorInControl(std::function<bool()> inControl) {
        operatorInControl_ = std::move(inControl);
    }

    // Forgets the last position; the next report brings a new one.
    void forgetPosition() { position_.reset(); }

  private:
    // Pan and tilt, in hundredths as the unit takes them, when inside the
    // soft limits.
    bool withinLimits(double pan, double tilt) const;
    void moveTo(double pan, double tilt);
    bool operatorJogging() const { return operatorInControl_ && operatorInControl_(); }

    ConsoleContext& context_;
    PanTiltPage& page_;
    QAbstractButton* stopButton_;
    std::function<int()> comPort_;
    std::optional<network::AzEl> position_;
    std::function<bool()> operatorInControl_;
};

}  // namespace halvex
