#pragma once

#include <QCoro/QCoroTask>
#include <QString>
#include <optional>
#include <vector>

#include "protocol/frame.h"
#include "protocol/range_fault.h"

namespace halvex {

// Why the session would not carry out an operation.
enum class Refusal {
    Offline,          // no unit on the line, or still connecting
    PagesLocked,      // tables are being read again from the unit
    OutsideLimits,    // the target lies outside the unit's soft limits
    OperatorJogging,  // the operator steers with the jog box, keys or a controller
    UnitBusy,         // the unit is in its encoder alignment or homing cycle
};

// The operator's words for a refusal, as status lines and remote clients
// show it.
QString describe(Refusal refusal);

// How an operation ended. Done carries the unit's reply (its code and
// payload); a range fault carries the fault, which a page's handler raises
// again so that the operator sees it as a run-time error of that handler.
class Outcome {
  public:
    enum class Kind { Done, Refused, RangeFault, NoReply };

    static Outcome done(std::vector<Byte> reply) {
        Outcome outcome(Kind::Done);
        outcome.reply_ = std::move(reply);
        return outcome;
    }
    static Outcome refused(Refusal why) {
        Outcome outcome(Kind::Refused);
        outcome.refusal_ = why;
        return outcome;
    }
    static Outcome rangeFault(const RangeFault& fault) {
        Outcome outcome(Kind::RangeFault);
        outcome.fault_ = fault;
        return outcome;
    }
    static Outcome noReply() { return Outcome(Kind::NoReply); }

    Kind kind() const { return kind_; }
    bool isDone() const { return kind_ == Kind::Done; }
    std::optional<Refusal> refusal() const { return refusal_; }
    const std::vector<Byte>& reply() const { return reply_; }
    // Throws the range fault again, if that is how the operation ended.
    void raiseRangeFault() const {
        if (fault_) {
            throw *fault_;
        }
    }
    // "done", "refused: the unit is offline", "range fault: ...", "no reply".
    QString text() const;

  private:
    explicit Outcome(Kind kind) : kind_(kind) {}

    Kind kind_;
    std::optional<Refusal> refusal_;
    std::optional<RangeFault> fault_;
    std::vector<Byte> reply_;
};

// Runs an operation to its end for a caller that does not look at the
// outcome, raising a range fault as the fault guard expects it.
QCoro::Task<> completing(QCoro::Task<Outcome> operation);

}  // namespace halvex
