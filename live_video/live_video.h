#pragma once

#include <QObject>
#include <QStandardPaths>
#include <QTimer>
#include <array>
#include <functional>

#include "live_video/live_video_choice.h"
#include "live_video/video_pipeline.h"

namespace halvex {

class Session;
class VideoAim;
class VideoPanel;

// The console's live video: a pipeline for each of the unit's outputs,
// shown on the panel's panes and aimed by them, with snapshots and
// recordings. The pipelines run while the panel is shown, for a minute
// after it goes out of sight (a preset stored on another page meanwhile
// still gets its picture, and the picture is back at once), and while a
// recording goes on; a console whose video stays out of sight decodes
// nothing.
class LiveVideo : public QObject {
    Q_OBJECT
  public:
    static constexpr int kOutputs = 2;
    static constexpr int kOutOfSightMs = 60000;

    // `tell` shows a line in the status bar.
    LiveVideo(Session& session, VideoPanel& panel, std::function<void(const QString&)> tell,
              QObject* parent = nullptr);
    ~LiveVideo() override;

    // Plays what the choice names; a source that is the same keeps playing.
    void setChoice(const LiveVideoChoice& choice);
    const LiveVideoChoice& choice() const { return choice_; }
    VideoPipeline& pipeline(int output) { return *pipelines_.at(static_cast<std::size_t>(output)); }
    VideoAim& aim(int output) { return *aims_.at(static_cast<std::size_t>(output)); }

    // Where snapshots and recordings are saved: the user's pictures and
    // videos folders, or one folder for both.
    void setSaveFolder(const QString& folder) { saveFolder_ = folder; }
    // How long the pipelines run on once the panel is out of sight.
    void setOutOfSightMs(int ms) { outOfSight_.setInterval(ms); }
    // Saves the output's newest picture as PNG; the path, or empty.
    QString saveSnapshot(int output);
    void setRecording(int output, bool on);

  signals:
    // A pipeline's error or warning, or a file saved, for the Line Log.
    void eventOccurred(const QString& text);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void wire(int output);
    void play(int output);
    bool wanted(int output) const;
    // A new file's path for the output, in the save folder or else the
    // user's folder `where`, named by the time and never one that exists.
    QString newFile(int output, QStandardPaths::StandardLocation where,
                    const char* extension) const;
    QString outputName(int output) const;

    Session& session_;
    VideoPanel& panel_;
    std::function<void(const QString&)> tell_;
    LiveVideoChoice choice_;
    std::array<VideoPipeline*, kOutputs> pipelines_{};
    std::array<VideoAim*, kOutputs> aims_{};
    QString saveFolder_;
    QTimer outOfSight_;
};

}  // namespace halvex
