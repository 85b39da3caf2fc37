#pragma once

#include <QString>
#include <atomic>
#include <memory>
#include <mutex>

#include "live_video/frame_mailbox.h"
#include "live_video/video_source.h"

typedef struct _GstElement GstElement;
typedef struct _GstPad GstPad;
typedef struct _GstMessage GstMessage;
typedef struct _GstSample GstSample;

namespace halvex {

struct RecordingBranch;

// One attempt at a stream: a GStreamer pipeline built from the fixed
// description for the source's kind, reporting through the mailbox under its
// generation. Starting and ending it can block (a server that does not
// answer), so both happen on worker threads; the user-interface thread only
// builds it, adds and removes recordings, and hands it over with retire().
class StreamRun : public std::enable_shared_from_this<StreamRun> {
  public:
    // Nullptr and the reason when the pipeline cannot be built (a GStreamer
    // plugin missing). The address must have been checked by parseVideoSource.
    static std::shared_ptr<StreamRun> create(const VideoSource& source,
                                             std::shared_ptr<FrameMailbox> mailbox,
                                             quint64 generation, QString* why);
    ~StreamRun();
    StreamRun(const StreamRun&) = delete;
    StreamRun& operator=(const StreamRun&) = delete;

    // Sets it playing on a worker thread.
    void start();
    // Ends it on a worker thread, finishing its recording's file first; the
    // caller lets go of it and never waits.
    static void retire(std::shared_ptr<StreamRun> run);

    // The encoded stream as it arrives, through the matching parser, into a
    // Matroska file; false and the reason when it cannot.
    bool startRecording(const QString& path, QString* why);
    // The file is completed on the stream's threads; the mailbox says
    // RecordingSaved when it is.
    void stopRecording();
    bool recording() const;

  private:
    StreamRun(GstElement* pipeline, std::shared_ptr<FrameMailbox> mailbox, quint64 generation);

    // GStreamer's callbacks, on its threads.
    friend struct StreamCallbacks;

    void linkParsedPad(GstPad* pad);
    void handleMessage(GstMessage* message);
    void offerSample(GstSample* sample);
    void post(StreamEvent::Kind kind, const QString& text);
    void finish();
    // Takes the branch off the tee and sends the end of the stream into it,
    // which completes its file.
    void detachBranch(const std::shared_ptr<RecordingBranch>& branch);
    void removeBranch(const std::shared_ptr<RecordingBranch>& branch);
    void onBranchComplete(const std::shared_ptr<RecordingBranch>& branch);
    void onBranchFailed(const std::shared_ptr<RecordingBranch>& branch, const QString& text);

    GstElement* const pipeline_;
    GstElement* const tee_;
    const std::shared_ptr<FrameMailbox> mailbox_;
    const quint64 generation_;

    // Starting, ending and removing a branch take turns.
    std::mutex workMutex_;
    bool retired_ = false;

    mutable std::mutex mutex_;
    bool videoLinked_ = false;
    QString encodedCaps_;  // the name of the encoded video's caps, once linked
    std::shared_ptr<RecordingBranch> branch_;
    int branchCount_ = 0;

    // A stream that sends garbage could fill the event list.
    std::atomic<int> warningsLeft_{8};
};

}  // namespace halvex
