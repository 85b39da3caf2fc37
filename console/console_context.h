#pragma once

#include <functional>
#include <map>
#include <string>

#include "console/console_events.h"
#include "console/messages.h"
#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "session/preset_table.h"
#include "session/session.h"
#include "session/unit_status.h"

class QWidget;

namespace halvex {

// What every feature is handed: the session, the shared state, the link, the receive
// dispatch, the events features raise for each other, the message boxes and
// the window they belong to. The main window owns all of it.
struct ConsoleContext {
    // The unit's operations and state; the fields below are its parts, named
    // apart because nearly every feature reads them.
    Session& session;
    FormState& state;
    UnitStatus& status;
    PresetTable& presets;
    Link& link;
    Receiver& receiver;
    ConsoleEvents& events;
    const Messages& messages;
    QWidget* window;
};

}  // namespace halvex
