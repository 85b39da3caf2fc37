#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "connection/unit_status.h"
#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"

class QWidget;

namespace halvex {

// Where features meet without reaching into each other's controls: each
// feature fills in the hooks it answers for when it is installed.
struct ConsoleHooks {
    // The preset reload (32 requests, each awaiting its reply).
    std::function<void()> reloadPresets;
    // Sets up the tour selectors before the first tour is loaded.
    std::function<void()> prepareTourSelector;
    // Loads the selected tour from the unit, as a click on its selector does.
    std::function<void()> loadSelectedTour;
    // Copies the preset list into the tour page's preset choices.
    std::function<void()> refillTourPresetChoices;
    // Rebuilds the tour page's preset choices from the preset tables and
    // selects the first line.
    std::function<void()> rebuildTourPresetChoices;
    // Ends the "executing" look of the tour page (stop button).
    std::function<void()> endTourDisplay;

    // "Get" handlers of the setup and camera pages by control name
    // ("GetCenBut", "GetLensBut", ...), which the connection sequence runs in
    // its own order. A page that is not built yet is read with a bare request.
    std::map<std::string, std::function<void()>> readHandlers;

    // Every current-position report and every target report, in degrees.
    std::vector<std::function<void(float pan, float tilt)>> currentPositionListeners;
    std::vector<std::function<void(float pan, float tilt)>> targetPositionListeners;
};

// What every feature is handed: the shared state, the link, the receive
// dispatch, the hooks, and the window to parent message boxes on.
struct ConsoleContext {
    FormState& state;
    UnitStatus& status;
    Link& link;
    Receiver& receiver;
    ConsoleHooks& hooks;
    QWidget* window;
};

// Runs a hook if somebody installed it.
inline void runHook(const std::function<void()>& hook) {
    if (hook) {
        hook();
    }
}

}  // namespace halvex
