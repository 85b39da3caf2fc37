#include "window/video_wiring.h"

#include <QAction>
#include <QGroupBox>

#include "live_video/calibration_dialog.h"
#include "live_video/live_video.h"
#include "live_video/video_panel.h"
#include "live_video/video_sources_dialog.h"
#include "window/page_place.h"

namespace halvex {

VideoWiring::VideoWiring(Session& session, QGroupBox& pageSlot, QTabWidget& tabs,
                         QAction& showAction, QWidget& mainWindow,
                         std::function<void(const QString&)> tell)
    : QObject(&mainWindow), session_(session), mainWindow_(mainWindow), panel_(new VideoPanel) {
    live_ = new LiveVideo(session, *panel_, std::move(tell), this);
    connect(live_, &LiveVideo::eventOccurred, this, &VideoWiring::eventOccurred);
    place_ = new PagePlace(
        *panel_, pageSlot, tabs, showAction, mainWindow,
        {QStringLiteral("Video"), QStringLiteral("Video"), QSize(1000, 340), kRoomyPageWidth});
    connect(panel_, &VideoPanel::sourcesRequested, this, [this] {
        VideoSourcesDialog& dialog = sourcesDialog();
        dialog.showChoice(live_->choice());
        dialog.show();
        dialog.raise();
    });
    live_->setChoice(loadLiveVideoChoice());
}

VideoSourcesDialog& VideoWiring::sourcesDialog() {
    if (sources_ == nullptr) {
        sources_ = new VideoSourcesDialog(&mainWindow_);
        connect(sources_, &VideoSourcesDialog::chosen, this, [this](const LiveVideoChoice& choice) {
            // A source typed in the dialog replaces the command line's.
            runSources_ = {};
            keep(choice);
        });
        connect(sources_, &VideoSourcesDialog::calibrationRequested, this,
                &VideoWiring::openCalibration);
    }
    return *sources_;
}

void VideoWiring::overrideSources(const std::array<std::optional<QString>, 2>& sources) {
    runSources_ = sources;
    LiveVideoChoice choice = live_->choice();
    for (std::size_t i = 0; i < choice.sources.size(); ++i) {
        if (sources[i]) {
            choice.sources[i] = *sources[i];
        }
    }
    live_->setChoice(choice);
}

void VideoWiring::keep(const LiveVideoChoice& choice) {
    LiveVideoChoice kept = choice;
    const LiveVideoChoice before = loadLiveVideoChoice();
    for (std::size_t i = 0; i < kept.sources.size(); ++i) {
        if (runSources_[i]) {
            kept.sources[i] = before.sources[i];
        }
    }
    saveLiveVideoChoice(kept);
    live_->setChoice(choice);
}

void VideoWiring::openCalibration(int camera) {
    if (calibration_ != nullptr) {
        calibration_->close();
        calibration_->deleteLater();
    }
    calibration_ = new CalibrationDialog(
        session_, {&live_->aim(0), &live_->aim(1)}, camera,
        live_->choice().lenses.at(static_cast<std::size_t>(camera)), &mainWindow_);
    calibration_->setAttribute(Qt::WA_DeleteOnClose);
    connect(calibration_, &CalibrationDialog::calibrated, this,
            [this](int which, const FieldOfView& lens) {
                LiveVideoChoice choice = live_->choice();
                choice.lenses.at(static_cast<std::size_t>(which)) = lens;
                keep(choice);
                if (sources_ != nullptr) {
                    sources_->showChoice(choice);
                }
            });
    place_->show();
    calibration_->show();
    calibration_->raise();
}

}  // namespace halvex
