#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <functional>
#include <memory>
#include <mutex>

namespace halvex {

// What a running stream tells the pipeline that owns it.
struct StreamEvent {
    enum class Kind {
        Frame,            // a new frame waits in the mailbox
        Error,            // the stream cannot go on
        Warning,          // worth a line in the event list
        Ended,            // the sender ended the stream
        RecordingFailed,  // the recording branch failed; the picture goes on
        RecordingSaved,   // the recording's file is complete
    };
    Kind kind = Kind::Frame;
    QString text;
};

// The one way from GStreamer's threads to the user-interface thread. A
// stream posts under its generation; only the current generation's posts
// are delivered, so nothing of a stream that was replaced or stopped
// reaches the receiver, and nothing at all once the receiver is gone.
// Frames do not queue up: the newest waits in one slot, and at most one
// call to take it is on its way.
class FrameMailbox : public std::enable_shared_from_this<FrameMailbox> {
  public:
    using Handler = std::function<void(const StreamEvent&)>;

    // handler runs on receiver's thread, with receiver alive.
    static std::shared_ptr<FrameMailbox> create(QObject* receiver, Handler handler);

    // Receiver's thread: a new stream starts; whatever older ones post is
    // dropped from now on. Returns the new stream's generation.
    quint64 renew();
    // Receiver's thread: the receiver is going; nothing is delivered after.
    void close();
    // Receiver's thread: the newest frame, null when it was taken already.
    QImage takeFrame();
    bool isCurrent(quint64 generation) const;

    // Any thread.
    void offerFrame(quint64 generation, QImage frame);
    void post(quint64 generation, StreamEvent event);

  private:
    FrameMailbox(QObject* receiver, Handler handler);
    void deliverLocked(quint64 generation, StreamEvent event);

    mutable std::mutex mutex_;
    QObject* receiver_;
    const Handler handler_;
    quint64 generation_ = 0;
    QImage newest_;
    bool framePending_ = false;
};

}  // namespace halvex
