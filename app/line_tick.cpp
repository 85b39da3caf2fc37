#include "app/line_tick.h"

#include <QtGlobal>

#include "protocol/link.h"

namespace halvex {

int lineTickMs() {
    bool given = false;
    const int ms = qEnvironmentVariableIntValue("HALVEX_TICK_MS", &given);
    return given && ms > 0 && ms < Link::kTickMs ? ms : Link::kTickMs;
}

}  // namespace halvex
