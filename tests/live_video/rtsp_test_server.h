#pragma once

#include <QString>
#include <thread>

typedef struct _GMainContext GMainContext;
typedef struct _GMainLoop GMainLoop;
typedef struct _GstRTSPServer GstRTSPServer;

namespace halvex::testing {

// An RTSP server in the test's own process, with its own GLib main loop on a
// thread of its own: a live H.264 test picture of the given size at
// rtsp://127.0.0.1:PORT/out1. Port 0 takes a free one; a server started
// again on the port of one that stopped is what a unit that rebooted looks
// like to the console.
class RtspTestServer {
  public:
    RtspTestServer(int width, int height, int port = 0);
    ~RtspTestServer();
    RtspTestServer(const RtspTestServer&) = delete;
    RtspTestServer& operator=(const RtspTestServer&) = delete;

    int port() const { return port_; }  // 0 when it could not listen
    QString url() const;

  private:
    GMainContext* context_ = nullptr;
    GMainLoop* loop_ = nullptr;
    GstRTSPServer* server_ = nullptr;
    unsigned sourceId_ = 0;
    int port_ = 0;
    std::thread thread_;
};

}  // namespace halvex::testing
