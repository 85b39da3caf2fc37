#include "tests/live_video/rtsp_test_server.h"

#include <QByteArray>

// GLib names a struct member "signals", which is a keyword in Qt.
#pragma push_macro("signals")
#undef signals
#include <gst/rtsp-server/rtsp-server.h>
#pragma pop_macro("signals")

namespace halvex::testing {

namespace {

GstRTSPFilterResult dropClient(GstRTSPServer*, GstRTSPClient*, gpointer) {
    return GST_RTSP_FILTER_REMOVE;
}

GstRTSPFilterResult dropSession(GstRTSPSessionPool*, GstRTSPSession*, gpointer) {
    return GST_RTSP_FILTER_REMOVE;
}

}  // namespace

RtspTestServer::RtspTestServer(int width, int height, int port) {
    context_ = g_main_context_new();
    loop_ = g_main_loop_new(context_, FALSE);
    server_ = gst_rtsp_server_new();
    gst_rtsp_server_set_address(server_, "127.0.0.1");
    gst_rtsp_server_set_service(server_, QByteArray::number(port).constData());

    // A keyframe every half second, so that a recording does not wait long
    // for its first one.
    const QByteArray launch =
        QByteArrayLiteral("( videotestsrc is-live=true ! video/x-raw,width=") +
        QByteArray::number(width) + ",height=" + QByteArray::number(height) +
        ",framerate=30/1 ! openh264enc gop-size=15 ! h264parse ! rtph264pay name=pay0 pt=96 )";
    GstRTSPMediaFactory* factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, launch.constData());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(server_);
    gst_rtsp_mount_points_add_factory(mounts, "/out1", factory);
    g_object_unref(mounts);

    sourceId_ = gst_rtsp_server_attach(server_, context_);
    if (sourceId_ == 0) {
        return;
    }
    port_ = gst_rtsp_server_get_bound_port(server_);
    thread_ = std::thread([loop = loop_, context = context_] {
        g_main_context_push_thread_default(context);
        g_main_loop_run(loop);
        g_main_context_pop_thread_default(context);
    });
}

RtspTestServer::~RtspTestServer() {
    if (thread_.joinable()) {
        // Every client and its stream goes, and the port is closed, on the
        // server's own thread; then the loop ends.
        struct Stop {
            GstRTSPServer* server;
            unsigned sourceId;
            GMainContext* context;
            GMainLoop* loop;
        };
        Stop stop{server_, sourceId_, context_, loop_};
        g_main_context_invoke(
            context_,
            [](gpointer data) -> gboolean {
                auto* stop = static_cast<Stop*>(data);
                gst_rtsp_server_client_filter(stop->server, dropClient, nullptr);
                GstRTSPSessionPool* pool = gst_rtsp_server_get_session_pool(stop->server);
                gst_rtsp_session_pool_filter(pool, dropSession, nullptr);
                g_object_unref(pool);
                if (GSource* source =
                        g_main_context_find_source_by_id(stop->context, stop->sourceId)) {
                    g_source_destroy(source);
                }
                g_main_loop_quit(stop->loop);
                return G_SOURCE_REMOVE;
            },
            &stop);
        thread_.join();
    }
    g_object_unref(server_);
    g_main_loop_unref(loop_);
    g_main_context_unref(context_);
}

QString RtspTestServer::url() const {
    return QStringLiteral("rtsp://127.0.0.1:%1/out1").arg(port_);
}

}  // namespace halvex::testing
