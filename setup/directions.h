#pragma once

#include <QLabel>
#include <QObject>

#include "console/console_context.h"

namespace halvex {

class FactoryPage;

// Motor and resolver directions, continuous rotation and mounting, the two
// encoder values, and the unit's two long procedures: the initial encoder
// alignment and the homing cycle.
class Directions : public QObject {
    Q_OBJECT
  public:
    // The reply watchdog while the unit is busy with a procedure, and after
    // the initial alignment.
    static constexpr int kProcedureWatchdogMs = 20000;
    static constexpr int kAfterAlignmentWatchdogMs = 1000;

    // Where the homing cycle shows that it is looking for the index points
    // (the index read-outs of the offsets page; may be null).
    struct IndexReadouts {
        QLabel* Pindex = nullptr;
        QLabel* Tindex = nullptr;
    };

    Directions(ConsoleContext& context, FactoryPage& page, IndexReadouts index,
               QObject* parent = nullptr);

    void registerDecoders();
    void registerReads(ReadHandlers& reads);

    Byte DirectionFlags() const { return directionFlags_; }

    void DirectionCheck_Click(int bit, bool checked);
    void GetRevBut_Click();
    void SetRevBut_Click();
    void GetEncBut_Click();
    void SetEncBut_Click();
    QCoro::Task<> InitEncBut_Click();
    QCoro::Task<> EncHomeBut_Click();

  private:
    void connectControls();
    void send(const std::vector<Byte>& message);
    void decodeDirections();
    void decodeEncoders();
    // Sends one procedure command and waits (the unit is silent meanwhile).
    QCoro::Task<> runProcedure(std::vector<Byte> command);

    ConsoleContext& context_;
    FactoryPage& page_;
    IndexReadouts index_;
    Byte directionFlags_ = 0;
    // A procedure is running: a second click meanwhile does nothing.
    bool procedureRunning_ = false;
};

}  // namespace halvex
