#include "window/thumbnail_feed.h"

#include <QIcon>
#include <QPixmap>

#include "live_video/preset_thumbnails.h"
#include "session/session.h"
#include "views/pages/presets_page.h"
#include "views/pages/tours_page.h"
#include "views/widgets/range_plot.h"

namespace halvex {

namespace {
QIcon iconOf(const QImage& picture) {
    return picture.isNull() ? QIcon() : QIcon(QPixmap::fromImage(picture));
}
}  // namespace

ThumbnailFeed::ThumbnailFeed(Session& session, PresetThumbnails& thumbnails, PresetsPage& presets,
                             ToursPage& tours, RangePlot& plot, QObject* parent)
    : QObject(parent),
      session_(session),
      thumbnails_(thumbnails),
      presets_(&presets),
      tours_(&tours),
      plot_(&plot) {
    connect(&thumbnails, &PresetThumbnails::changed, this, &ThumbnailFeed::show);
    connect(&thumbnails, &PresetThumbnails::allChanged, this, &ThumbnailFeed::showAll);
    // Talking to another address, or having connected on another line.
    connect(&session, &Session::talkingTo, this, &ThumbnailFeed::followUnit);
    connect(&session, &Session::presetsReloaded, this, &ThumbnailFeed::followUnit);
    // The steps' entries are put on the list before this hears of them.
    connect(&session, &Session::tourStepReported, this, &ThumbnailFeed::showStep);
    showAll();
}

void ThumbnailFeed::followUnit() {
    if (thumbnails_.folder() != shownFolder_) {
        showAll();
    }
}

void ThumbnailFeed::showAll() {
    shownFolder_ = thumbnails_.folder();
    for (int number = 0; number < kPresetTableSize; ++number) {
        show(number);
    }
}

void ThumbnailFeed::show(int number) {
    if (number < 0 || number >= kPresetTableSize) {
        return;
    }
    const QImage picture = thumbnails_.thumbnail(number);
    QImage& shown = shown_.at(static_cast<std::size_t>(number));
    if (picture.isNull() && shown.isNull()) {
        return;  // nothing was shown, nothing to take away
    }
    shown = picture;
    if (presets_ != nullptr) {
        presets_->setPresetIcon(number, iconOf(picture));
    }
    if (plot_ != nullptr) {
        plot_->setPresetPicture(number, picture);
    }
    showSteps();
}

void ThumbnailFeed::showSteps() {
    const int steps = static_cast<int>(session_.tours().steps.size());
    for (int index = 0; index < steps; ++index) {
        showStep(index);
    }
}

void ThumbnailFeed::showStep(int index) {
    const auto& steps = session_.tours().steps;
    if (tours_ == nullptr || index < 0 || index >= static_cast<int>(steps.size())) {
        return;
    }
    const int preset = steps.at(static_cast<std::size_t>(index)).preset;
    const bool known = preset >= 0 && preset < kPresetTableSize;
    tours_->setStepIcon(index,
                        known ? iconOf(shown_.at(static_cast<std::size_t>(preset))) : QIcon());
}

}  // namespace halvex
