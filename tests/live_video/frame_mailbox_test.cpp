#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QObject>
#include <thread>

#include "live_video/frame_mailbox.h"

namespace halvex {
namespace {

QImage frameOfWidth(int width) {
    QImage image(width, 1, QImage::Format_RGB32);
    image.fill(Qt::gray);
    return image;
}

// What a receiver was handed, taking each frame as the pipeline does.
struct Received {
    std::vector<StreamEvent::Kind> kinds;
    std::vector<int> frameWidths;
};

std::shared_ptr<FrameMailbox> mailboxInto(QObject& receiver, Received& received,
                                          std::shared_ptr<FrameMailbox>* self) {
    *self = FrameMailbox::create(&receiver, [&received, self](const StreamEvent& event) {
        received.kinds.push_back(event.kind);
        if (event.kind == StreamEvent::Kind::Frame) {
            const QImage frame = (*self)->takeFrame();
            if (!frame.isNull()) {
                received.frameWidths.push_back(frame.width());
            }
        }
    });
    return *self;
}

TEST(FrameMailbox, FramesFromAnotherThreadComeOnceAsTheNewest) {
    QObject receiver;
    Received received;
    std::shared_ptr<FrameMailbox> mailbox;
    mailboxInto(receiver, received, &mailbox);
    const quint64 generation = mailbox->renew();

    std::thread stream([&] {
        for (int width = 1; width <= 50; ++width) {
            mailbox->offerFrame(generation, frameOfWidth(width));
        }
    });
    stream.join();
    QCoreApplication::processEvents();
    EXPECT_EQ(received.frameWidths, std::vector<int>{50});
    EXPECT_EQ(received.kinds.size(), 1u);

    // Taken, the slot is free again: the next frame is announced anew.
    mailbox->offerFrame(generation, frameOfWidth(7));
    QCoreApplication::processEvents();
    EXPECT_EQ(received.frameWidths, (std::vector<int>{50, 7}));
}

TEST(FrameMailbox, AReplacedStreamDeliversNothingMore) {
    QObject receiver;
    Received received;
    std::shared_ptr<FrameMailbox> mailbox;
    mailboxInto(receiver, received, &mailbox);
    const quint64 old = mailbox->renew();

    // Posted before the replacement, still on their way when it comes.
    mailbox->offerFrame(old, frameOfWidth(3));
    mailbox->post(old, StreamEvent{StreamEvent::Kind::Error, QStringLiteral("gone")});
    const quint64 current = mailbox->renew();
    // Posted after it.
    mailbox->offerFrame(old, frameOfWidth(4));
    mailbox->post(old, StreamEvent{StreamEvent::Kind::Ended, {}});
    QCoreApplication::processEvents();
    EXPECT_TRUE(received.frameWidths.empty());
    EXPECT_EQ(std::count(received.kinds.begin(), received.kinds.end(), StreamEvent::Kind::Frame),
              std::ssize(received.kinds));  // no error, no end

    mailbox->offerFrame(current, frameOfWidth(5));
    mailbox->post(current, StreamEvent{StreamEvent::Kind::Warning, QStringLiteral("late")});
    QCoreApplication::processEvents();
    EXPECT_EQ(received.frameWidths, std::vector<int>{5});
    EXPECT_EQ(received.kinds.back(), StreamEvent::Kind::Warning);
}

TEST(FrameMailbox, NothingReachesAReceiverThatIsGone) {
    Received received;
    std::shared_ptr<FrameMailbox> mailbox;
    quint64 generation = 0;
    {
        QObject receiver;
        mailboxInto(receiver, received, &mailbox);
        generation = mailbox->renew();
        mailbox->offerFrame(generation, frameOfWidth(1));  // on its way when the receiver goes
        mailbox->close();
    }
    mailbox->offerFrame(generation, frameOfWidth(2));
    mailbox->post(generation, StreamEvent{StreamEvent::Kind::Error, {}});
    QCoreApplication::processEvents();
    EXPECT_TRUE(received.kinds.empty());
    EXPECT_FALSE(mailbox->isCurrent(generation));
}

}  // namespace
}  // namespace halvex
