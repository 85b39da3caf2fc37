#include <gtest/gtest.h>

#include "live_video/gstreamer.h"
#include "live_video/sample_image.h"

namespace halvex {
namespace {

// A BGRx sample whose rows are `stride` bytes apart, each pixel's blue,
// green and red bytes telling its column, row and 0x5a.
GstSample* paddedSample(int width, int height, int stride) {
    GstBuffer* buffer =
        gst_buffer_new_allocate(nullptr, static_cast<gsize>(stride) * height, nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    std::fill(map.data, map.data + map.size, 0xee);  // the padding
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            guint8* pixel = map.data + y * stride + x * 4;
            pixel[0] = static_cast<guint8>(x);
            pixel[1] = static_cast<guint8>(y);
            pixel[2] = 0x5a;
        }
    }
    gst_buffer_unmap(buffer, &map);
    gsize offsets[GST_VIDEO_MAX_PLANES] = {0};
    gint strides[GST_VIDEO_MAX_PLANES] = {stride};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_BGRx, width,
                                   height, 1, offsets, strides);
    GstCaps* caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "BGRx", "width",
                                        G_TYPE_INT, width, "height", G_TYPE_INT, height, nullptr);
    GstSample* sample = gst_sample_new(buffer, caps, nullptr, nullptr);
    gst_caps_unref(caps);
    gst_buffer_unref(buffer);
    return sample;
}

// 17 pixels of 4 bytes take 68 of the 80 bytes of a row.
TEST(SampleImage, RowsAreReadWithTheSamplesOwnStride) {
    ensureGStreamer();
    GstSample* sample = paddedSample(17, 5, 80);
    const QImage image = imageFromSample(sample);
    gst_sample_unref(sample);
    ASSERT_EQ(image.size(), QSize(17, 5));
    EXPECT_EQ(image.format(), QImage::Format_RGB32);
    for (int y = 0; y < 5; ++y) {
        for (int x = 0; x < 17; ++x) {
            ASSERT_EQ(image.pixel(x, y), qRgb(0x5a, y, x)) << x << "," << y;
        }
    }
}

TEST(SampleImage, APictureOfAnotherFormatGivesNoImage) {
    ensureGStreamer();
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, 4 * 4 * 3 / 2, nullptr);
    GstCaps* caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "I420", "width",
                                        G_TYPE_INT, 4, "height", G_TYPE_INT, 4, nullptr);
    GstSample* sample = gst_sample_new(buffer, caps, nullptr, nullptr);
    EXPECT_TRUE(imageFromSample(sample).isNull());
    gst_sample_unref(sample);
    gst_caps_unref(caps);
    gst_buffer_unref(buffer);
}

}  // namespace
}  // namespace halvex
