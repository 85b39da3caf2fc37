// A Pelco-D keyboard driving the virtual unit through the bridge, over a
// real TCP socket and over a pseudo-terminal: what reaches the line for each
// frame, and the jog stopped when the keyboard falls silent or goes away.

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpSocket>
#include <ostream>

#include "remote/pelco_d/pelco_d_bridge.h"
#include "tests/session/session_rig.h"
#include "tests/support/pty_pair.h"

namespace halvex::testing {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Messages = std::vector<std::vector<Byte>>;

// What a jog message asks of pan, tilt and camera 1's lens; a direction only
// counts while its axis moves.
struct Jog {
    std::int64_t pan = 0;
    bool right = false;
    std::int64_t tilt = 0;
    bool up = false;
    std::int64_t zoom = 0;
    std::int64_t focus = 0;

    bool operator==(const Jog&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Jog& j) {
        return out << "pan " << j.pan << (j.right ? " right" : "") << ", tilt " << j.tilt
                   << (j.up ? " up" : "") << ", zoom " << j.zoom << ", focus " << j.focus;
    }
};

const Jog kAtRest{};

Jog jogOf(const std::vector<Byte>& message) {
    namespace jog = vocab::jog;
    Jog seen{vocab::get(message, jog::kPanSpeed),   test::isSet(message, jog::kPanCw),
             vocab::get(message, jog::kTiltSpeed),  test::isSet(message, jog::kTiltUp),
             vocab::get(message, jog::kLensJog[0]), vocab::get(message, jog::kLensJog[1])};
    seen.right = seen.right && seen.pan != 0;
    seen.up = seen.up && seen.tilt != 0;
    return seen;
}

std::vector<Byte> goToPreset(int preset) {
    return test::message<vocab::GoToPreset>({{vocab::go_to_preset::kPreset, preset}});
}

const Bytes kStop{0xFF, 0x01, 0x00, 0x00, 0x00, 0x00, 0x01};
const Bytes kPanRight20{0xFF, 0x01, 0x00, 0x02, 0x20, 0x00, 0x23};

class PelcoDBridgeTest : public SessionTest {
  protected:
    PelcoDBridgeTest() { EXPECT_TRUE(bridge.listen(QHostAddress::LocalHost, 0)); }

    bool connectClient(QTcpSocket& client) {
        const int before = bridge.clientCount();
        client.connectToHost(QHostAddress::LocalHost, bridge.serverPort());
        return client.waitForConnected(2000) &&
               runUntil([&] { return bridge.clientCount() == before + 1; }, 2000);
    }
    void send(const Bytes& bytes, QTcpSocket& client) {
        client.write(reinterpret_cast<const char*>(bytes.data()),
                     static_cast<qint64>(bytes.size()));
        client.flush();
    }
    void send(const Bytes& bytes) { send(bytes, keyboard); }

    // The jog messages sent since `from`.
    std::vector<Jog> jogsSince(std::size_t from) const {
        std::vector<Jog> jogs;
        const auto& frames = line.frames();
        for (std::size_t i = from; i < frames.size(); ++i) {
            if (frames[i].message.at(0) == vocab::JogMessage::kCode) {
                jogs.push_back(jogOf(frames[i].message));
            }
        }
        return jogs;
    }
    // The first jog message after `from` that is `want`, or the last one
    // seen when none is within two seconds.
    Jog jogAfter(std::size_t from, const Jog& want) {
        Jog last{-1, false, -1, false, -1, -1};
        runUntil(
            [&] {
                for (const Jog& seen : jogsSince(from)) {
                    last = seen;
                    if (seen == want) {
                        return true;
                    }
                }
                return false;
            },
            2000);
        return last;
    }
    // Whether every one of the next `count` jog messages is at rest.
    bool staysAtRest(int count = 30) {
        const std::size_t from = line.frames().size();
        runUntil([&] { return jogsSince(from).size() >= static_cast<std::size_t>(count); }, 2000);
        const auto jogs = jogsSince(from);
        return jogs.size() >= static_cast<std::size_t>(count) &&
               std::ranges::all_of(jogs, [](const Jog& j) { return j == kAtRest; });
    }

    PelcoDBridge bridge{session};
    QTcpSocket keyboard;
};

// Frames as published command lists give them for camera 1, and what the
// unit is asked for.
struct FrameCase {
    const char* name;
    Bytes frames;
    Jog jog;            // the jog that follows
    Messages commands;  // the unit's other messages that follow
};

TEST_F(PelcoDBridgeTest, EachKeyboardFrameReachesTheLineAsTheUnitsJogOrPresetMessage) {
    namespace store = vocab::store_preset;
    const int tele = lensJogByte(127);
    const int wide = lensJogByte(-127);
    const FrameCase cases[] = {
        {"right 0x20", kPanRight20, {128, true, 0, false, 0, 0}, {}},
        {"left 0x23", {0xFF, 0x01, 0x00, 0x04, 0x23, 0x00, 0x28}, {140, false, 0, false, 0, 0}, {}},
        {"up 0x23", {0xFF, 0x01, 0x00, 0x08, 0x00, 0x23, 0x2C}, {0, false, 140, true, 0, 0}, {}},
        {"down 0x23", {0xFF, 0x01, 0x00, 0x10, 0x00, 0x23, 0x34}, {0, false, 140, false, 0, 0}, {}},
        {"up-left slowest",
         {0xFF, 0x01, 0x00, 0x0C, 0x01, 0x01, 0x0F},
         {4, false, 4, true, 0, 0},
         {}},
        {"down-right 0x3F",
         {0xFF, 0x01, 0x00, 0x12, 0x3F, 0x3F, 0x91},
         {252, true, 252, false, 0, 0},
         {}},
        {"right turbo",
         {0xFF, 0x01, 0x00, 0x02, 0xFF, 0x00, 0x02},
         {255, true, 0, false, 0, 0},
         {}},
        {"up, data 2 0xFF",
         {0xFF, 0x01, 0x00, 0x08, 0x00, 0xFF, 0x08},
         {0, false, 255, true, 0, 0},
         {}},
        {"zoom tele",
         {0xFF, 0x01, 0x00, 0x20, 0x00, 0x00, 0x21},
         {0, false, 0, false, tele, 0},
         {}},
        {"zoom wide",
         {0xFF, 0x01, 0x00, 0x40, 0x00, 0x00, 0x41},
         {0, false, 0, false, wide, 0},
         {}},
        {"focus far",
         {0xFF, 0x01, 0x00, 0x80, 0x00, 0x00, 0x81},
         {0, false, 0, false, 0, tele},
         {}},
        {"focus near",
         {0xFF, 0x01, 0x01, 0x00, 0x00, 0x00, 0x02},
         {0, false, 0, false, 0, wide},
         {}},
        {"zoom speed 1, zoom tele",
         {0xFF, 0x01, 0x00, 0x25, 0x00, 0x01, 0x27, 0xFF, 0x01, 0x00, 0x20, 0x00, 0x00, 0x21},
         {0, false, 0, false, lensJogByte(63), 0},
         {}},
        {"zoom speed 3, zoom wide",
         {0xFF, 0x01, 0x00, 0x25, 0x00, 0x03, 0x29, 0xFF, 0x01, 0x00, 0x40, 0x00, 0x00, 0x41},
         {0, false, 0, false, wide, 0},
         {}},
        {"call preset 1", {0xFF, 0x01, 0x00, 0x07, 0x00, 0x01, 0x09}, kAtRest, {goToPreset(1)}},
        {"call preset 30", {0xFF, 0x01, 0x00, 0x07, 0x00, 0x1E, 0x26}, kAtRest, {goToPreset(30)}},
        {"set preset 1",
         {0xFF, 0x01, 0x00, 0x03, 0x00, 0x01, 0x05},
         kAtRest,
         {test::message<vocab::StoreCurrentPosition>(
             {{vocab::store_current_position::kPreset, 1}})}},
        {"clear preset 1",
         {0xFF, 0x01, 0x00, 0x05, 0x00, 0x01, 0x07},
         kAtRest,
         {test::message<vocab::StorePreset>(
             {{store::kPreset, 1}, {store::kPan, 0}, {store::kTilt, 0}})}},
        // Nothing: the unit's home position, a flip, another camera, iris open.
        {"call preset 31", {0xFF, 0x01, 0x00, 0x07, 0x00, 0x1F, 0x27}, kAtRest, {}},
        {"flip", {0xFF, 0x01, 0x00, 0x07, 0x00, 0x21, 0x29}, kAtRest, {}},
        {"right, camera 2", {0xFF, 0x02, 0x00, 0x02, 0x20, 0x00, 0x24}, kAtRest, {}},
        {"iris open", {0xFF, 0x01, 0x02, 0x00, 0x00, 0x00, 0x03}, kAtRest, {}},
    };
    ASSERT_TRUE(connect());
    ASSERT_TRUE(connectClient(keyboard));
    for (const FrameCase& c : cases) {
        SCOPED_TRACE(c.name);
        const std::size_t mark = line.frames().size();
        send(c.frames);
        if (c.jog == kAtRest) {
            EXPECT_TRUE(staysAtRest());
        } else {
            EXPECT_EQ(jogAfter(mark, c.jog), c.jog);
        }
        runUntil([&] { return commandsSince(mark).size() >= c.commands.size(); }, 2000);
        EXPECT_EQ(commandsSince(mark), c.commands);
        send(kStop);
        EXPECT_EQ(jogAfter(line.frames().size(), kAtRest), kAtRest);
        settle();
    }
}

TEST_F(PelcoDBridgeTest, ABadFrameIsDroppedAndTheNextGoodOneTakenAcrossTheReads) {
    ASSERT_TRUE(connect());
    ASSERT_TRUE(connectClient(keyboard));
    // Noise, pan right with its checksum one off, tilt up 0x10: in pieces.
    const Bytes stream{0x13, 0x37, 0xFF, 0x01, 0x00, 0x02, 0x20, 0x00,
                       0x24, 0xFF, 0x01, 0x00, 0x08, 0x00, 0x10, 0x19};
    const std::size_t mark = line.frames().size();
    for (std::size_t at = 0; at < stream.size(); at += 3) {
        send(Bytes(stream.begin() + static_cast<std::ptrdiff_t>(at),
                   stream.begin() + static_cast<std::ptrdiff_t>(std::min(at + 3, stream.size()))));
        runUntil([] { return false; }, 5);
    }
    const Jog up{0, false, 64, true, 0, 0};
    EXPECT_EQ(jogAfter(mark, up), up);
    EXPECT_TRUE(std::ranges::none_of(jogsSince(mark), [](const Jog& j) { return j.pan != 0; }));
}

TEST_F(PelcoDBridgeTest, TheJogStopsWhenItsKeyboardFallsSilentOrGoesAway) {
    ASSERT_TRUE(connect());
    ASSERT_TRUE(connectClient(keyboard));
    QSignalSpy told(&bridge, &PelcoDBridge::commandHandled);
    const Jog right{128, true, 0, false, 0, 0};

    // Repeated, the jog goes on past the refresh time.
    bridge.setRefreshMs(400);
    std::size_t mark = line.frames().size();
    for (int i = 0; i < 12; ++i) {
        send(kPanRight20);
        runUntil([] { return false; }, 50);
    }
    EXPECT_EQ(jogAfter(mark, right), right);
    EXPECT_TRUE(std::ranges::none_of(jogsSince(mark), [](const Jog& j) { return j == kAtRest; }));
    EXPECT_EQ(told.count(), 1);  // repeats are told once

    // Silent, it stops within the refresh time.
    constexpr int kRefreshMs = 150;
    bridge.setRefreshMs(kRefreshMs);
    mark = line.frames().size();
    QElapsedTimer silence;
    silence.start();
    send(kPanRight20);
    runUntil([&] { return !jogsSince(mark).empty() && jogsSince(mark).back() == kAtRest; }, 2000);
    EXPECT_GE(silence.elapsed(), kRefreshMs * 9 / 10);
    EXPECT_LE(silence.elapsed(), kRefreshMs + 150);
    EXPECT_EQ(told.takeLast().at(0).toString(), QStringLiteral("stop: no frame for 150 ms"));

    // With no refresh time, it runs until the keyboard's connection goes.
    bridge.setRefreshMs(0);
    QSignalSpy clients(&bridge, &PelcoDBridge::clientCountChanged);
    send(kPanRight20);
    runUntil([] { return false; }, 2 * kRefreshMs);
    mark = line.frames().size();
    EXPECT_EQ(jogAfter(mark, right), right);
    keyboard.abort();
    EXPECT_EQ(jogAfter(mark, kAtRest), kAtRest);
    ASSERT_TRUE(runUntil([&] { return !clients.isEmpty(); }, 2000));
    EXPECT_EQ(clients.takeFirst().at(0).toInt(), 0);
    EXPECT_EQ(told.takeLast().at(0).toString(), QStringLiteral("stop: the keyboard went away"));
}

TEST_F(PelcoDBridgeTest, ARefusedFrameMovesNothingAndSaysWhy) {
    ASSERT_TRUE(connectClient(keyboard));
    QSignalSpy told(&bridge, &PelcoDBridge::commandHandled);
    const auto lastTold = [&] {
        runUntil([&] { return !told.isEmpty(); }, 2000);
        return told.isEmpty() ? QString() : told.takeLast().at(0).toString();
    };
    send(kPanRight20);
    EXPECT_EQ(lastTold(), QStringLiteral("pan right 32: refused: the unit is offline"));

    ASSERT_TRUE(connect());
    JogDemand operatorLeft;
    operatorLeft.pan = {90, false};
    session.jogSources().apply(JogSource::Keyboard, operatorLeft);
    const std::size_t mark = line.frames().size();
    send(kPanRight20);
    EXPECT_EQ(lastTold(), QStringLiteral("pan right 32: refused: the operator is jogging"));
    send({0xFF, 0x01, 0x00, 0x07, 0x00, 0x02, 0x0A});
    EXPECT_EQ(lastTold(), QStringLiteral("call preset 2: refused: the operator is jogging"));
    const Jog operatorJog{90, false, 0, false, 0, 0};
    EXPECT_EQ(jogAfter(mark, operatorJog), operatorJog);
    EXPECT_TRUE(
        std::ranges::all_of(jogsSince(mark), [&](const Jog& j) { return j == operatorJog; }));
    EXPECT_TRUE(commandsSince(mark).empty());

    // The operator lets go: the keyboard's next repeat moves.
    session.jogSources().release(JogSource::Keyboard);
    send(kPanRight20);
    EXPECT_EQ(lastTold(), QStringLiteral("pan right 32"));
    const Jog right{128, true, 0, false, 0, 0};
    EXPECT_EQ(jogAfter(line.frames().size(), right), right);
}

TEST_F(PelcoDBridgeTest, ASerialKeyboardDrivesTheJogUntilItsLineIsLost) {
    PtyPair adapter;
    ASSERT_TRUE(adapter.ok());
    EXPECT_FALSE(bridge.openSerial(adapter.slavePath(), 1200));
    ASSERT_TRUE(bridge.openSerial(adapter.slavePath(), PelcoDBridge::kDefaultBaudRate))
        << bridge.errorString().toStdString();
    ASSERT_TRUE(bridge.setAddress(7));
    EXPECT_FALSE(bridge.setAddress(256));
    bridge.setRefreshMs(0);
    ASSERT_TRUE(connect());

    // Camera 7, down-left at 0x10 and 0x08, in two pieces.
    std::size_t mark = line.frames().size();
    adapter.write({0xFF, 0x07, 0x00});
    runUntil([] { return false; }, 10);
    adapter.write({0x14, 0x10, 0x08, 0x33});
    const Jog downLeft{64, false, 32, false, 0, 0};
    EXPECT_EQ(jogAfter(mark, downLeft), downLeft);

    QSignalSpy lost(&bridge, &PelcoDBridge::serialLost);
    mark = line.frames().size();
    adapter.closeUnitSide();
    EXPECT_EQ(jogAfter(mark, kAtRest), kAtRest);
    EXPECT_TRUE(runUntil([&] { return !lost.isEmpty(); }, 2000));
    EXPECT_FALSE(bridge.serialOpen());
}

}  // namespace
}  // namespace halvex::testing
