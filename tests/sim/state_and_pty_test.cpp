// The unit's state file across a restart, the long silent procedures, and
// the unit on a real pseudo-terminal spoken to with plain POSIX I/O.

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <cstdio>
#include <fstream>

#include "sim/pty_unit.h"
#include "sim/state_file.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

TEST(UnitStateFile, StoredSettingsComeBackAndDamagedLinesKeepFactoryValues) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-state";
    std::remove(options.statePath.c_str());
    EXPECT_FALSE(loadState(options.statePath).has_value());
    std::ofstream(options.statePath) << "something else\n";
    EXPECT_FALSE(loadState(options.statePath).has_value());
    std::remove(options.statePath.c_str());
    {
        UnitHarness unit(options);
        unit.exchange({0x41, 3, 0x10, 0x27, 0x00, 0x00, 0x00, 0x00});
        unit.exchange({0x52, 2, 3, 5});
        unit.exchange({0x96, 45});
        unit.exchange({0x70, 0x40 | 0x12});  // stored for power up
        unit.exchange({0x71, 0x15});         // not stored
        unit.exchange({0x9F, 9});
    }
    UnitHarness restarted(options);
    restarted.id = 9;
    EXPECT_EQ(restarted.exchange({0x40, 3}, 9),
              (std::vector<Byte>{0x40, 3, 0x10, 0x27, 0x00, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(restarted.exchange({0x51, 2, 0}, 9), (std::vector<Byte>{0x51, 2, 0, 3, 5}));
    EXPECT_EQ(restarted.exchange({0x96, 0x80}, 9), (std::vector<Byte>{0x96, 45}));
    EXPECT_EQ(restarted.exchange({0x70, 0x80}, 9), (std::vector<Byte>{0x70, 0x12}));
    EXPECT_EQ(restarted.exchange({0x71, 0x80}, 9), (std::vector<Byte>{0x71, 0x00}));

    std::ofstream(options.statePath) << "halvex-unit-state 1\nid 4\ncomm-timeout 999\nheater x\n"
                                        "tour-0 1 2 3\npreset-1 100 200 1 2 3 4\n";
    options.id = 6;  // the command line wins
    UnitHarness damaged(options);
    damaged.id = 6;
    EXPECT_EQ(damaged.exchange({0x96, 0x80}, 6), (std::vector<Byte>{0x96, 0}));
    EXPECT_EQ(damaged.exchange({0x97, 0x80}, 6), (std::vector<Byte>{0x97, 1}));
    EXPECT_EQ(damaged.exchange({0x56, 0}, 6), (std::vector<Byte>{0x56, 0, 0}));
    EXPECT_EQ(damaged.exchange({0x40, 1}, 6),
              (std::vector<Byte>{0x40, 1, 100, 0, 0, 200, 0, 0, 1, 2, 3, 4}));
    std::remove(options.statePath.c_str());
}

TEST(UnitProcedures, AlignmentAndHomingAreSilentUntilTheyEnd) {
    UnitOptions options;
    options.alignmentMs = 5000;
    options.homingMs = 7000;
    UnitHarness unit(options);
    EXPECT_TRUE(unit.send({0x9D}).empty());
    unit.advance(4900);
    EXPECT_TRUE(unit.send({0x85}).empty()) << "deaf while aligning";
    unit.unit.advanceTo(5000);
    auto frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x9D, 0x00, 0x80, 0x00, 0x00, 0x80, 0x00}));
    EXPECT_TRUE(unit.send({0x9E}).empty());
    unit.unit.advanceTo(12000);
    frames = decodeFrames(unit.unit.takeOutput());
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].message,
              (std::vector<Byte>{0x9E, 0x03, 0x0F, 0x80, 0x00, 0x0F, 0x80, 0x00}));
}

TEST(PtyUnit, ExchangesFramesOnTheSlaveDeviceAndPacesRepliesByteByByte) {
    int argc = 1;
    char name[] = "sim_tests";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
    int reads = 0;
    // Runs the event loop while reading fd, until `frames` frames are in or `ms` pass.
    const auto collect = [&reads](int fd, long frames, int ms) {
        std::vector<Byte> received;
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < ms &&
               std::count(received.begin(), received.end(), kEtx) < frames) {
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
            pollfd waiting{fd, POLLIN, 0};
            Byte buffer[256];
            const ssize_t count =
                ::poll(&waiting, 1, 5) > 0 ? ::read(fd, buffer, sizeof buffer) : 0;
            if (count > 0) {
                received.insert(received.end(), buffer, buffer + count);
                ++reads;
            }
        }
        return received;
    };
    const auto send = [](int fd, const std::vector<Byte>& message, Byte address) {
        const auto wire = encodeFrame(kStx, address, message, address);
        EXPECT_EQ(::write(fd, wire.data(), wire.size()), static_cast<ssize_t>(wire.size()));
    };

    PtyUnitOptions options;
    options.unit.id = 4;
    options.paceBaud = 2400;  // about 4 ms a byte
    PtyUnit unit(options);
    QString error;
    ASSERT_TRUE(unit.open(&error)) << error.toStdString();
    ASSERT_TRUE(unit.slavePath().startsWith("/dev/"));
    const int fd =
        ::open(unit.slavePath().toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(fd, 0);
    // 0x03 in a payload travels stuffed and must pass the raw line unchanged.
    QElapsedTimer clock;
    clock.start();
    send(fd, {0x96, 0x03}, 4);
    auto frames = decodeFrames(collect(fd, 1, 3000));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_EQ(frames[0].address, 4);
    EXPECT_TRUE(frames[0].lrcGood);
    EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x96, 0x03}));
    // 7 bytes at 2400 baud take about 28 ms and come in several reads.
    EXPECT_GE(clock.elapsed(), 20);
    EXPECT_GT(reads, 3);

    // A move keeps the clock running by itself: the next report shows it.
    send(fd, {0x33, 0x10, 0x27, 0, 0, 0, 0}, 4);
    collect(fd, 1, 3000);
    collect(fd, 1000, 300);
    send(fd, {0x31, 0, 0, 0, 0, 0, 0, 0}, 4);
    frames = decodeFrames(collect(fd, 1, 3000));
    ASSERT_EQ(frames.size(), 1u);
    EXPECT_GT(angleAt(frames[0].message, 1), 0);
    ::close(fd);
}

}  // namespace
}  // namespace halvex::sim::testing
