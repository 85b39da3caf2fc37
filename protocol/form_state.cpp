#include "protocol/form_state.h"

#include <cstdio>

namespace halvex {

void FormState::setLamp(LinkLamp lamp) {
    if (lamp_ == lamp) {
        return;
    }
    lamp_ = lamp;
    emit lampChanged(lamp);
}

void FormState::reportFault(const QString& message) {
    std::fprintf(stderr, "%s\n", qPrintable(message));
    emit faultReported(message);
}

}  // namespace halvex
