#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QWidget>
#include <array>

#include "views/widgets/spin_button.h"

namespace halvex {

// A window on the link's traffic: the last frame each way, and the last frame
// each way of one chosen code.
class DataWatch : public QWidget {
    Q_OBJECT
  public:
    static constexpr int kCodeCount = 49;
    static const std::array<int, kCodeCount> WatchCodes;

    explicit DataWatch(QWidget* parent = nullptr);

    int watchCode() const { return WatchCode; }

  public slots:
    void showSentFrame(const QString& capture);
    void showReceivedFrame(const QString& capture);

  private:
    void SpinButton1_SpinUp();
    void SpinButton1_SpinDown();
    void showWatchIndex();
    // Copies `line` into `capture` when it carries the watched code.
    void filterInto(const QString& line, QLineEdit* capture);

    QLineEdit* TXData;
    QLineEdit* RXData;
    QLineEdit* CapTXData;
    QLineEdit* CapRXData;
    SpinButton* SpinButton1;
    QLabel* Label5;
    int WatchIndex = 0;
    int WatchCode = 49;
};

}  // namespace halvex
