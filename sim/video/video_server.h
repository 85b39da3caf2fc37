#pragma once

// The unit's two video outputs served over RTSP (gst-rtsp-server) as
// rtsp://ADDRESS:PORT/out1 and /out2, H.264 for low delay.
//
// Threads: the RTSP server runs on a GLib main loop in a thread of its own,
// so it works whatever event dispatcher Qt uses. Frames are drawn in the Qt
// thread that owns the server, on a timer at the frame rate, from a snapshot
// of the unit taken there: nothing else reads the model. They are handed to
// each output's pipeline through its appsrc, which is safe from any thread.
// Only outputs that have a client are drawn; with none the timer stops and
// the program is idle.

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <array>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "sim/video/output_picture.h"

namespace halvex::sim::video {

struct VideoServerOptions {
    int port = 0;  // 0: a free one
    std::string address = "127.0.0.1";
    // Each overrides what the video mode's standard says when not 0.
    int width = 0;
    int height = 0;
    int rate = 0;
};

struct OutputFeed;

// Where an output is served: /out1 for output 0, /out2 for output 1.
std::string outputPath(int output);

// Sets GStreamer up, the first time it is called; every later call does
// nothing.
void initialiseGstreamer();

class VideoServer : public QObject {
    Q_OBJECT

  public:
    using SnapshotSource = std::function<VideoSnapshot()>;

    VideoServer(VideoServerOptions options, SnapshotSource snapshot, QObject* parent = nullptr);
    // Closes every client's connection and stops the server's thread.
    ~VideoServer() override;

    // Listens; false, with the reason, when it cannot.
    bool start(std::string* error = nullptr);
    int port() const { return port_; }
    // rtsp://ADDRESS:PORT and the output's path.
    std::string url(int output) const;
    // The format the outputs have for this state of the unit.
    VideoFormat formatFor(const VideoSnapshot& snapshot) const;
    // How many outputs have a client, and so are drawn.
    int outputsStreaming() const;
    // Called in the server's thread as each frame is handed to its output's
    // encoder, with the number its counter shows: a benchmark's clock.
    void onFrameDrawn(std::function<void(int output, std::uint32_t frame)> drawn) {
        frameDrawn_ = std::move(drawn);
    }

  private:
    struct Glib;

    void feedsChanged();
    void drawFrames();
    void scheduleFrame(int rate);

    VideoServerOptions options_;
    SnapshotSource snapshot_;
    std::array<std::shared_ptr<OutputFeed>, kOutputs> feeds_;
    std::unique_ptr<Glib> glib_;
    std::thread loop_;
    int port_ = 0;
    QTimer frameTimer_;
    QElapsedTimer clock_;
    double nextFrameMs_ = 0.0;
    std::function<void(int output, std::uint32_t frame)> frameDrawn_;
};

}  // namespace halvex::sim::video
