// The unit on its pseudo-terminal: how its replies leave, whole or paced.

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <functional>
#include <vector>

#include "protocol/frame.h"
#include "protocol/vocabulary.h"
#include "sim/pty_unit.h"

namespace halvex::sim::testing {
namespace {

struct ReplyAsRead {
    std::vector<std::size_t> reads;  // the size of each read it took
    std::vector<Byte> bytes;
};

// The console's end of the line: asks for the firmware revision and reads
// the reply as it comes, one read at a time; `afterFirstRead` runs once the
// first bytes are in.
ReplyAsRead oneReply(PtyUnit& unit, const std::function<void()>& afterFirstRead = {}) {
    const int line = ::open(unit.slavePath().toLocal8Bit().constData(),
                            O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_GE(line, 0);
    const auto request = encodeFrame(kStx, 0, vocab::blank<vocab::FirmwareRequest>(), 0);
    EXPECT_EQ(::write(line, request.data(), request.size()), static_cast<ssize_t>(request.size()));
    ReplyAsRead got;
    auto& [reads, reply] = got;
    QElapsedTimer clock;
    clock.start();
    while ((reply.empty() || reply.back() != kEtx) && clock.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
        Byte buffer[64];
        const ssize_t count = ::read(line, buffer, sizeof buffer);
        if (count > 0) {
            reads.push_back(static_cast<std::size_t>(count));
            reply.insert(reply.end(), buffer, buffer + count);
            if (reads.size() == 1 && afterFirstRead) {
                afterFirstRead();
            }
        }
    }
    ::close(line);
    EXPECT_GE(reply.size(), 10u) << "06, address, 9A, five bytes, LRC, 03";
    return got;
}

TEST(PtyUnit, RepliesLeaveWholeUnlessPaced) {
    PtyUnit unit{PtyUnitOptions{}};
    ASSERT_TRUE(unit.open());
    const ReplyAsRead whole = oneReply(unit);
    EXPECT_EQ(whole.reads.size(), 1u);

    LineCommand pace;
    pace.kind = LineCommand::Kind::Pace;
    pace.number = 300;  // a byte every 33 ms
    unit.apply(pace);
    const ReplyAsRead paced = oneReply(unit);
    EXPECT_GT(paced.reads.size(), 5u);
    EXPECT_EQ(paced.bytes, whole.bytes) << "paced, each byte once and in its order";

    // Pacing switched off in the middle of a reply: the rest leaves at once.
    const ReplyAsRead cutShort = oneReply(unit, [&unit, &pace] {
        pace.number = 0;
        unit.apply(pace);
    });
    EXPECT_EQ(cutShort.reads.size(), 2u);
    EXPECT_EQ(cutShort.bytes, whole.bytes);
    EXPECT_EQ(oneReply(unit).reads.size(), 1u);
}

}  // namespace
}  // namespace halvex::sim::testing
