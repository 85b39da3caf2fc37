#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <QTimer>

namespace halvex::testing {

// An MJPEG camera as many IP cameras are: one HTTP answer, then a JPEG of
// the given size every 50 ms, each a part of a multipart body. It runs on
// the test's event loop.
class MjpegTestServer : public QObject {
  public:
    MjpegTestServer(int width, int height);
    QString url() const;

  private:
    QTcpServer server_;
    QTimer clock_;
    QByteArray picture_;
};

}  // namespace halvex::testing
