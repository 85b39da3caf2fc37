#include "tests/live_video/mjpeg_test_server.h"

#include <QTcpSocket>

#include "live_video/gstreamer.h"

namespace halvex::testing {

namespace {

QByteArray testPicture(int width, int height) {
    ensureGStreamer();
    GstElement* pipeline = gst_parse_launch(
        "videotestsrc num-buffers=1 ! capsfilter name=size ! jpegenc ! appsink name=out", nullptr);
    GstElement* size = gst_bin_get_by_name(GST_BIN(pipeline), "size");
    GstCaps* caps = gst_caps_new_simple("video/x-raw", "width", G_TYPE_INT, width, "height",
                                        G_TYPE_INT, height, nullptr);
    g_object_set(size, "caps", caps, nullptr);
    gst_caps_unref(caps);
    gst_object_unref(size);
    GstElement* out = gst_bin_get_by_name(GST_BIN(pipeline), "out");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    QByteArray jpeg;
    if (GstSample* sample = gst_app_sink_try_pull_sample(GST_APP_SINK(out), 5 * GST_SECOND)) {
        GstMapInfo map;
        GstBuffer* buffer = gst_sample_get_buffer(sample);
        gst_buffer_map(buffer, &map, GST_MAP_READ);
        jpeg =
            QByteArray(reinterpret_cast<const char*>(map.data), static_cast<qsizetype>(map.size));
        gst_buffer_unmap(buffer, &map);
        gst_sample_unref(sample);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(out);
    gst_object_unref(pipeline);
    return jpeg;
}

}  // namespace

MjpegTestServer::MjpegTestServer(int width, int height) : picture_(testPicture(width, height)) {
    server_.listen(QHostAddress::LocalHost);
    connect(&server_, &QTcpServer::newConnection, this, [this] {
        QTcpSocket* client = server_.nextPendingConnection();
        connect(client, &QTcpSocket::readyRead, client, [client] {
            // Whatever was asked: the one stream there is.
            client->readAll();
            client->write(
                "HTTP/1.0 200 OK\r\n"
                "Content-Type: multipart/x-mixed-replace; boundary=frame\r\n\r\n");
        });
        connect(&clock_, &QTimer::timeout, client, [this, client] {
            client->write("--frame\r\nContent-Type: image/jpeg\r\nContent-Length: " +
                          QByteArray::number(picture_.size()) + "\r\n\r\n" + picture_ + "\r\n");
        });
    });
    clock_.start(50);
}

QString MjpegTestServer::url() const {
    return QStringLiteral("http://127.0.0.1:%1/video.mjpg").arg(server_.serverPort());
}

}  // namespace halvex::testing
