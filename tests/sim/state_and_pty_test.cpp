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

TEST(PtyUnit, AnswersOnTheSlaveDeviceByteByByteWhenPaced) {
    int argc = 1;
    char name[] = "sim_tests";
    char* argv[] = {name, nullptr};
    QCoreApplication app(argc, argv);
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
    auto wire = encodeFrame(kStx, 4, {0x96, 0x03}, 4);
    const auto preset = encodeFrame(kStx, 4, {0x40, 1}, 4);
    wire.insert(wire.end(), preset.begin(), preset.end());
    ASSERT_EQ(::write(fd, wire.data(), wire.size()), static_cast<ssize_t>(wire.size()));
    std::vector<Byte> received;
    int reads = 0;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 3000 && std::count(received.begin(), received.end(), kEtx) < 2) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        pollfd waiting{fd, POLLIN, 0};
        Byte buffer[256];
        const ssize_t count = ::poll(&waiting, 1, 5) > 0 ? ::read(fd, buffer, sizeof buffer) : 0;
        if (count > 0) {
            received.insert(received.end(), buffer, buffer + count);
            ++reads;
        }
    }
    ::close(fd);
    const auto frames = decodeFrames(received);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0].address, 4);
    EXPECT_TRUE(frames[0].lrcGood);
    EXPECT_EQ(frames[0].message, (std::vector<Byte>{0x96, 0x03}));
    EXPECT_EQ(frames[1].message.size(), 12u);
    // 23 bytes at 2400 baud take about 90 ms and come in several reads.
    EXPECT_GE(clock.elapsed(), 70);
    EXPECT_GT(reads, 3);
}

}  // namespace
}  // namespace halvex::sim::testing
