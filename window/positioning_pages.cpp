#include "window/positioning_pages.h"

#include "connection/movement_monitor.h"
#include "console/handler_wiring.h"
#include "positioning/alignment.h"
#include "positioning/presets.h"
#include "positioning/tours.h"
#include "views/pages/movement_monitor_panel.h"
#include "views/pages/offsets_page.h"
#include "views/pages/presets_page.h"
#include "views/pages/tours_page.h"

namespace halvex {

PositioningPages installPositioning(ConsoleContext& context,
                                    const PositioningEnvironment& environment, QObject* owner) {
    auto* presetsPage = new PresetsPage;
    auto* offsetsPage = new OffsetsPage;
    auto* toursPage = new ToursPage;
    auto* monitorPanel = new MovementMonitorPanel;

    auto* presets = new Presets(context, *presetsPage, owner);

    auto* tours = new Tours(context, *toursPage, environment.videoBlankChecked, owner);
    tours->registerTourEndCheck();

    Alignment::Surroundings surroundings;
    surroundings.panCaption = environment.Label2_0;
    surroundings.tiltCaption = environment.Label2_1;
    surroundings.pageTabs = environment.SSTab1;
    new Alignment(context, *offsetsPage, std::move(surroundings), owner);

    auto* monitor = new MovementMonitor(context, *monitorPanel, owner);
    monitor->listen();

    // A fault in one of these stops that step only, not whoever asked.
    ConsoleEvents& events = context.events;
    FormState& state = context.state;
    events.presetsReload.answerWith(state, "PresetList_Reload",
                                    [presets] { return presets->reload(); });
    onEvent(state, &events, &ConsoleEvents::tourSelectorPrepareRequested, tours, "TourSel_Prepare",
            [tours] { tours->prepareSelector(); });
    events.selectedTourLoad.answerWith(
        state, "TourSel_Click", [tours] { return tours->TourSel_Click(tours->SelectedTour()); });
    onEvent(state, &events, &ConsoleEvents::tourPresetChoicesRefillRequested, tours,
            "ScriptPreList_Refill", [tours] { tours->refillPresetChoices(); });
    onEvent(state, &events, &ConsoleEvents::tourDisplayEndRequested, tours, "StopBut_Click",
            [tours] { tours->endTourDisplay(); });

    PositioningPages pages;
    pages.presets = presetsPage;
    pages.offsets = offsetsPage;
    pages.tours = toursPage;
    pages.movementMonitor = monitorPanel;
    return pages;
}

}  // namespace halvex
