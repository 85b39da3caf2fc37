// The unit on a real pseudo-terminal, spoken to with plain POSIX I/O.

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QElapsedTimer>

#include "sim/pty_unit.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

class PtyUnitTest : public ::testing::Test {
  protected:
    // Runs the event loop while collecting what arrives on fd, until
    // `frames` whole frames are in or the time is up.
    std::vector<Byte> collect(int fd, std::size_t frames, int timeoutMs) {
        std::vector<Byte> received;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < timeoutMs &&
               std::count(received.begin(), received.end(), kEtx) < static_cast<long>(frames)) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            pollfd waiting{fd, POLLIN, 0};
            if (::poll(&waiting, 1, 5) > 0) {
                Byte buffer[256];
                const ssize_t count = ::read(fd, buffer, sizeof buffer);
                if (count > 0) {
                    received.insert(received.end(), buffer, buffer + count);
                    ++reads;
                }
            }
        }
        return received;
    }

    // Runs the event loop for a while, as a console idles between frames.
    void pump(int ms) {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < ms) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            ::usleep(2000);
        }
    }

    void send(int fd, const std::vector<Byte>& message, Byte address = 0) {
        const auto wire = encodeFrame(kStx, address, message, address);
        ASSERT_EQ(::write(fd, wire.data(), wire.size()), static_cast<ssize_t>(wire.size()));
    }

    int argc = 1;
    char name[10] = "sim_tests";
    char* argv[2] = {name, nullptr};
    QCoreApplication app{argc, argv};
    int reads = 0;
};

TEST_F(PtyUnitTest, ExchangesFramesThroughTheSlaveDevice) {
    PtyUnitOptions options;
    options.unit.id = 4;
    PtyUnit unit(options);
    QString error;
    ASSERT_TRUE(unit.open(&error)) << error.toStdString();
    ASSERT_TRUE(unit.slavePath().startsWith("/dev/"));

    const int fd =
        ::open(unit.slavePath().toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(fd, 0);
    // 0x03 in a payload travels stuffed and must pass the raw line unchanged.
    send(fd, {0x96, 0x03}, 4);
    auto frames = decodeFrames(collect(fd, 1, 2000));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].address, 4);
    EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x96, 0x03}));

    // A move keeps the clock running by itself: the next report shows it.
    send(fd, {0x33, 0x10, 0x27, 0, 0, 0, 0}, 4);
    collect(fd, 1, 2000);
    pump(300);
    send(fd, {0x31, 0, 0, 0, 0, 0, 0, 0}, 4);
    frames = decodeFrames(collect(fd, 1, 2000));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_GT(angleAt(frames[0].message, 1), 0);
    ::close(fd);
}

TEST_F(PtyUnitTest, PacedRepliesArriveByteByByteAtTheLineSpeed) {
    PtyUnitOptions options;
    options.paceBaud = 2400;  // about 4 ms a byte
    PtyUnit unit(options);
    ASSERT_TRUE(unit.open());
    const int fd =
        ::open(unit.slavePath().toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(fd, 0);

    QElapsedTimer clock;
    clock.start();
    send(fd, {0x40, 1});
    const auto wire = collect(fd, 1, 3000);
    const auto frames = decodeFrames(wire);
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_TRUE(frames[0].lrcGood);
    EXPECT_EQ(frames[0].message.size(), 12u);
    // 15 bytes at 2400 baud take about 60 ms and come in several reads.
    EXPECT_GE(clock.elapsed(), 50);
    EXPECT_GT(reads, 3);
    ::close(fd);
}

}  // namespace
}  // namespace halvex::sim::testing
