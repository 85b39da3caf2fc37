#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QPointer>
#include <functional>

#include "session/session.h"
#include "views/widgets/range_plot.h"

namespace halvex {

// Keeps the range plot showing what the session knows of the unit, and
// carries out what the operator asks of the plot through the session, as a
// program's request: refused offline, while the tables are read again,
// while the operator jogs and outside the soft limits. Why a request was
// refused shows on the plot and goes to `tell`.
class RangePlotFeed : public QObject {
    Q_OBJECT
  public:
    // The mechanical range the offsets shift: pan ±180, tilt ±90.
    static constexpr double kPanTravel = 180.0;
    static constexpr double kTiltTravel = 90.0;

    RangePlotFeed(Session& session, RangePlot& plot, std::function<void(const QString&)> tell,
                  QObject* parent = nullptr);

  private:
    void showLimits();
    void showPosition();
    // The presets and the chosen tour's path through them.
    void showPresetsAndTour();
    void carryOut(const char* handler, QCoro::Task<Outcome> operation,
                  std::function<void()> afterwards = {});
    QCoro::Task<> reportOutcome(QCoro::Task<Outcome> operation, std::function<void()> afterwards);

    Session& session_;
    QPointer<RangePlot> plot_;
    std::function<void(const QString&)> tell_;
};

}  // namespace halvex
