// How the unit moves between frames, as its position reports show it.

#include <gtest/gtest.h>

#include <array>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

constexpr Byte kTargetBit = 0x20;
constexpr Byte kMovingBits = 0x0F;

TEST(UnitMotion, MovesHoldRefuseStopAndKeepToTheLimits) {
    UnitHarness unit;
    auto reply = unit.exchange({0x33, 0x94, 0x11, 0, 0x18, 0xFC, 0xFF});  // 45.00, -10.00
    ASSERT_EQ(reply.size(), 14u);
    EXPECT_EQ(angleAt(reply, 1), 4500);
    EXPECT_EQ(angleAt(reply, 4), -1000);
    EXPECT_EQ(reply[9] & kTargetBit, kTargetBit);
    unit.advance(300);
    auto report = unit.jog();
    ASSERT_EQ(report.size(), 16u) << "a jog report carries two camera counts";
    EXPECT_EQ(report[9] & (kTargetBit | kMovingBits), 0x08 | 0x01) << "moving CW and down";
    EXPECT_GT(angleAt(report, 1), 0);
    unit.advance(5000, true);
    report = unit.jog();
    EXPECT_EQ(angleAt(report, 1), 4500);
    EXPECT_EQ(angleAt(report, 4), -1000);
    EXPECT_EQ(report[9] & kMovingBits, 0);

    // 99999 holds pan; tilt 95.00 is past the end: the reply echoes where it is.
    EXPECT_EQ(angleAt(unit.exchange({0x33, 0x9F, 0x86, 0x01, 0xF4, 0x01, 0}), 1), 4500);
    unit.advance(3000);
    reply = unit.exchange({0x33, 0, 0, 0, 0x1C, 0x25, 0});
    EXPECT_EQ(angleAt(reply, 1), 4500);
    EXPECT_EQ(angleAt(reply, 4), 500);
    unit.advance(3000);
    EXPECT_EQ(angleAt(unit.jog(), 1), 4500);
    reply = unit.exchange({0x34, 0x06, 0xFF, 0xFF, 100, 0, 0});  // by -2.50, +1.00
    EXPECT_EQ(angleAt(reply, 1), 4250);
    EXPECT_EQ(angleAt(reply, 4), 600);
    unit.advance(3000);
    EXPECT_EQ(unit.exchange({0x82}), (std::vector<Byte>{0x82, 0x66, 0xEF, 0xFF, 0xA8, 0xFD, 0xFF}));
    EXPECT_EQ(angleAt(unit.jog(), 1), 0) << "aligned here reads 0";
    unit.exchange({0x84});
    reply = unit.exchange({0x35});
    EXPECT_EQ(angleAt(reply, 1), 0);

    // The stop bit, or any other command, ends a move on the way.
    unit.advance(500);
    unit.jog(0x02);
    unit.advance(2000);
    EXPECT_GT(angleAt(unit.jog(), 1), 0);
    unit.exchange({0x33, 0x28, 0xDC, 0xFF, 0, 0, 0});  // -90.00
    unit.advance(300);
    unit.exchange({0x9A});
    unit.advance(3000);
    EXPECT_GT(angleAt(unit.jog(), 1), -9000);

    // Jogging CW stops at the 170.00 soft limit; the override goes on to the end.
    for (int i = 0; i < 160; ++i) {
        unit.advance(100);
        report = unit.jog(i < 120 ? 0x80 : 0x84, 255, 0);
        if (i == 119) {
            EXPECT_EQ(angleAt(report, 1), 17000);
            EXPECT_EQ(report[7] & 0xA0, 0x80) << "soft-limit bit, not the hard one";
        }
    }
    EXPECT_EQ(report[9] & 0x10, 0x10) << "override shows in status byte C";
    EXPECT_EQ(angleAt(report, 1), 18000);
    EXPECT_EQ(report[7] & 0x20, 0x20) << "CW hard-limit bit";
    EXPECT_EQ(unit.exchange({0x81, 0}), (std::vector<Byte>{0x81, 0, 0x50, 0x46, 0x00}));
    EXPECT_EQ(unit.exchange({0x81, 0x83}), (std::vector<Byte>{0x81, 3, 0xCC, 0xDE, 0xFF}));

    // Turning without end: no limit bits, the reading wraps.
    unit.exchange({0x95, 0x10});
    for (int i = 0; i < 20; ++i) {
        unit.advance(100);
        report = unit.jog(0x80, 255, 0);
    }
    EXPECT_EQ(report[7] & 0xF0, 0);
    EXPECT_LT(angleAt(report, 1), 18000);
}

TEST(UnitMotion, FaultsLatchUntilResetAndArmedOnesComeBackWhenDriven) {
    UnitHarness unit;
    unit.unit.state().motion.latchFault(Fault::PanTimeout);
    unit.unit.state().motion.latchFault(Fault::TiltDirection);
    unit.exchange({0x33, 0xB8, 0x0B, 0, 0xB8, 0x0B, 0});
    unit.advance(2000);
    auto report = unit.jog();
    EXPECT_EQ(angleAt(report, 1), 0) << "a faulted axis does not move";
    EXPECT_EQ(report[7] & 0x0C, 0x08);
    EXPECT_EQ(report[8] & 0x0C, 0x04);
    report = unit.jog(0x01);
    EXPECT_EQ(report[7] & 0x0C, 0);
    EXPECT_EQ(report[8] & 0x0C, 0);

    unit.unit.state().motion.armFault(Fault::PanTimeout);
    EXPECT_EQ(unit.jog()[7] & 0x08, 0) << "not before the axis is driven";
    EXPECT_EQ(unit.jog(0x80, 100, 0)[7] & 0x08, 0x08);
    EXPECT_EQ(unit.jog(0x01)[7] & 0x08, 0);
    EXPECT_EQ(unit.jog(0, 0, 100)[7] & 0x08, 0) << "driving tilt leaves pan alone";
    EXPECT_EQ(unit.jog(0x80, 100, 0)[7] & 0x08, 0x08);
}

TEST(UnitMotion, TourVisitsItsStepsUntilAJogOrTheCommTimeoutStopsIt) {
    UnitHarness unit;
    unit.exchange({0x41, 0, 0xE8, 0x03, 0, 0, 0, 0});  // 10.00
    unit.exchange({0x41, 1, 0xD0, 0x07, 0, 0, 0, 0});  // 20.00
    unit.exchange({0x52, 0, 0, 2});                    // preset 0, dwell 2 s
    unit.exchange({0x52, 0, 1, 1});                    // preset 1, dwell 1 s
    EXPECT_EQ(unit.exchange({0x37, 0}), (std::vector<Byte>{0x37, 0}));
    const std::pair<int, std::int32_t> visits[] = {
        {1000, 1000}, {1500, 1000}, {1500, 2000}, {2000, 1000}};
    for (auto [ms, pan] : visits) {
        unit.advance(ms, true);  // speed 0 jogs do not end it
        const auto report = unit.jog();
        EXPECT_EQ(report[9] & 0x40, 0x40) << "executing bit";
        EXPECT_EQ(angleAt(report, 1), pan);
    }
    unit.jog(0x80, 10, 0);
    EXPECT_EQ(unit.jog()[9] & 0x40, 0);

    unit.exchange({0x96, 2});
    unit.exchange({0x37, 0});
    unit.advance(1000);
    EXPECT_TRUE(unit.unit.state().tourRunner.running());
    unit.advance(1500);
    EXPECT_FALSE(unit.unit.state().tourRunner.running()) << "silent for 2 s";
}

TEST(UnitMotion, LensesAndCameraBytes) {
    UnitHarness unit;
    // Bytes sent to the cameras come back on later reports: counts at 14, 15.
    const auto cameraBytes = [&unit] {
        const auto r = unit.jog();
        EXPECT_EQ(r.size(), 16u + r.at(14) + r.at(15));
        const auto second = r.begin() + 16 + r.at(14);
        return std::array{std::vector<Byte>(r.begin() + 16, second),
                          std::vector<Byte>(second, r.end())};
    };
    unit.exchange({0x62, 6, 0x81, 0x01, 0x04, 0x07, 0x02, 0xFF});  // zoom tele
    EXPECT_TRUE(cameraBytes()[0].empty()) << "not before the response time-out";
    unit.advance(100);
    EXPECT_EQ(cameraBytes()[0], (std::vector<Byte>{0x90, 0x41, 0xFF}));
    unit.advance(200);
    EXPECT_EQ(cameraBytes()[0], (std::vector<Byte>{0x90, 0x51, 0xFF}));
    EXPECT_TRUE(cameraBytes()[0].empty()) << "each byte is delivered once";
    unit.exchange({0x62, 5, 0x81, 0x09, 0x04, 0x47, 0xFF});  // zoom inquiry
    unit.exchange({0x62, 0x85, 'P', 'W', 'R', '?', 13});     // ASCII to camera 2
    unit.advance(200);
    const auto both = cameraBytes();
    // Zoom 128 of 255 is 0x2020 in the camera's range, one nibble a byte.
    EXPECT_EQ(both[0], (std::vector<Byte>{0x90, 0x50, 0x02, 0x00, 0x02, 0x00, 0xFF}));
    EXPECT_EQ(both[1], (std::vector<Byte>{'P', 'W', 'R', '?', 13}));

    std::vector<Byte> text{0x62, 60};
    for (int i = 0; i < 60; ++i) {
        text.push_back(static_cast<Byte>('A' + i % 26));
    }
    unit.exchange({0x65, 50, 10});  // camera 1 answers after 400 ms
    unit.exchange(text);
    unit.advance(300);
    EXPECT_TRUE(cameraBytes()[0].empty());
    unit.advance(200);
    std::vector<Byte> received;
    for (int i = 0; i < 3; ++i) {
        const auto bytes = cameraBytes()[0];
        EXPECT_LE(bytes.size(), 24u);
        received.insert(received.end(), bytes.begin(), bytes.end());
    }
    EXPECT_EQ(received, std::vector<Byte>(text.begin() + 2, text.end()));
    unit.exchange({0x60, 0x00, 0x01});  // camera 1 port off
    unit.exchange({0x62, 2, 'h', 'i'});
    unit.advance(1000);
    EXPECT_TRUE(cameraBytes()[0].empty());

    for (int i = 0; i < 10; ++i) {
        unit.advance(100);
        unit.jog(0, 0, 0, 201);  // zoom 1 up at magnitude 100
    }
    auto report = unit.jog();
    EXPECT_GT(report[10], 200);
    EXPECT_EQ(report[11], 128);
    unit.exchange({0x3A, 0x9F, 0x86, 0x01, 0x9F, 0x86, 0x01, 10, 20, 30, 40});
    unit.advance(3000);
    report = unit.jog();
    EXPECT_EQ(std::vector<Byte>(report.begin() + 10, report.begin() + 14),
              (std::vector<Byte>{10, 20, 30, 40}));
}

}  // namespace
}  // namespace halvex::sim::testing
