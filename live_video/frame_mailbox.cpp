#include "live_video/frame_mailbox.h"

#include <QMetaObject>

namespace halvex {

std::shared_ptr<FrameMailbox> FrameMailbox::create(QObject* receiver, Handler handler) {
    return std::shared_ptr<FrameMailbox>(new FrameMailbox(receiver, std::move(handler)));
}

FrameMailbox::FrameMailbox(QObject* receiver, Handler handler)
    : receiver_(receiver), handler_(std::move(handler)) {}

quint64 FrameMailbox::renew() {
    const std::lock_guard lock(mutex_);
    newest_ = QImage();
    return ++generation_;
}

void FrameMailbox::close() {
    const std::lock_guard lock(mutex_);
    receiver_ = nullptr;
    newest_ = QImage();
}

QImage FrameMailbox::takeFrame() {
    const std::lock_guard lock(mutex_);
    framePending_ = false;
    return std::exchange(newest_, QImage());
}

bool FrameMailbox::isCurrent(quint64 generation) const {
    const std::lock_guard lock(mutex_);
    return receiver_ != nullptr && generation == generation_;
}

void FrameMailbox::offerFrame(quint64 generation, QImage frame) {
    const std::lock_guard lock(mutex_);
    if (receiver_ == nullptr || generation != generation_) {
        return;
    }
    newest_ = std::move(frame);
    if (!framePending_) {
        framePending_ = true;
        deliverLocked(generation, StreamEvent{StreamEvent::Kind::Frame, {}});
    }
}

void FrameMailbox::post(quint64 generation, StreamEvent event) {
    const std::lock_guard lock(mutex_);
    if (receiver_ != nullptr && generation == generation_) {
        deliverLocked(generation, std::move(event));
    }
}

// Posted while the lock is held, so the receiver cannot go between the
// look at it and the post; Qt drops the call if it goes before it runs.
void FrameMailbox::deliverLocked(quint64 generation, StreamEvent event) {
    QMetaObject::invokeMethod(
        receiver_,
        [self = shared_from_this(), generation, event = std::move(event)] {
            // A frame call is always delivered, so that the slot is
            // emptied; it finds nothing when the stream was replaced.
            if (event.kind == StreamEvent::Kind::Frame || self->isCurrent(generation)) {
                self->handler_(event);
            }
        },
        Qt::QueuedConnection);
}

}  // namespace halvex
