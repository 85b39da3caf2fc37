// What the unit does with the bytes on its line: addressing, stuffing, bad
// and broken frames, random input, the line faults and the command line.
// halvex-sim on its pseudo-terminal, unplugged, is run in the connection
// tests.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <random>
#include <sstream>

#include "sim/line_control.h"
#include "sim/line_faults.h"
#include "sim/pty_unit.h"
#include "sim/sim_command_line.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

std::vector<Byte> frame(Byte address, const std::vector<Byte>& message, Byte lrcStart) {
    return encodeFrame(kStx, address, message, lrcStart);
}

namespace v = vocab;
using test::message;

TEST(UnitWire, EachInputGetsItsReplyAndRefusedOnesMoveNothing) {
    struct Case {
        const char* what;
        std::vector<Byte> wire;
        Byte start;  // of the one reply; 0 for none
        std::vector<Byte> reply;
    };
    const auto ask = message<v::OffsetsRequest>();
    const auto offsets = message<v::AngleOffsets>();
    const auto move = message<v::AbsoluteMove>({{v::absolute_move::kPan, 10000}});
    const std::vector<Byte> shortMove(move.begin(), move.end() - 1);
    const Byte unknown = 0xEE;
    auto cutShort = message<v::CameraTransmit>({{v::camera_transmit::kCount, 5}}, 3);
    cutShort[v::camera_transmit::kData] = 'a';
    const auto fourthTour =
        message<v::TourStepCountRequest>({{v::tour_step_count_request::kTour, 3}});
    // A refused frame is answered by a NAK with its code.
    const Case cases[] = {
        {"another unit's address", frame(3, ask, 3), 0, {}},
        {"own address", frame(7, ask, 7), kAck, offsets},
        {"broadcast", frame(0, ask, 0), kAck, offsets},
        {"bad LRC", frame(7, move, 85), kNak, {move[0]}},
        {"short payload", frame(7, shortMove, 7), kNak, {move[0]}},
        {"unknown code", frame(7, {unknown, 1, 2, 3}, 7), kNak, {unknown}},
        {"camera data cut short", frame(7, cutShort, 7), kNak, {cutShort[0]}},
        {"no fourth tour", frame(7, fourthTour, 7), kNak, {fourthTour[0]}},
        {"noise and a frame cut off by the next start",
         joined({'U', kEtx, 255, kStx, 7, v::OffsetsRequest::kCode, kEsc}, frame(7, ask, 7)), kAck,
         offsets},
    };
    UnitOptions options;
    options.id = 7;
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        UnitHarness unit(options);
        unit.unit.receiveFromConsole(c.wire.data(), c.wire.size());
        const auto frames = decodeFrames(unit.unit.takeOutput());
        ASSERT_EQ(frames.size(), c.start ? 1u : 0u);
        for (const DecodedFrame& reply : frames) {
            EXPECT_EQ(reply.start, c.start);
            EXPECT_EQ(reply.address, 7);
            EXPECT_TRUE(reply.lrcGood) << "reply LRC must start from the unit's own id";
            EXPECT_EQ(reply.message, c.reply);
        }
        unit.advance(2000);
        EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 0) << "no refused frame may move it";
    }
}

TEST(UnitWire, ReplyBytesAreStuffedAndSplitFramesWaitForTheirEnd) {
    UnitHarness unit;
    // Offsets that are the frame's own control bytes.
    unit.exchange(message<v::SetAngleOffsets>(
        {{v::set_angle_offsets::kPan, kStx}, {v::set_angle_offsets::kTilt, kEsc}}));
    const auto wire = frame(0, message<v::OffsetsRequest>(), 0);
    for (std::size_t i = 0; i + 1 < wire.size(); ++i) {
        unit.unit.receiveFromConsole(&wire[i], 1);
        EXPECT_TRUE(unit.unit.takeOutput().empty());
    }
    unit.unit.receiveFromConsole(&wire.back(), 1);
    // An escaped byte has its top bit set; the LRC is of the bytes unescaped.
    const Byte code = v::AngleOffsets::kCode, stx = kStx | 128, esc = kEsc | 128;
    const std::vector<Byte> expected{
        kAck, 0, code, kEsc, stx, 0, 0, kEsc, esc, 0, 0, Byte(code ^ kStx ^ kEsc), kEtx};
    EXPECT_EQ(unit.unit.takeOutput(), expected);

    // A new address takes effect after the reply, which still comes from 0.
    const auto address = [](int id) {
        return message<v::UnitAddress>({{v::unit_address::kId, id}});
    };
    EXPECT_EQ(unit.exchange(address(12)), address(12));
    unit.id = 12;
    EXPECT_EQ(unit.exchange(v::readRequest<v::UnitAddress>()), address(12));
}

TEST(UnitWire, RandomInputNeitherCrashesNorStopsTheUnit) {
    UnitOptions options;
    options.alignmentMs = options.homingMs = 50;
    UnitHarness harness(options);
    Unit& unit = harness.unit;
    std::mt19937 random(12345);
    std::int64_t now = 0;
    for (int round = 0; round < 50000; ++round) {
        // Any command code with any payload, framed, or raw noise.
        std::vector<Byte> bytes(1 + random() % 24);
        std::generate(bytes.begin(), bytes.end(), [&random] { return Byte(random()); });
        bytes[0] = static_cast<Byte>(0x30 + random() % 0x70);
        const auto wire = random() % 3 ? frame(random() % 4 ? 0 : 1, bytes, 0) : bytes;
        unit.receiveFromConsole(wire.data(), wire.size());
        unit.advanceTo(now += random() % 30);
        unit.takeOutput();
    }
    // Whatever the noise left behind, a clean frame after an ETX is answered.
    unit.advanceTo(now + 60000);
    unit.takeOutput();
    unit.receiveFromConsole(&kEtx, 1);
    harness.id = unit.state().settings.unitId;  // the noise may have changed it
    EXPECT_EQ(harness.exchange(v::readRequest<v::CommTimeout>()).at(0), v::CommTimeout::kCode);
}

TEST(UnitWire, LineFaultsCorruptAddNoiseDropAndFallSilent) {
    const auto replies = [](int count) {
        std::vector<std::vector<Byte>> frames;
        for (int i = 0; i < count; ++i) {
            // The LRC, the code against 128 + i, is a control byte for some i
            // (an ACK for i = 3) and must be stuffed.
            frames.push_back(encodeFrame(kAck, 0, {v::OffsetsRequest::kCode, Byte(128 + i)}, 0));
        }
        return frames;
    };
    // Line faults with one option set.
    const auto only = [](double LineFaultOptions::*option, double value) {
        LineFaultOptions options;
        options.*option = value;
        return LineFaults(options);
    };
    auto frames = decodeFrames(only(&LineFaultOptions::corrupt, 1.0).apply(replies(40)));
    ASSERT_EQ(frames.size(), 40u);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_FALSE(frames[i].lrcGood) << i;
        EXPECT_EQ(frames[i].message.at(1), 128 + i) << "payload untouched";
    }
    const auto wire = only(&LineFaultOptions::noise, 1.0).apply(replies(50));
    EXPECT_GT(wire.size(), 50 * 6u);
    frames = decodeFrames(wire);
    EXPECT_EQ(std::count_if(frames.begin(), frames.end(), [](auto& f) { return f.lrcGood; }), 50);
    const auto kept = decodeFrames(only(&LineFaultOptions::drop, 0.5).apply(replies(200))).size();
    EXPECT_TRUE(kept > 50u && kept < 150u) << kept;
    LineFaultOptions options;
    options.silentAfter = 3;
    LineFaults silence(options);
    EXPECT_EQ(decodeFrames(silence.apply(replies(2))).size(), 2u);
    EXPECT_EQ(decodeFrames(silence.apply(replies(5))).size(), 1u);
    EXPECT_TRUE(silence.apply(replies(5)).empty());
}

TEST(LineControl, EveryCommandAndItsValuesAndWhatIsRefused) {
    using K = LineCommand::Kind;
    const std::pair<const char*, LineCommand> good[] = {
        {"noise 0.25", {K::Noise, 0.25, 0}}, {"corrupt 1", {K::Corrupt, 1.0, 0}},
        {"  drop   0  ", {K::Drop, 0.0, 0}}, {"chatter 2", {K::Chatter, 0, 2}},
        {"chatter 0", {K::Chatter, 0, 0}},   {"pace 9600", {K::Pace, 0, 9600}},
        {"pace 0", {K::Pace, 0, 0}},         {"silent 4", {K::Silent, 0, 4}}};
    for (const auto& [text, expected] : good) {
        SCOPED_TRACE(text);
        const auto parsed = parseLineCommand(text);
        ASSERT_TRUE(std::holds_alternative<LineCommand>(parsed)) << std::get<std::string>(parsed);
        const auto& command = std::get<LineCommand>(parsed);
        EXPECT_EQ(command.kind, expected.kind);
        EXPECT_DOUBLE_EQ(command.rate, expected.rate);
        EXPECT_EQ(command.number, expected.number);
    }
    for (const char* bad : {"", "noise", "noise 1.5", "noise -0.1", "noise 0.5x", "pace 10",
                            "pace -1", "chatter 2 3", "silent 4000", "clean now", "louder 3"}) {
        EXPECT_TRUE(std::holds_alternative<std::string>(parseLineCommand(bad))) << bad;
    }

    // Lines come in pieces; one with no end in sight is refused, not kept.
    LineCommandReader reader;
    EXPECT_TRUE(reader.feed("chat", 4).empty());
    auto commands = reader.feed("ter 5\nsil", 10);
    ASSERT_EQ(commands.size(), 1u);
    EXPECT_EQ(std::get<LineCommand>(commands[0]).number, 5);
    const std::string endless(2000, 'x');
    EXPECT_TRUE(reader.feed(endless.data(), endless.size()).empty());
    commands = reader.feed("\nclean\n", 7);
    ASSERT_EQ(commands.size(), 2u);
    EXPECT_EQ(std::get<std::string>(commands[0]), "line too long");
    EXPECT_EQ(std::get<LineCommand>(commands[1]).kind, K::Clean);
}

// The command line split into words, as a shell splits it.
std::variant<SimCommandLine, std::string> parseWords(const char* line) {
    std::istringstream in(line);
    return parseSimCommandLine({std::istream_iterator<std::string>(in), {}});
}

TEST(SimCommandLine, ParsesEveryOptionAndRejectsBadValues) {
    const auto parsed = parseWords(
        "--id 7 --noise 0.1 --corrupt 0.25 --drop 1 --silent-after 5 --fault pan-dir --fault "
        "tilt-timeout -v --tcp 0 "
        "--video 8554 --video-address 0.0.0.0 --video-size 1280x720 --video-rate 30");
    ASSERT_TRUE(std::holds_alternative<SimCommandLine>(parsed));
    const auto& line = std::get<SimCommandLine>(parsed);
    EXPECT_EQ(line.options.unit.id, 7);
    EXPECT_EQ(std::vector<double>(
                  {line.options.line.noise, line.options.line.corrupt, line.options.line.drop}),
              std::vector<double>({0.1, 0.25, 1}));
    EXPECT_EQ(line.options.line.silentAfter, 5u);
    EXPECT_EQ(line.options.faults, (std::vector<Fault>{Fault::PanDirection, Fault::TiltTimeout}));
    EXPECT_TRUE(line.verbose);
    EXPECT_EQ(line.video.port, 8554);
    EXPECT_EQ(line.video.address, "0.0.0.0");
    EXPECT_EQ(std::vector<int>({line.video.width, line.video.height, line.video.rate}),
              std::vector<int>({1280, 720, 30}));
    const auto plain = std::get<SimCommandLine>(parseSimCommandLine({"--video", "0"}));
    EXPECT_EQ(plain.video.address, "127.0.0.1");
    EXPECT_EQ(plain.video.width, 0) << "as the video mode says";
    EXPECT_FALSE(std::get<SimCommandLine>(parseSimCommandLine({})).video.port.has_value());
    for (const char* bad :
         {"--id 100", "--noise 1.5", "--fault pan", "stray", "--id 7x", "--video 65536",
          "--video x", "--video 0 --video-size 1280", "--video 0 --video-size 1281x720",
          "--video 0 --video-size 32x32", "--video 0 --video-size 1280x720x3",
          "--video 0 --video-rate 0", "--video 0 --video-rate 61", "--video-size 640x480",
          "--video-rate 25", "--video-address 10.0.0.1", "--video 0 --video-address"}) {
        EXPECT_TRUE(std::holds_alternative<std::string>(parseWords(bad))) << bad;
    }
    // Each number is taken at both ends of its range and refused one past.
    for (const auto& [low, high, below, above] :
         {std::array{"--id 0", "--id 99", "--id -1", "--id 100"},
          {"--variant 0", "--variant 3", "--variant -1", "--variant 4"},
          {"--tcp 0", "--tcp 65535", "--tcp -1", "--tcp 65536"},
          {"--pace 50", "--pace 4000000", "--pace 49", "--pace 4000001"},
          {"--noise 0", "--corrupt 1", "--drop -0.1", "--drop 1.1"},
          {"--silent-after 0", "--silent-after 1099511627776", "--silent-after -1",
           "--silent-after 1099511627777"},
          {"--video 0 --video-rate 1", "--video 65535 --video-rate 60", "--video -1",
           "--video 0 --video-rate 61"},
          {"--video 0 --video-size 64x64", "--video 0 --video-size 3840x2160",
           "--video 0 --video-size 62x64", "--video 0 --video-size 3840x2162"}}) {
        for (const char* taken : {low, high}) {
            EXPECT_TRUE(std::holds_alternative<SimCommandLine>(parseWords(taken))) << taken;
        }
        for (const char* refused : {below, above}) {
            EXPECT_TRUE(std::holds_alternative<std::string>(parseWords(refused))) << refused;
        }
    }
    // An unknown option is named as such, even as the last word.
    EXPECT_EQ(std::get<std::string>(parseSimCommandLine({"--bogus"})), "unknown option --bogus");
    EXPECT_EQ(std::get<std::string>(parseSimCommandLine({"--id"})), "--id needs a value");
}

// The unit on its pseudo-terminal: how its replies leave, whole or paced.
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
