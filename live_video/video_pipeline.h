#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <QTimer>
#include <memory>

#include "live_video/video_source.h"

namespace halvex {

class FrameMailbox;
class StreamRun;
struct StreamEvent;

// The picture of one video source on the user-interface thread: the newest
// frame as it arrives, what to show when there is none, and a stream that
// comes back by itself when it drops.
class VideoPipeline : public QObject {
    Q_OBJECT
  public:
    enum class State {
        Off,         // no source
        Connecting,  // the first picture of a new source is awaited
        Playing,
        Lost,    // the stream dropped; it is tried again after a pause
        Failed,  // the source cannot be played (a missing device is looked for again)
    };

    // How long the pipeline waits for what. The defaults suit a console;
    // tests shorten them.
    struct Timing {
        int stallMs = 3000;         // no frame for this long while playing: lost
        int connectMs = 10000;      // no first frame for this long: lost
        int firstRetryMs = 1000;    // the pause before the first retry, doubled each time...
        int longestRetryMs = 5000;  // ...up to this
        int deviceRetryMs = 3000;   // how often a missing device is looked for
    };

    explicit VideoPipeline(QObject* parent = nullptr);
    ~VideoPipeline() override;  // never blocks the UI thread

    void play(const VideoSource& source);  // (re)starts; Kind::None -> Off
    void stop();
    State state() const { return state_; }
    QString message() const { return message_; }     // what the pane shows when there is no picture
    QImage lastFrame() const { return lastFrame_; }  // the newest frame shown (null when none)
    const VideoSource& source() const { return source_; }

    // Saves the stream as it arrives, without decoding it again, to a
    // Matroska file. False when it cannot, and eventOccurred says why. A
    // stream that is lost or stopped ends the recording; its file is then
    // completed in the background.
    bool startRecording(const QString& path);
    // The file is complete when eventOccurred says "recording saved: PATH".
    void stopRecording();
    bool recording() const;

    void setTiming(const Timing& timing) { timing_ = timing; }

  signals:
    void frameArrived(const QImage& frame);  // on the UI thread, the newest only
    void stateChanged(VideoPipeline::State state, const QString& message);
    void eventOccurred(const QString& text);  // errors and warnings, for the Line Log's event list

  private:
    void attempt();
    void dropStream();
    void lose(const QString& reason);
    void handle(const StreamEvent& event);
    void showFrame();
    void setState(State state, const QString& message);

    VideoSource source_;  // as checked by parseVideoSource
    State state_ = State::Off;
    QString message_;
    QImage lastFrame_;
    Timing timing_;
    int retries_ = 0;  // since the last frame

    std::shared_ptr<FrameMailbox> mailbox_;
    std::shared_ptr<StreamRun> run_;
    QTimer watchdog_;  // no frame in time: the stream is lost
    QTimer retry_;
};

// The pause before retry number `retries` (0 for the first): doubling from
// firstMs up to longestMs.
int retryDelayMs(int retries, int firstMs, int longestMs);

}  // namespace halvex
