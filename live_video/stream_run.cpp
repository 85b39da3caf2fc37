#include "live_video/stream_run.h"

#include <QFile>
#include <QGlobalStatic>
#include <QThreadPool>
#include <chrono>
#include <condition_variable>

#include "live_video/gstreamer.h"
#include "live_video/sample_image.h"
#include "live_video/stream_description.h"

namespace halvex {

namespace {

// Where pipelines start and end. Its own pool: a teardown that waits for a
// dead server must not hold up anything else of the console's.
Q_GLOBAL_STATIC(QThreadPool, streamWorkers)

// The start of the recording branches' element names.
const QLatin1String kRecordingPrefix("record");

// How long an ending stream waits for its recording's file to be completed.
constexpr auto kCompleteRecordingTimeout = std::chrono::seconds(2);

QString elementName(GstObject* object) {
    gchar* name = gst_object_get_name(object);
    QString text = QString::fromUtf8(name);
    g_free(name);
    return text;
}

void runOnWorker(std::function<void()> work) {
    streamWorkers()->setMaxThreadCount(8);
    streamWorkers()->start(std::move(work));
}

}  // namespace

// The recording side of the tee while it is attached.
struct RecordingBranch {
    QString path;
    QString namePrefix;  // of its elements: "record3-" for the third branch
    GstElement* queue = nullptr;
    GstElement* parser = nullptr;  // none when Matroska takes the stream as it is
    GstElement* mux = nullptr;
    GstElement* sink = nullptr;
    GstPad* teePad = nullptr;
    std::weak_ptr<StreamRun> run;

    RecordingBranch() = default;
    RecordingBranch(const RecordingBranch&) = delete;
    RecordingBranch& operator=(const RecordingBranch&) = delete;
    ~RecordingBranch() { gst_clear_object(&teePad); }

    // From the stream's thread: the file begins with a whole picture; and
    // once the branch failed, nothing more goes in.
    bool sawKeyframe = false;
    std::atomic<bool> closed{false};
    bool retiring = false;  // the whole stream ends: completing is waited for

    std::mutex mutex;
    std::condition_variable completedChanged;
    bool completed = false;

    // Marks the file complete; true when the whole stream is ending and
    // waits for it.
    bool complete() {
        const std::lock_guard lock(mutex);
        completed = true;
        return retiring;
    }

    std::vector<GstElement*> elements() const {
        std::vector<GstElement*> all{queue};
        if (parser != nullptr) {
            all.push_back(parser);
        }
        all.push_back(mux);
        all.push_back(sink);
        return all;
    }
};

using BranchRef = std::shared_ptr<RecordingBranch>;

struct StreamCallbacks {
    static void parsedPad(GstElement*, GstPad* pad, gpointer self) {
        static_cast<StreamRun*>(self)->linkParsedPad(pad);
    }

    static GstFlowReturn newSample(GstAppSink* sink, gpointer self) {
        if (GstSample* sample = gst_app_sink_pull_sample(sink)) {
            static_cast<StreamRun*>(self)->offerSample(sample);
            gst_sample_unref(sample);
        }
        return GST_FLOW_OK;
    }

    static GstBusSyncReply busMessage(GstBus*, GstMessage* message, gpointer self) {
        static_cast<StreamRun*>(self)->handleMessage(message);
        return GST_BUS_DROP;
    }

    // On the tee's recording pad: the file starts at a keyframe, and a
    // branch that failed or is leaving takes nothing more.
    static GstPadProbeReturn gateRecording(GstPad*, GstPadProbeInfo* info, gpointer data) {
        RecordingBranch& branch = **static_cast<BranchRef*>(data);
        if (branch.closed) {
            return GST_PAD_PROBE_DROP;
        }
        GstBuffer* buffer = GST_PAD_PROBE_INFO_BUFFER(info);
        if (!branch.sawKeyframe) {
            if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT)) {
                return GST_PAD_PROBE_DROP;
            }
            branch.sawKeyframe = true;
        }
        return GST_PAD_PROBE_OK;
    }

    // The end of the stream reached the file: it is complete.
    static GstPadProbeReturn recordingComplete(GstPad*, GstPadProbeInfo* info, gpointer data) {
        if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) != GST_EVENT_EOS) {
            return GST_PAD_PROBE_OK;
        }
        const BranchRef& branch = *static_cast<BranchRef*>(data);
        if (std::shared_ptr<StreamRun> run = branch->run.lock()) {
            run->onBranchComplete(branch);
            // This thread must not be the one that ends the stream.
            runOnWorker([run = std::move(run)]() mutable { run.reset(); });
        }
        return GST_PAD_PROBE_OK;
    }

    static void releaseBranch(gpointer data) { delete static_cast<BranchRef*>(data); }
};

std::shared_ptr<StreamRun> StreamRun::create(const VideoSource& source,
                                             std::shared_ptr<FrameMailbox> mailbox,
                                             quint64 generation, QString* why) {
    ensureGStreamer();
    const std::optional<StreamDescription> description = streamDescription(source.kind);
    if (!description) {
        *why = QStringLiteral("no video source");
        return nullptr;
    }
    GError* error = nullptr;
    GstElement* pipeline = gst_parse_launch(description->launch, &error);
    if (error != nullptr) {
        // A missing plugin: the description itself is ours and known to parse.
        *why = QStringLiteral("cannot play %1: %2")
                   .arg(source.address, QString::fromUtf8(error->message));
        g_error_free(error);
        gst_clear_object(&pipeline);
        return nullptr;
    }
    GstElement* src = gst_bin_get_by_name(GST_BIN(pipeline), "src");
    g_object_set(src, description->addressProperty, sourceProperty(source).toUtf8().constData(),
                 nullptr);
    gst_object_unref(src);
    return std::shared_ptr<StreamRun>(new StreamRun(pipeline, std::move(mailbox), generation));
}

StreamRun::StreamRun(GstElement* pipeline, std::shared_ptr<FrameMailbox> mailbox,
                     quint64 generation)
    : pipeline_(pipeline),
      tee_(gst_bin_get_by_name(GST_BIN(pipeline), "split")),
      mailbox_(std::move(mailbox)),
      generation_(generation) {
    // The callbacks get the run itself: it outlives the pipeline, which is
    // stopped and let go of in the destructor.
    GstElement* parse = gst_bin_get_by_name(GST_BIN(pipeline_), "parse");
    g_signal_connect(parse, "pad-added", G_CALLBACK(StreamCallbacks::parsedPad), this);
    gst_object_unref(parse);

    GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline_), "sink");
    GstAppSinkCallbacks callbacks{};
    callbacks.new_sample = StreamCallbacks::newSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, this, nullptr);
    gst_object_unref(sink);

    // Messages are handled where they are posted, and what matters is
    // posted on to the user-interface thread: no GLib main loop is needed.
    GstBus* bus = gst_element_get_bus(pipeline_);
    gst_bus_set_sync_handler(bus, StreamCallbacks::busMessage, this, nullptr);
    gst_object_unref(bus);
}

StreamRun::~StreamRun() {
    gst_element_set_state(pipeline_, GST_STATE_NULL);
    GstBus* bus = gst_element_get_bus(pipeline_);
    gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
    gst_object_unref(bus);
    gst_object_unref(tee_);
    gst_object_unref(pipeline_);
}

void StreamRun::start() {
    runOnWorker([run = shared_from_this()]() mutable {
        {
            const std::lock_guard lock(run->workMutex_);
            if (!run->retired_ && gst_element_set_state(run->pipeline_, GST_STATE_PLAYING) ==
                                      GST_STATE_CHANGE_FAILURE) {
                run->post(StreamEvent::Kind::Error, QStringLiteral("the stream would not start"));
            }
        }
        run.reset();
    });
}

void StreamRun::retire(std::shared_ptr<StreamRun> run) {
    if (run == nullptr) {
        return;
    }
    runOnWorker([run = std::move(run)]() mutable {
        run->finish();
        run.reset();
    });
}

void StreamRun::finish() {
    const std::lock_guard lock(workMutex_);
    retired_ = true;
    BranchRef branch;
    {
        const std::lock_guard branchLock(mutex_);
        branch = std::exchange(branch_, nullptr);
    }
    if (branch != nullptr) {
        {
            const std::lock_guard branchLock(branch->mutex);
            branch->retiring = true;
        }
        detachBranch(branch);
        std::unique_lock branchLock(branch->mutex);
        branch->completedChanged.wait_for(branchLock, kCompleteRecordingTimeout,
                                          [&] { return branch->completed; });
    }
    gst_element_set_state(pipeline_, GST_STATE_NULL);
}

void StreamRun::post(StreamEvent::Kind kind, const QString& text) {
    mailbox_->post(generation_, StreamEvent{kind, text});
}

void StreamRun::offerSample(GstSample* sample) {
    // A replaced stream's frames are not worth converting.
    if (!mailbox_->isCurrent(generation_)) {
        return;
    }
    QImage image = imageFromSample(sample);
    if (!image.isNull()) {
        mailbox_->offerFrame(generation_, std::move(image));
    }
}

void StreamRun::linkParsedPad(GstPad* pad) {
    GstCaps* caps = gst_pad_get_current_caps(pad);
    if (caps == nullptr) {
        caps = gst_pad_query_caps(pad, nullptr);
    }
    const QString name =
        gst_caps_is_empty(caps)
            ? QString()
            : QString::fromUtf8(gst_structure_get_name(gst_caps_get_structure(caps, 0)));
    gst_caps_unref(caps);
    const bool video =
        name.startsWith(QLatin1String("video/")) || name.startsWith(QLatin1String("image/"));

    const std::lock_guard lock(mutex_);
    if (video && !videoLinked_) {
        GstPad* teeSink = gst_element_get_static_pad(tee_, "sink");
        if (gst_pad_link(pad, teeSink) == GST_PAD_LINK_OK) {
            videoLinked_ = true;
            encodedCaps_ = name;
        }
        gst_object_unref(teeSink);
        if (videoLinked_) {
            return;
        }
    }
    // Sound, and any second picture: taken and dropped, so that the
    // demuxer is not stopped by a stream nobody takes.
    GstElement* discard = gst_element_factory_make("fakesink", nullptr);
    g_object_set(discard, "sync", FALSE, "async", FALSE, nullptr);
    gst_bin_add(GST_BIN(pipeline_), discard);
    GstPad* discardSink = gst_element_get_static_pad(discard, "sink");
    gst_pad_link(pad, discardSink);
    gst_object_unref(discardSink);
    gst_element_sync_state_with_parent(discard);
}

void StreamRun::handleMessage(GstMessage* message) {
    GstObject* from = GST_MESSAGE_SRC(message);
    const QString fromName = from != nullptr ? elementName(from) : QString();
    switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_ERROR: {
            GError* error = nullptr;
            gst_message_parse_error(message, &error, nullptr);
            const QString text = QString::fromUtf8(error->message);
            g_error_free(error);
            if (fromName.startsWith(kRecordingPrefix)) {
                BranchRef branch;
                {
                    const std::lock_guard lock(mutex_);
                    // An earlier branch, on its way out, is no longer heard.
                    if (branch_ != nullptr && fromName.startsWith(branch_->namePrefix)) {
                        branch = std::exchange(branch_, nullptr);
                    }
                }
                if (branch != nullptr) {
                    onBranchFailed(branch, text);
                }
                return;
            }
            post(StreamEvent::Kind::Error, text);
            return;
        }
        case GST_MESSAGE_WARNING: {
            if (warningsLeft_.fetch_sub(1) <= 0) {
                return;
            }
            GError* warning = nullptr;
            gst_message_parse_warning(message, &warning, nullptr);
            post(StreamEvent::Kind::Warning, QString::fromUtf8(warning->message));
            g_error_free(warning);
            return;
        }
        case GST_MESSAGE_EOS:
            post(StreamEvent::Kind::Ended, QStringLiteral("the sender ended the stream"));
            return;
        default:
            return;
    }
}

bool StreamRun::startRecording(const QString& path, QString* why) {
    QString caps;
    int number = 0;
    {
        const std::lock_guard lock(mutex_);
        if (branch_ != nullptr) {
            *why = QStringLiteral("already recording");
            return false;
        }
        if (!videoLinked_) {
            *why = QStringLiteral("no stream to record yet");
            return false;
        }
        caps = encodedCaps_;
        number = ++branchCount_;
    }
    const std::optional<const char*> parserName = recordingParser(caps);
    if (!parserName) {
        *why = QStringLiteral("%1 cannot be recorded").arg(caps);
        return false;
    }
    // Named "record<number>-..." so that their messages are told from the
    // stream's, and from an earlier branch's.
    auto branch = std::make_shared<RecordingBranch>();
    branch->namePrefix = QStringLiteral("%1%2-").arg(kRecordingPrefix).arg(number);
    const auto make = [&branch](const char* factory, const char* role) {
        return gst_element_factory_make(
            factory, (branch->namePrefix + QLatin1String(role)).toUtf8().constData());
    };
    branch->path = path;
    branch->run = weak_from_this();
    branch->queue = make("queue", "queue");
    branch->parser = **parserName != '\0' ? make(*parserName, "parser") : nullptr;
    branch->mux = make("matroskamux", "mux");
    branch->sink = make("filesink", "sink");
    const bool made = branch->queue != nullptr && branch->mux != nullptr &&
                      branch->sink != nullptr &&
                      (**parserName == '\0' || branch->parser != nullptr);
    if (!made) {
        for (GstElement** element :
             {&branch->queue, &branch->parser, &branch->mux, &branch->sink}) {
            gst_clear_object(element);
        }
        *why = QStringLiteral("the Matroska recorder is not installed");
        return false;
    }
    // A slow disk must never hold up the picture: the queue is long, and
    // drops rather than blocks when it is full.
    g_object_set(branch->queue, "max-size-buffers", 0u, "max-size-time", guint64{0},
                 "max-size-bytes", 64u * 1024u * 1024u, "leaky", 2, nullptr);
    g_object_set(branch->mux, "offset-to-zero", TRUE, "writing-app", "Halvex console", nullptr);
    g_object_set(branch->sink, "location", QFile::encodeName(path).constData(), "async", FALSE,
                 nullptr);

    const std::vector<GstElement*> elements = branch->elements();
    for (GstElement* element : elements) {
        gst_bin_add(GST_BIN(pipeline_), element);
    }
    bool linked = true;
    for (std::size_t i = 1; i < elements.size(); ++i) {
        linked = linked && gst_element_link(elements[i - 1], elements[i]);
    }
    // The file opens here; the sink first, so nothing flows into a branch
    // that is not ready.
    bool started = linked;
    for (auto element = elements.rbegin(); started && element != elements.rend(); ++element) {
        started = gst_element_sync_state_with_parent(*element);
    }
    if (!started) {
        for (GstElement* element : elements) {
            gst_element_set_state(element, GST_STATE_NULL);
            gst_bin_remove(GST_BIN(pipeline_), element);
        }
        *why = linked ? QStringLiteral("cannot write %1").arg(path)
                      : QStringLiteral("%1 cannot be recorded").arg(caps);
        return false;
    }

    GstPad* queueSink = gst_element_get_static_pad(branch->queue, "sink");
    GstPad* fileSink = gst_element_get_static_pad(branch->sink, "sink");
    gst_pad_add_probe(fileSink, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM,
                      StreamCallbacks::recordingComplete, new BranchRef(branch),
                      StreamCallbacks::releaseBranch);
    branch->teePad = gst_element_request_pad_simple(tee_, "src_%u");
    gst_pad_add_probe(branch->teePad, GST_PAD_PROBE_TYPE_BUFFER, StreamCallbacks::gateRecording,
                      new BranchRef(branch), StreamCallbacks::releaseBranch);
    gst_pad_link(branch->teePad, queueSink);
    gst_object_unref(fileSink);
    gst_object_unref(queueSink);
    // Asks the sender for a keyframe, so that the file need not wait for the next one.
    gst_pad_send_event(branch->teePad,
                       gst_video_event_new_upstream_force_key_unit(GST_CLOCK_TIME_NONE, TRUE, 0));
    const std::lock_guard lock(mutex_);
    branch_ = branch;
    return true;
}

void StreamRun::stopRecording() {
    BranchRef branch;
    {
        const std::lock_guard lock(mutex_);
        branch = std::exchange(branch_, nullptr);
    }
    if (branch != nullptr) {
        detachBranch(branch);
    }
}

bool StreamRun::recording() const {
    const std::lock_guard lock(mutex_);
    return branch_ != nullptr;
}

void StreamRun::detachBranch(const BranchRef& branch) {
    // When the tee is not pushing into the pad, which is at once for a
    // stream that stalled. Called once: the probe goes with it.
    gst_pad_add_probe(
        branch->teePad, GST_PAD_PROBE_TYPE_IDLE,
        [](GstPad* teePad, GstPadProbeInfo*, gpointer data) {
            const RecordingBranch& branch = **static_cast<BranchRef*>(data);
            GstPad* queueSink = gst_element_get_static_pad(branch.queue, "sink");
            gst_pad_unlink(teePad, queueSink);
            gst_pad_send_event(queueSink, gst_event_new_eos());
            gst_object_unref(queueSink);
            return GST_PAD_PROBE_REMOVE;
        },
        new BranchRef(branch), StreamCallbacks::releaseBranch);
}

void StreamRun::onBranchComplete(const BranchRef& branch) {
    const bool retiring = branch->complete();
    branch->completedChanged.notify_all();
    // An ending stream takes the branch down with the rest.
    if (!retiring) {
        runOnWorker([run = shared_from_this(), branch]() mutable {
            run->removeBranch(branch);
            run->post(StreamEvent::Kind::RecordingSaved, branch->path);
            run.reset();
        });
    }
}

void StreamRun::onBranchFailed(const BranchRef& branch, const QString& text) {
    branch->closed = true;
    post(StreamEvent::Kind::RecordingFailed, text);
    runOnWorker([run = shared_from_this(), branch]() mutable {
        run->removeBranch(branch);
        run.reset();
    });
}

void StreamRun::removeBranch(const BranchRef& branch) {
    const std::lock_guard lock(workMutex_);
    if (retired_) {
        return;  // gone with the whole stream
    }
    GstPad* queueSink = gst_element_get_static_pad(branch->queue, "sink");
    gst_pad_unlink(branch->teePad, queueSink);
    gst_object_unref(queueSink);
    for (GstElement* element : branch->elements()) {
        gst_element_set_state(element, GST_STATE_NULL);
        gst_bin_remove(GST_BIN(pipeline_), element);
    }
    gst_element_release_request_pad(tee_, branch->teePad);
}

}  // namespace halvex
