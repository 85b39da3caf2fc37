#pragma once

#include <QObject>

#include "console/console_context.h"

namespace halvex {

class MovementMonitorPanel;

// The movement log: while it runs, every target the unit reports adds one
// line (target, start and move of each axis) and updates the statistics.
// The start of a move is the last reported current position.
class MovementMonitor : public QObject {
    Q_OBJECT
  public:
    MovementMonitor(ConsoleContext& context, MovementMonitorPanel& panel,
                    QObject* parent = nullptr);

    // Adds the position listeners to the console hooks.
    void listen();

    void currentPositionReported(float pan, float tilt);
    void targetReported(float pan, float tilt);

    void MoveMonBut_Click();
    void MoveClearBut_Click();

  private:
    void logMove();
    void showStatistics(int moves);

    ConsoleContext& context_;
    MovementMonitorPanel& panel_;
    bool monitorOn_ = false;
    float moveFromPan_ = 0.0f;
    float moveFromTilt_ = 0.0f;
    float moveToPan_ = 0.0f;
    float moveToTilt_ = 0.0f;
    float maxPanMove_ = 0.0f;
    float panMoveSum_ = 0.0f;
    float maxTiltMove_ = 0.0f;
    float tiltMoveSum_ = 0.0f;
};

}  // namespace halvex
