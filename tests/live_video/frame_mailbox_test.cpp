#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QObject>
#include <memory>
#include <thread>

#include "live_video/frame_mailbox.h"

namespace halvex {
namespace {

QImage frameOfWidth(int width) {
    QImage image(width, 1, QImage::Format_RGB32);
    image.fill(Qt::gray);
    return image;
}

// A mailbox into a receiver that takes each frame as the pipeline does, and
// what it was handed.
struct FrameMailboxTest : ::testing::Test {
    std::unique_ptr<QObject> receiver = std::make_unique<QObject>();
    std::vector<StreamEvent::Kind> kinds;
    std::vector<int> frameWidths;
    std::shared_ptr<FrameMailbox> mailbox =
        FrameMailbox::create(receiver.get(), [this](const StreamEvent& event) {
            kinds.push_back(event.kind);
            if (event.kind == StreamEvent::Kind::Frame) {
                const QImage frame = mailbox->takeFrame();
                if (!frame.isNull()) {
                    frameWidths.push_back(frame.width());
                }
            }
        });
    const quint64 generation = mailbox->renew();
};

TEST_F(FrameMailboxTest, FramesFromAnotherThreadComeOnceAsTheNewest) {
    std::thread stream([&] {
        for (int width = 1; width <= 50; ++width) {
            mailbox->offerFrame(generation, frameOfWidth(width));
        }
    });
    stream.join();
    QCoreApplication::processEvents();
    EXPECT_EQ(frameWidths, std::vector<int>{50});
    EXPECT_EQ(kinds.size(), 1u);

    // Taken, the slot is free again: the next frame is announced anew.
    mailbox->offerFrame(generation, frameOfWidth(7));
    QCoreApplication::processEvents();
    EXPECT_EQ(frameWidths, (std::vector<int>{50, 7}));
}

TEST_F(FrameMailboxTest, AReplacedStreamDeliversNothingMore) {
    // Posted before the replacement, still on their way when it comes.
    mailbox->offerFrame(generation, frameOfWidth(3));
    mailbox->post(generation, StreamEvent{StreamEvent::Kind::Error, QStringLiteral("gone")});
    mailbox->renew();
    // Posted after it.
    mailbox->offerFrame(generation, frameOfWidth(4));
    mailbox->post(generation, StreamEvent{StreamEvent::Kind::Ended, {}});
    QCoreApplication::processEvents();
    EXPECT_TRUE(frameWidths.empty());
    EXPECT_EQ(std::count(kinds.begin(), kinds.end(), StreamEvent::Kind::Frame),
              std::ssize(kinds));  // no error, no end
}

TEST_F(FrameMailboxTest, NothingReachesAReceiverThatIsGone) {
    mailbox->offerFrame(generation, frameOfWidth(1));  // on its way when the receiver goes
    mailbox->close();
    receiver.reset();
    mailbox->offerFrame(generation, frameOfWidth(2));
    mailbox->post(generation, StreamEvent{StreamEvent::Kind::Error, {}});
    QCoreApplication::processEvents();
    EXPECT_TRUE(kinds.empty());
}

}  // namespace
}  // namespace halvex
