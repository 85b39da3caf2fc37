#include "tests/live_video/recorded_video.h"

#include <QFile>

#include "live_video/gstreamer.h"

namespace halvex::testing {

RecordedVideo readRecording(const QString& path) {
    ensureGStreamer();
    RecordedVideo recorded;
    GstElement* pipeline = gst_parse_launch(
        "filesrc name=file ! matroskademux ! tee name=split "
        "split. ! queue ! appsink name=encoded sync=false "
        "split. ! queue ! decodebin ! videoconvert ! video/x-raw,format=BGRx ! "
        "appsink name=decoded sync=false",
        nullptr);
    GstElement* file = gst_bin_get_by_name(GST_BIN(pipeline), "file");
    g_object_set(file, "location", QFile::encodeName(path).constData(), nullptr);
    gst_object_unref(file);
    GstElement* encoded = gst_bin_get_by_name(GST_BIN(pipeline), "encoded");
    GstElement* decoded = gst_bin_get_by_name(GST_BIN(pipeline), "decoded");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);

    constexpr GstClockTime kWait = 5 * GST_SECOND;
    if (GstSample* sample = gst_app_sink_try_pull_sample(GST_APP_SINK(encoded), kWait)) {
        recorded.encoding = QString::fromUtf8(
            gst_structure_get_name(gst_caps_get_structure(gst_sample_get_caps(sample), 0)));
        recorded.startsWithKeyframe =
            !GST_BUFFER_FLAG_IS_SET(gst_sample_get_buffer(sample), GST_BUFFER_FLAG_DELTA_UNIT);
        gst_sample_unref(sample);
        gint64 duration = -1;
        if (gst_element_query_duration(pipeline, GST_FORMAT_TIME, &duration) && duration >= 0) {
            recorded.durationMs = static_cast<qint64>(duration / GST_MSECOND);
        }
    }
    // The encoded side is drained too, or the demuxer would wait for it.
    g_object_set(encoded, "drop", TRUE, "max-buffers", 1u, nullptr);
    while (GstSample* sample = gst_app_sink_try_pull_sample(GST_APP_SINK(decoded), kWait)) {
        GstVideoInfo info;
        gst_video_info_from_caps(&info, gst_sample_get_caps(sample));
        recorded.decodedSize = QSize(GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info));
        gst_sample_unref(sample);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(encoded);
    gst_object_unref(decoded);
    gst_object_unref(pipeline);
    return recorded;
}

}  // namespace halvex::testing
