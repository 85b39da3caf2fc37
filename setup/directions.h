#pragma once

#include <QCoro/QCoroTask>
#include <QObject>

#include "console/console_context.h"

namespace halvex {

class FactoryPage;

// Motor and resolver directions, continuous rotation and mounting, the two
// encoder values, and the unit's two long procedures, the initial encoder
// alignment and the homing cycle, each after its checklist.
class Directions : public QObject {
    Q_OBJECT
  public:
    Directions(ConsoleContext& context, FactoryPage& page, QObject* parent = nullptr);

    QCoro::Task<> GetRevBut_Click();
    QCoro::Task<> SetRevBut_Click();
    QCoro::Task<> GetEncBut_Click();
    QCoro::Task<> SetEncBut_Click();
    QCoro::Task<> InitEncBut_Click();
    QCoro::Task<> EncHomeBut_Click();

  private:
    void connectControls();

    ConsoleContext& context_;
    FactoryPage& page_;
    // What Set sends: the unit's last report, with the operator's clicks.
    MountSettings mount_;
};

}  // namespace halvex
