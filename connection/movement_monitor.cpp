#include "connection/movement_monitor.h"

#include <cmath>

#include "connection/movement_monitor_format.h"
#include "console/handler_wiring.h"
#include "views/pages/movement_monitor_panel.h"

namespace halvex {

MovementMonitor::MovementMonitor(ConsoleContext& context, MovementMonitorPanel& panel,
                                 QObject* parent)
    : QObject(parent), context_(context), panel_(panel) {
    FormState& state = context_.state;
    onEvent(state, panel_.MoveMonBut, &QPushButton::clicked, this, "MoveMonBut_Click",
            [this] { MoveMonBut_Click(); });
    onEvent(state, panel_.MoveClearBut, &QPushButton::clicked, this, "MoveClearBut_Click",
            [this] { MoveClearBut_Click(); });
}

void MovementMonitor::listen() {
    connect(&context_.events, &ConsoleEvents::currentPositionReported, this,
            &MovementMonitor::currentPositionReported);
    connect(&context_.events, &ConsoleEvents::targetPositionReported, this,
            &MovementMonitor::targetReported);
}

void MovementMonitor::currentPositionReported(float pan, float tilt) {
    moveFromPan_ = pan;
    moveFromTilt_ = tilt;
}

void MovementMonitor::targetReported(float pan, float tilt) {
    moveToPan_ = pan;
    moveToTilt_ = tilt;
    if (monitorOn_) {
        logMove();
    }
}

void MovementMonitor::logMove() {
    QListWidget* list = panel_.MoveList;
    // The first line of a log is always a move of nothing; it still counts
    // in the averages.
    if (list->count() == 0) {
        moveFromPan_ = moveToPan_;
        moveFromTilt_ = moveToTilt_;
    }
    list->addItem(movementLine(moveToPan_, moveFromPan_, moveToTilt_, moveFromTilt_));
    const int moves = list->count();
    list->setCurrentRow(moves - 1);
    panel_.MoveCountLabel->setText(QStringLiteral("%1 Moves").arg(moves));

    const float panMove = std::fabs(moveToPan_ - moveFromPan_);
    if (panMove > maxPanMove_) {
        maxPanMove_ = panMove;
    }
    panMoveSum_ += panMove;
    const float tiltMove = std::fabs(moveToTilt_ - moveFromTilt_);
    if (tiltMove > maxTiltMove_) {
        maxTiltMove_ = tiltMove;
    }
    tiltMoveSum_ += tiltMove;
    showStatistics(moves);
}

void MovementMonitor::showStatistics(int moves) {
    const float count = static_cast<float>(moves);
    panel_.Label6->setText(formatLargestMove(std::fabs(maxPanMove_)));
    panel_.Label1_24->setText(formatAverageMove(std::fabs(panMoveSum_ / count)));
    panel_.Label1_22->setText(formatLargestMove(std::fabs(maxTiltMove_)));
    panel_.Label1_25->setText(formatAverageMove(std::fabs(tiltMoveSum_ / count)));
}

void MovementMonitor::MoveMonBut_Click() {
    if (monitorOn_) {
        monitorOn_ = false;
        panel_.MoveMonBut->setText(QStringLiteral("Start Monitor"));
        return;
    }
    monitorOn_ = true;
    panel_.MoveMonBut->setText(QStringLiteral("Stop Monitor"));
    // Only the maxima start afresh; the sums and lines of an earlier run
    // stay in the averages.
    maxPanMove_ = 0.0f;
    maxTiltMove_ = 0.0f;
}

void MovementMonitor::MoveClearBut_Click() {
    panel_.MoveList->clear();
    maxPanMove_ = 0.0f;
    panMoveSum_ = 0.0f;
    tiltMoveSum_ = 0.0f;
    maxTiltMove_ = 0.0f;
    // The count label keeps its text until the next move is logged.
    panel_.Label6->setText(formatLargestMove(maxPanMove_));
    panel_.Label1_24->setText(formatAverageMove(panMoveSum_));
    panel_.Label1_22->setText(formatLargestMove(maxTiltMove_));
    panel_.Label1_25->setText(formatAverageMove(tiltMoveSum_));
}

}  // namespace halvex
