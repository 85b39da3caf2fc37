#include "live_video/video_pipeline.h"

#include <QFileInfo>

#include "live_video/frame_mailbox.h"
#include "live_video/stream_run.h"

namespace halvex {

int retryDelayMs(int retries, int firstMs, int longestMs) {
    qint64 delay = firstMs;
    for (int i = 0; i < retries && delay < longestMs; ++i) {
        delay *= 2;
    }
    return static_cast<int>(std::min<qint64>(delay, longestMs));
}

VideoPipeline::VideoPipeline(QObject* parent)
    : QObject(parent),
      mailbox_(FrameMailbox::create(this, [this](const StreamEvent& event) { handle(event); })) {
    message_ = QStringLiteral("no video source");
    watchdog_.setSingleShot(true);
    retry_.setSingleShot(true);
    connect(&watchdog_, &QTimer::timeout, this, [this] {
        lose(state_ == State::Playing
                 ? QStringLiteral("no picture for %1 s").arg(timing_.stallMs / 1000.0)
                 : QStringLiteral("no picture came"));
    });
    connect(&retry_, &QTimer::timeout, this, &VideoPipeline::attempt);
}

VideoPipeline::~VideoPipeline() {
    mailbox_->close();
    StreamRun::retire(std::move(run_));
}

void VideoPipeline::play(const VideoSource& source) {
    dropStream();
    retries_ = 0;
    lastFrame_ = QImage();
    if (source.kind == VideoSource::Kind::None) {
        source_ = {};
        setState(State::Off, QStringLiteral("no video source"));
        return;
    }
    // The address is checked again here: it goes into GStreamer, and only
    // what the parser takes may.
    QString why;
    const std::optional<VideoSource> checked = parseVideoSource(source.address, &why);
    if (!checked || checked->kind != source.kind) {
        source_ = source;
        if (checked) {
            why = QStringLiteral("not a video source: %1 (not of the kind chosen)")
                      .arg(source.address);
        }
        emit eventOccurred(why);
        setState(State::Failed, why);
        return;
    }
    source_ = *checked;
    setState(State::Connecting, QStringLiteral("connecting to %1").arg(source_.address));
    attempt();
}

void VideoPipeline::stop() {
    dropStream();
    source_ = {};
    setState(State::Off, QStringLiteral("no video source"));
}

void VideoPipeline::attempt() {
    dropStream();
    if (source_.kind == VideoSource::Kind::Device && !QFileInfo::exists(source_.address)) {
        // Looked for again now and then, so that plugging it in is enough.
        setState(State::Failed, QStringLiteral("no such device: %1").arg(source_.address));
        retry_.start(timing_.deviceRetryMs);
        return;
    }
    if (state_ == State::Failed) {
        setState(State::Connecting, QStringLiteral("connecting to %1").arg(source_.address));
    }
    QString why;
    run_ = StreamRun::create(source_, mailbox_, mailbox_->renew(), &why);
    if (run_ == nullptr) {
        emit eventOccurred(why);
        setState(State::Failed, why);
        return;
    }
    run_->start();
    watchdog_.start(timing_.connectMs);
}

// The stream goes, and nothing it still sends arrives.
void VideoPipeline::dropStream() {
    watchdog_.stop();
    retry_.stop();
    mailbox_->renew();
    if (run_ != nullptr && run_->recording()) {
        emit eventOccurred(QStringLiteral("recording ended with the stream"));
    }
    StreamRun::retire(std::move(run_));
}

void VideoPipeline::lose(const QString& reason) {
    dropStream();
    emit eventOccurred(QStringLiteral("video %1: %2").arg(source_.address, reason));
    setState(State::Lost, QStringLiteral("stream lost: reconnecting"));
    retry_.start(retryDelayMs(retries_++, timing_.firstRetryMs, timing_.longestRetryMs));
}

void VideoPipeline::handle(const StreamEvent& event) {
    switch (event.kind) {
        case StreamEvent::Kind::Frame:
            showFrame();
            return;
        case StreamEvent::Kind::Error:
        case StreamEvent::Kind::Ended:
            lose(event.text);
            return;
        case StreamEvent::Kind::Warning:
            emit eventOccurred(QStringLiteral("video %1: %2").arg(source_.address, event.text));
            return;
        case StreamEvent::Kind::RecordingFailed:
            emit eventOccurred(QStringLiteral("recording failed: %1").arg(event.text));
            return;
        case StreamEvent::Kind::RecordingSaved:
            emit eventOccurred(QStringLiteral("recording saved: %1").arg(event.text));
            return;
    }
}

void VideoPipeline::showFrame() {
    QImage frame = mailbox_->takeFrame();
    if (frame.isNull() || run_ == nullptr) {
        return;
    }
    lastFrame_ = std::move(frame);
    retries_ = 0;
    watchdog_.start(timing_.stallMs);
    setState(State::Playing, QString());
    emit frameArrived(lastFrame_);
}

bool VideoPipeline::startRecording(const QString& path) {
    QString why = QStringLiteral("no stream to record");
    if (run_ == nullptr || state_ != State::Playing || !run_->startRecording(path, &why)) {
        emit eventOccurred(QStringLiteral("cannot record: %1").arg(why));
        return false;
    }
    emit eventOccurred(QStringLiteral("recording to %1").arg(path));
    return true;
}

void VideoPipeline::stopRecording() {
    if (run_ != nullptr) {
        run_->stopRecording();
    }
}

bool VideoPipeline::recording() const {
    return run_ != nullptr && run_->recording();
}

void VideoPipeline::setState(State state, const QString& message) {
    if (state == state_ && message == message_) {
        return;
    }
    state_ = state;
    message_ = message;
    emit stateChanged(state_, message_);
}

}  // namespace halvex
