#include "protocol/fault_guard.h"

#include <QString>

#include "protocol/range_fault.h"

namespace halvex {

void reportStoppedHandler(FormState& state, const char* handler, const std::exception& error) {
    QString message;
    if (const auto* fault = dynamic_cast<const RangeFault*>(&error)) {
        message = QStringLiteral("Run-time error %1: %2 in %3")
                      .arg(fault->errorNumber())
                      .arg(QString::fromLatin1(fault->kindText()), QString::fromLatin1(handler));
    } else {
        message = QStringLiteral("Run-time error: %1 in %2")
                      .arg(QString::fromLocal8Bit(error.what()), QString::fromLatin1(handler));
    }
    state.reportFault(message);
}

}  // namespace halvex
