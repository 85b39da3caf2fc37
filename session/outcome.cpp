#include "session/outcome.h"

namespace halvex {

QString describe(Refusal refusal) {
    switch (refusal) {
        case Refusal::Offline:
            return QStringLiteral("the unit is offline");
        case Refusal::PagesLocked:
            return QStringLiteral("the console is reading its tables again");
        case Refusal::OutsideLimits:
            return QStringLiteral("outside the soft limits");
        case Refusal::OperatorJogging:
            return QStringLiteral("the operator is jogging");
        case Refusal::UnitBusy:
            return QStringLiteral("the unit is aligning its encoders or homing");
    }
    return {};
}

QString Outcome::text() const {
    switch (kind_) {
        case Kind::Done:
            return QStringLiteral("done");
        case Kind::Refused:
            return QStringLiteral("refused: %1").arg(describe(*refusal_));
        case Kind::RangeFault:
            return QStringLiteral("range fault: %1").arg(QString::fromStdString(fault_->what()));
        case Kind::NoReply:
            return QStringLiteral("no reply");
    }
    return {};
}

QCoro::Task<> completing(QCoro::Task<Outcome> operation) {
    const Outcome outcome = co_await std::move(operation);
    outcome.raiseRangeFault();
}

}  // namespace halvex
