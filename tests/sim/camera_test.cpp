// Bytes sent to a camera come back on the following jog reports.

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

// Camera data of a jog report: counts at bytes 14 and 15, then the bytes.
struct CameraBytes {
    std::vector<Byte> first;
    std::vector<Byte> second;
};

CameraBytes cameraBytes(const std::vector<Byte>& report) {
    const std::size_t c1 = report.at(14);
    const std::size_t c2 = report.at(15);
    EXPECT_EQ(report.size(), 16 + c1 + c2);
    return {std::vector<Byte>(report.begin() + 16, report.begin() + 16 + c1),
            std::vector<Byte>(report.begin() + 16 + c1, report.end())};
}

TEST(UnitCameras, ViscaCommandIsAcknowledgedThenCompleted) {
    UnitHarness unit;
    // Zoom tele to camera 1: 81 01 04 07 02 FF.
    EXPECT_EQ(unit.exchange({0x62, 6, 0x81, 0x01, 0x04, 0x07, 0x02, 0xFF}),
              std::vector<Byte>{0x62});
    EXPECT_TRUE(cameraBytes(unit.jog()).first.empty()) << "not before the response time-out";
    unit.advance(100);
    auto bytes = cameraBytes(unit.jog());
    EXPECT_EQ(bytes.first, (std::vector<Byte>{0x90, 0x41, 0xFF}));
    EXPECT_TRUE(bytes.second.empty());
    unit.advance(200);
    EXPECT_EQ(cameraBytes(unit.jog()).first, (std::vector<Byte>{0x90, 0x51, 0xFF}));
    EXPECT_TRUE(cameraBytes(unit.jog()).first.empty()) << "each byte is delivered once";
}

TEST(UnitCameras, ZoomInquiryAnswersFromTheLensAndAsciiIsEchoedOnCamera2) {
    UnitHarness unit;
    unit.exchange({0x62, 5, 0x81, 0x09, 0x04, 0x47, 0xFF});
    const Byte text[] = {'P', 'W', 'R', '?', 13};
    std::vector<Byte> toCamera2(2 + std::size(text));
    toCamera2[0] = 0x62;
    toCamera2[1] = 0x80 | 5;
    std::copy(std::begin(text), std::end(text), toCamera2.begin() + 2);
    unit.exchange(toCamera2);
    unit.advance(200);
    const auto bytes = cameraBytes(unit.jog());
    // Zoom 128 of 255 is 0x2020 in the camera's range, one nibble a byte.
    EXPECT_EQ(bytes.first, (std::vector<Byte>{0x90, 0x50, 0x02, 0x00, 0x02, 0x00, 0xFF}));
    EXPECT_EQ(bytes.second, std::vector<Byte>(std::begin(text), std::end(text)));
}

TEST(UnitCameras, LongAnswersAreSpreadOver24BytesAReport) {
    UnitHarness unit;
    std::vector<Byte> message{0x62, 60};
    for (int i = 0; i < 60; ++i) {
        message.push_back(static_cast<Byte>('A' + i % 26));
    }
    unit.exchange(message);
    unit.advance(200);
    std::vector<Byte> received;
    for (int report = 0; report < 3; ++report) {
        const auto bytes = cameraBytes(unit.jog()).first;
        EXPECT_LE(bytes.size(), 24u);
        received.insert(received.end(), bytes.begin(), bytes.end());
    }
    EXPECT_EQ(received, std::vector<Byte>(message.begin() + 2, message.end()));
}

TEST(UnitCameras, ResponseTimeoutDelaysTheAnswerAndADisabledPortSwallowsData) {
    UnitHarness unit;
    unit.exchange({0x65, 50, 10});  // camera 1 waits 400 ms
    unit.exchange({0x62, 2, 'h', 'i'});
    unit.advance(300);
    EXPECT_TRUE(cameraBytes(unit.jog()).first.empty());
    unit.advance(200);
    EXPECT_EQ(cameraBytes(unit.jog()).first, (std::vector<Byte>{'h', 'i'}));

    unit.exchange({0x60, 0x00, 0x01});  // camera 1 port disabled
    unit.exchange({0x62, 2, 'h', 'i'});
    unit.advance(1000);
    EXPECT_TRUE(cameraBytes(unit.jog()).first.empty());

    // A length byte longer than the data is a short command: refused.
    EXPECT_EQ(unit.send({0x62, 5, 'a'}).at(0).start, kNak);
}

}  // namespace
}  // namespace halvex::sim::testing
