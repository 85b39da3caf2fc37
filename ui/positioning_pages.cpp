#include "ui/positioning_pages.h"

#include "connection/movement_monitor.h"
#include "positioning/alignment.h"
#include "positioning/presets.h"
#include "positioning/tours.h"
#include "ui/pages/movement_monitor_panel.h"
#include "ui/pages/offsets_page.h"
#include "ui/pages/presets_page.h"
#include "ui/pages/tours_page.h"

namespace halvex {

PositioningPages installPositioning(ConsoleContext& context,
                                    const PositioningEnvironment& environment, QObject* owner) {
    auto* presetsPage = new PresetsPage;
    auto* offsetsPage = new OffsetsPage;
    auto* toursPage = new ToursPage;
    auto* monitorPanel = new MovementMonitorPanel;

    auto* presets = new Presets(context, *presetsPage, owner);
    presets->registerDecoders();

    auto* tours = new Tours(context, *toursPage, *presets, presetsPage->PresetList,
                            environment.videoBlankChecked, owner);
    tours->registerDecoders();

    Alignment::Surroundings surroundings;
    surroundings.panCaption = environment.Label2_0;
    surroundings.tiltCaption = environment.Label2_1;
    surroundings.pageTabs = environment.SSTab1;
    surroundings.reloadPresets = [presets] { presets->reload(); };
    auto* alignment = new Alignment(context, *offsetsPage, std::move(surroundings), owner);
    alignment->registerDecoders();

    auto* monitor = new MovementMonitor(context, *monitorPanel, owner);
    monitor->listen();

    ConsoleHooks& hooks = context.hooks;
    hooks.reloadPresets = [presets] { presets->reload(); };
    hooks.prepareTourSelector = [tours] { tours->prepareSelector(); };
    hooks.loadSelectedTour = [tours] { tours->TourSel_Click(tours->SelectedTour()); };
    hooks.refillTourPresetChoices = [tours] { tours->refillPresetChoices(); };
    hooks.rebuildTourPresetChoices = [tours] { tours->rebuildPresetChoices(); };
    hooks.endTourDisplay = [tours] { tours->endTourDisplay(); };
    // The connection sequence runs this among its setup reads.
    hooks.readHandlers["GetCenBut"] = [alignment] { alignment->GetCenBut_Click(); };

    PositioningPages pages;
    pages.presets = presetsPage;
    pages.offsets = offsetsPage;
    pages.tours = toursPage;
    pages.movementMonitor = monitorPanel;
    return pages;
}

}  // namespace halvex
