#pragma once

#include <QObject>
#include <QPointer>
#include <array>
#include <functional>
#include <optional>

#include "live_video/calibration_dialog.h"
#include "live_video/live_video_choice.h"
#include "live_video/video_sources_dialog.h"

class QAction;
class QGroupBox;
class QTabWidget;
class QWidget;

namespace halvex {

class LiveVideo;
class PagePlace;
class Session;
class VideoPanel;

// The live video in the main window: the panel on the Pan/Tilt page or in
// a window of its own, the sources dialog and the lens calibrations, and
// the choice kept in the user's settings. Sources given on the command line
// are shown for the run and not kept.
class VideoWiring : public QObject {
    Q_OBJECT
  public:
    // From a 1920-pixel screen the video is a column of the Pan/Tilt page.
    static constexpr int kRoomyPageWidth = 1880;

    VideoWiring(Session& session, QGroupBox& pageSlot, QTabWidget& tabs, QAction& showAction,
                QWidget& mainWindow, std::function<void(const QString&)> tell);

    void overrideSources(const std::array<std::optional<QString>, 2>& sources);

    VideoPanel& panel() { return *panel_; }
    LiveVideo& liveVideo() { return *live_; }
    PagePlace& place() { return *place_; }
    VideoSourcesDialog& sourcesDialog();
    CalibrationDialog* calibrationDialog() { return calibration_; }

  signals:
    void eventOccurred(const QString& text);

  private:
    void openCalibration(int camera);
    // Keeps what the operator chose, but the run's own sources.
    void keep(const LiveVideoChoice& choice);

    Session& session_;
    QWidget& mainWindow_;
    VideoPanel* panel_;
    LiveVideo* live_;
    PagePlace* place_;
    QPointer<VideoSourcesDialog> sources_;
    QPointer<CalibrationDialog> calibration_;
    std::array<std::optional<QString>, 2> runSources_;
};

}  // namespace halvex
