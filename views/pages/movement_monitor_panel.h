#pragma once

#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QWidget>

namespace halvex {

// The movement log panel of the "Pan/Tilt" page: the list of logged moves,
// the move count, the largest and average moves and the start/stop and
// clear buttons.
class MovementMonitorPanel : public QWidget {
    Q_OBJECT
  public:
    explicit MovementMonitorPanel(QWidget* parent = nullptr);

    QListWidget* MoveList = nullptr;
    QLabel* MoveCountLabel = nullptr;
    QLabel* Label6 = nullptr;     // largest pan move
    QLabel* Label1_24 = nullptr;  // average pan move
    QLabel* Label1_22 = nullptr;  // largest tilt move
    QLabel* Label1_25 = nullptr;  // average tilt move
    QPushButton* MoveMonBut = nullptr;
    QPushButton* MoveClearBut = nullptr;
};

}  // namespace halvex
