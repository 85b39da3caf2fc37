#include "window/setup_features.h"

#include <QCheckBox>

#include "setup/directions.h"
#include "setup/identity.h"
#include "setup/speeds_and_limits.h"
#include "video/on_screen_display.h"
#include "video/video_config.h"
#include "views/pages/factory_page.h"
#include "views/pages/setup_page.h"
#include "views/pages/video_page.h"

namespace halvex {

SetupPages installSetupFeatures(ConsoleContext& context, QObject* owner) {
    auto* videoPage = new VideoPage;
    auto* setupPage = new SetupPage;
    auto* factoryPage = new FactoryPage;

    new VideoConfig(context, *videoPage, owner);
    new OnScreenDisplay(context, *videoPage, owner);

    new SpeedsAndLimits(context, *setupPage, owner);
    new Identity(context, *setupPage, *factoryPage, owner);

    new Directions(context, *factoryPage, owner);

    SetupPages pages;
    pages.video = videoPage;
    pages.setup = setupPage;
    pages.factory = factoryPage;
    return pages;
}

std::function<bool()> videoBlankReader(QWidget* window) {
    return [window] {
        const auto* box = window->findChild<QCheckBox*>(QStringLiteral("VBlankCheck"));
        return box != nullptr && box->isChecked();
    };
}

}  // namespace halvex
