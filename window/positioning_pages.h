#pragma once

#include <QLabel>
#include <QWidget>
#include <functional>

#include "console/console_context.h"

namespace halvex {

class LedDisplay;

// What the presets, tours, offsets and movement-log features need from the
// rest of the window.
struct PositioningEnvironment {
    // "Pan" / "Tilt" captions above the position displays (Label2_0, Label2_1).
    QLabel* Label2_0 = nullptr;
    QLabel* Label2_1 = nullptr;
    // The operator's desired angles on the Pan/Tilt page.
    LedDisplay* PanDesLED = nullptr;
    LedDisplay* TiltDesLED = nullptr;
    // The page tabs, locked during an offset change.
    QWidget* SSTab1 = nullptr;
    // Video blanking during tour moves (the Video page's check box).
    std::function<bool()> videoBlankChecked;
};

// The pages built by the positioning features, for the window to place.
struct PositioningPages {
    QWidget* presets = nullptr;          // "Presets"
    QWidget* offsets = nullptr;          // "Offsets"
    QWidget* tours = nullptr;            // "Tours"
    QWidget* movementMonitor = nullptr;  // panel on the "Pan/Tilt" page
};

// Builds the pages and installs the features: registers their reply
// decoders and fills in their hooks. `owner` keeps the feature objects alive.
PositioningPages installPositioning(ConsoleContext& context,
                                    const PositioningEnvironment& environment, QObject* owner);

}  // namespace halvex
