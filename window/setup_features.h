#pragma once

#include <QObject>
#include <QWidget>
#include <functional>

#include "console/console_context.h"

namespace halvex {

// The pages built by the video and setup features, for the window to place.
struct SetupPages {
    QWidget* video = nullptr;    // "Video"
    QWidget* setup = nullptr;    // "Setup"
    QWidget* factory = nullptr;  // "Factory"
};

// Builds the Video, Setup and Factory pages and installs their features.
// `owner` keeps the feature objects alive.
SetupPages installSetupFeatures(ConsoleContext& context, QObject* owner);

// Whether tour steps are to blank the video while the unit moves: the
// Video page's VBlankCheck, looked up in `window` when asked.
std::function<bool()> videoBlankReader(QWidget* window);

}  // namespace halvex
