#include "live_video/sample_image.h"

#include "live_video/gstreamer.h"

namespace halvex {

QImage imageFromSample(GstSample* sample) {
    GstCaps* caps = gst_sample_get_caps(sample);
    GstBuffer* buffer = gst_sample_get_buffer(sample);
    GstVideoInfo info;
    if (caps == nullptr || buffer == nullptr || !gst_video_info_from_caps(&info, caps) ||
        GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_BGRx) {
        return {};
    }
    // Mapped as a video frame, the stride and offset come from the buffer's
    // video meta when the decoder padded its rows.
    GstVideoFrame frame;
    if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {
        return {};
    }
    const QImage view(static_cast<const uchar*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)),
                      GST_VIDEO_FRAME_WIDTH(&frame), GST_VIDEO_FRAME_HEIGHT(&frame),
                      GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0), QImage::Format_RGB32);
    QImage copy = view.copy();
    gst_video_frame_unmap(&frame);
    return copy;
}

}  // namespace halvex
