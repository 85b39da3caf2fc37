#include "sim/video/video_server.h"

// GLib's headers name struct members "signals", which Qt's keyword macro
// would replace; nothing below uses the keyword.
#undef signals
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>
#include <gst/rtsp-server/rtsp-server.h>
#include <gst/video/video-event.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <mutex>
#include <string_view>

#include "sim/video/frame_counter.h"

namespace halvex::sim::video {

namespace {

// Each output's pipeline. The source keeps at most two frames and drops the
// older when the encoder falls behind, so a slow client never delays the
// picture. The encoder makes no B-frames (openh264 has none), a key frame
// every second and spends little effort per frame.
constexpr const char* kPipeline =
    "( appsrc name=source is-live=true format=time do-timestamp=true max-bytes=0 "
    "max-buffers=2 leaky-type=downstream "
    "! videoconvert ! video/x-raw,format=I420 "
    "! openh264enc name=encoder complexity=low usage-type=camera rate-control=bitrate "
    "enable-frame-skip=false scene-change-detection=false "
    "! h264parse ! rtph264pay config-interval=-1 pt=96 name=pay0 )";

// Bits a second for a format: a tenth of a bit a pixel, ample for the
// drawn scene.
guint bitrateFor(const VideoFormat& format) {
    const double bits = format.width * static_cast<double>(format.height) * format.rate / 10.0;
    return static_cast<guint>(std::clamp(bits, 200000.0, 20000000.0));
}

void setCaps(GstElement* source, const VideoFormat& format) {
    // Square pixels, as GStreamer takes them to be when not told.
    GstCaps* caps = gst_caps_new_simple(
        "video/x-raw", "format", G_TYPE_STRING, "RGB", "width", G_TYPE_INT, format.width, "height",
        G_TYPE_INT, format.height, "framerate", GST_TYPE_FRACTION, format.rate, 1, nullptr);
    gst_app_src_set_caps(GST_APP_SRC(source), caps);
    gst_caps_unref(caps);
}

GstRTSPFilterResult removeClient(GstRTSPServer*, GstRTSPClient*, gpointer) {
    return GST_RTSP_FILTER_REMOVE;
}

}  // namespace

// One output as both threads see it. The RTSP side fills in the source when
// a client's media is made and clears it when the media goes; the Qt side
// reads it each frame. Everything but the picture is under the mutex.
struct OutputFeed {
    explicit OutputFeed(int output) : output(output) {}

    const int output;
    std::mutex mutex;
    GstElement* source = nullptr;   // with a reference, while a media exists
    GstElement* encoder = nullptr;  // likewise
    GstRTSPMedia* media = nullptr;  // likewise
    VideoFormat caps;               // what the source was last told
    VideoFormat format;             // what a new media starts with
    bool restarted = false;         // a new media: the count starts again
    // A client has joined: the next frame is a key frame, so that its
    // picture starts at once rather than at the next second.
    bool keyFrameWanted = false;
    // Tells the server's thread that the feed changed; called under the
    // mutex, and cleared there when the server goes, so it never outlives it.
    std::function<void()> wake;
    bool closed = false;

    // The Qt thread's own.
    Picture picture;
    std::uint32_t frame = 0;

    // Forgets the media; under the mutex.
    void release() {
        gst_clear_object(&source);
        gst_clear_object(&encoder);
        g_clear_object(&media);
    }
};

struct VideoServer::Glib {
    GMainContext* context = nullptr;
    GMainLoop* loop = nullptr;
    GstRTSPServer* server = nullptr;
    GSource* listening = nullptr;

    ~Glib() {
        g_clear_pointer(&listening, g_source_unref);
        g_clear_object(&server);
        g_clear_pointer(&loop, g_main_loop_unref);
        g_clear_pointer(&context, g_main_context_unref);
    }
};

namespace {

// Signal data: a reference to the feed that GLib drops with the handler, so
// a late signal never finds the feed gone.
gpointer holdFeed(const std::shared_ptr<OutputFeed>& feed) {
    return new std::shared_ptr<OutputFeed>(feed);
}

void dropFeed(gpointer data, GClosure*) {
    delete static_cast<std::shared_ptr<OutputFeed>*>(data);
}

void onMediaUnprepared(GstRTSPMedia* media, gpointer data) {
    OutputFeed& feed = **static_cast<std::shared_ptr<OutputFeed>*>(data);
    const std::lock_guard lock(feed.mutex);
    if (feed.media == media) {
        feed.release();
        if (feed.wake) {
            feed.wake();
        }
    }
}

void onMediaConfigure(GstRTSPMediaFactory*, GstRTSPMedia* media, gpointer data) {
    const auto& feed = *static_cast<std::shared_ptr<OutputFeed>*>(data);
    GstElement* bin = gst_rtsp_media_get_element(media);
    GstElement* source = gst_bin_get_by_name_recurse_up(GST_BIN(bin), "source");
    GstElement* encoder = gst_bin_get_by_name_recurse_up(GST_BIN(bin), "encoder");
    gst_object_unref(bin);
    const std::lock_guard lock(feed->mutex);
    if (source != nullptr && encoder != nullptr && !feed->closed) {
        setCaps(source, feed->format);
        g_object_set(encoder, "gop-size", static_cast<guint>(feed->format.rate), "bitrate",
                     bitrateFor(feed->format), nullptr);
        feed->release();
        feed->source = static_cast<GstElement*>(gst_object_ref(source));
        feed->encoder = static_cast<GstElement*>(gst_object_ref(encoder));
        feed->media = static_cast<GstRTSPMedia*>(g_object_ref(media));
        feed->caps = feed->format;
        feed->restarted = true;
        g_signal_connect_data(media, "unprepared", G_CALLBACK(onMediaUnprepared), holdFeed(feed),
                              dropFeed, GConnectFlags{});
        if (feed->wake) {
            feed->wake();
        }
    }
    gst_clear_object(&source);
    gst_clear_object(&encoder);
}

using Feeds = std::array<std::shared_ptr<OutputFeed>, kOutputs>;

// After a client's PLAY: its output owes it a key frame. The path names the
// output: /out1, or /out1/ and below.
void onPlay(GstRTSPClient*, GstRTSPContext* context, gpointer data) {
    const Feeds& feeds = *static_cast<Feeds*>(data);
    const std::string_view path =
        context->uri != nullptr && context->uri->abspath != nullptr ? context->uri->abspath : "";
    for (const auto& feed : feeds) {
        const std::string name = outputPath(feed->output);
        if (path.starts_with(name)) {
            const std::lock_guard lock(feed->mutex);
            feed->keyFrameWanted = true;
        }
    }
}

void dropFeeds(gpointer data, GClosure*) {
    delete static_cast<Feeds*>(data);
}

void onClientConnected(GstRTSPServer*, GstRTSPClient* client, gpointer data) {
    g_signal_connect_data(client, "play-request", G_CALLBACK(onPlay),
                          new Feeds(*static_cast<Feeds*>(data)), dropFeeds, GConnectFlags{});
}

// Asks the encoder for a key frame as soon as it can.
void requestKeyFrame(GstElement* encoder) {
    GstPad* pad = gst_element_get_static_pad(encoder, "src");
    if (pad != nullptr) {
        gst_pad_send_event(
            pad, gst_video_event_new_upstream_force_key_unit(GST_CLOCK_TIME_NONE, TRUE, 0));
        gst_object_unref(pad);
    }
}

}  // namespace

std::string outputPath(int output) {
    return "/out" + std::to_string(output + 1);
}

void initialiseGstreamer() {
    static std::once_flag once;
    std::call_once(once, [] { gst_init(nullptr, nullptr); });
}

VideoServer::VideoServer(VideoServerOptions options, SnapshotSource snapshot, QObject* parent)
    : QObject(parent), options_(std::move(options)), snapshot_(std::move(snapshot)) {
    for (int output = 0; output < kOutputs; ++output) {
        auto feed = std::make_shared<OutputFeed>(output);
        feed->wake = [this] {
            QMetaObject::invokeMethod(this, &VideoServer::feedsChanged, Qt::QueuedConnection);
        };
        feeds_[static_cast<std::size_t>(output)] = std::move(feed);
    }
    frameTimer_.setSingleShot(true);
    frameTimer_.setTimerType(Qt::PreciseTimer);
    connect(&frameTimer_, &QTimer::timeout, this, &VideoServer::drawFrames);
    clock_.start();
}

VideoServer::~VideoServer() {
    frameTimer_.stop();
    for (const auto& feed : feeds_) {
        const std::lock_guard lock(feed->mutex);
        feed->closed = true;
        feed->wake = nullptr;
        feed->release();
    }
    if (loop_.joinable()) {
        // In the loop's own thread: every client let go, no more listening,
        // and the loop ends.
        g_main_context_invoke(
            glib_->context,
            [](gpointer data) -> gboolean {
                auto* glib = static_cast<Glib*>(data);
                gst_rtsp_server_client_filter(glib->server, removeClient, nullptr);
                g_source_destroy(glib->listening);
                g_main_loop_quit(glib->loop);
                return G_SOURCE_REMOVE;
            },
            glib_.get());
        loop_.join();
    }
    glib_.reset();
}

bool VideoServer::start(std::string* error) {
    initialiseGstreamer();
    const VideoFormat format = formatFor(snapshot_());
    for (const auto& feed : feeds_) {
        const std::lock_guard lock(feed->mutex);
        feed->format = format;
    }
    glib_ = std::make_unique<Glib>();
    glib_->context = g_main_context_new();
    glib_->loop = g_main_loop_new(glib_->context, FALSE);
    glib_->server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(glib_->server, options_.address.c_str());
    gst_rtsp_server_set_service(glib_->server, std::to_string(options_.port).c_str());

    GstRTSPMountPoints* mounts = gst_rtsp_server_get_mount_points(glib_->server);
    for (const auto& feed : feeds_) {
        GstRTSPMediaFactory* factory = gst_rtsp_media_factory_new();
        gst_rtsp_media_factory_set_launch(factory, kPipeline);
        // One pipeline an output, however many clients watch it.
        gst_rtsp_media_factory_set_shared(factory, TRUE);
        g_signal_connect_data(factory, "media-configure", G_CALLBACK(onMediaConfigure),
                              holdFeed(feed), dropFeed, GConnectFlags{});
        gst_rtsp_mount_points_add_factory(mounts, outputPath(feed->output).c_str(), factory);
    }
    g_object_unref(mounts);
    g_signal_connect_data(glib_->server, "client-connected", G_CALLBACK(onClientConnected),
                          new Feeds(feeds_), dropFeeds, GConnectFlags{});

    GError* failure = nullptr;
    glib_->listening = gst_rtsp_server_create_source(glib_->server, nullptr, &failure);
    if (glib_->listening == nullptr) {
        if (error != nullptr) {
            *error = "cannot serve video on " + options_.address + " port " +
                     std::to_string(options_.port) + ": " +
                     (failure != nullptr ? failure->message : "unknown error");
        }
        g_clear_error(&failure);
        glib_.reset();
        return false;
    }
    g_source_attach(glib_->listening, glib_->context);
    port_ = gst_rtsp_server_get_bound_port(glib_->server);
    loop_ = std::thread([glib = glib_.get()] {
        g_main_context_push_thread_default(glib->context);
        g_main_loop_run(glib->loop);
        g_main_context_pop_thread_default(glib->context);
    });
    return true;
}

std::string VideoServer::url(int output) const {
    return "rtsp://" + options_.address + ":" + std::to_string(port_) + outputPath(output);
}

VideoFormat VideoServer::formatFor(const VideoSnapshot& snapshot) const {
    VideoFormat format = standardFormat(snapshot.videoMode);
    if (options_.width > 0 && options_.height > 0) {
        format.width = options_.width;
        format.height = options_.height;
    }
    if (options_.rate > 0) {
        format.rate = options_.rate;
    }
    return format;
}

int VideoServer::outputsStreaming() const {
    int streaming = 0;
    for (const auto& feed : feeds_) {
        const std::lock_guard lock(feed->mutex);
        streaming += feed->source != nullptr ? 1 : 0;
    }
    return streaming;
}

void VideoServer::feedsChanged() {
    if (outputsStreaming() == 0) {
        frameTimer_.stop();
    } else if (!frameTimer_.isActive()) {
        nextFrameMs_ = static_cast<double>(clock_.elapsed());
        frameTimer_.start(0);
    }
}

void VideoServer::drawFrames() {
    const VideoSnapshot snapshot = snapshot_();
    const VideoFormat format = formatFor(snapshot);
    bool anyStreaming = false;
    for (const auto& feed : feeds_) {
        GstElement* source = nullptr;
        GstElement* keyFrameFrom = nullptr;
        bool newCaps = false;
        {
            const std::lock_guard lock(feed->mutex);
            feed->format = format;
            if (feed->source == nullptr) {
                continue;
            }
            anyStreaming = true;
            // The source stamps each frame with the pipeline's running time
            // as it takes it; before the pipeline first plays there is no
            // running time yet, and a frame stamped then would hold back
            // every later one. While it does not play nobody sees it anyway.
            if (GST_STATE(feed->source) != GST_STATE_PLAYING) {
                continue;
            }
            source = static_cast<GstElement*>(gst_object_ref(feed->source));
            if (feed->restarted) {
                feed->restarted = false;
                feed->frame = 0;
            }
            newCaps = feed->caps != format;
            feed->caps = format;
            if (feed->keyFrameWanted && feed->encoder != nullptr) {
                keyFrameFrom = static_cast<GstElement*>(gst_object_ref(feed->encoder));
            }
            feed->keyFrameWanted = false;
        }
        if (keyFrameFrom != nullptr) {
            requestKeyFrame(keyFrameFrom);
            gst_object_unref(keyFrameFrom);
        }
        if (newCaps) {
            setCaps(source, format);  // the size or rate changed while streaming
        }
        feed->picture.resize(format.width, format.height);
        const std::uint32_t frame = feed->frame++;
        drawOutput(feed->picture, snapshot, feed->output, frame);

        // GStreamer lays RGB rows out on four-byte boundaries.
        const gsize rowBytes = static_cast<gsize>(feed->picture.stride());
        const gsize stride = (rowBytes + 3) & ~gsize{3};
        GstBuffer* buffer =
            gst_buffer_new_allocate(nullptr, stride * static_cast<gsize>(format.height), nullptr);
        GstMapInfo map;
        if (gst_buffer_map(buffer, &map, GST_MAP_WRITE)) {
            for (int y = 0; y < format.height; ++y) {
                std::memcpy(map.data + stride * static_cast<gsize>(y), feed->picture.row(y),
                            rowBytes);
            }
            gst_buffer_unmap(buffer, &map);
        }
        GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale_int(GST_SECOND, 1, format.rate);
        gst_app_src_push_buffer(GST_APP_SRC(source), buffer);  // takes the buffer
        gst_object_unref(source);
        if (frameDrawn_) {
            frameDrawn_(feed->output, frame & kCounterMask);
        }
    }
    if (anyStreaming) {
        scheduleFrame(format.rate);
    }
}

void VideoServer::scheduleFrame(int rate) {
    const double interval = 1000.0 / std::max(rate, 1);
    const auto now = static_cast<double>(clock_.elapsed());
    nextFrameMs_ += interval;
    if (nextFrameMs_ < now - interval) {
        nextFrameMs_ = now;  // fell behind: start counting again from now
    }
    frameTimer_.start(static_cast<int>(std::max(0.0, std::round(nextFrameMs_ - now))));
}

}  // namespace halvex::sim::video
