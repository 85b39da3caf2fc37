// A Pelco-D keyboard driving the virtual unit through the bridge, over a
// real TCP socket and over a pseudo-terminal: what reaches the line for each
// frame, and the jog stopped when the keyboard falls silent or goes away.

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTcpSocket>
#include <array>

#include "remote/pelco_d/pelco_d_bridge.h"
#include "tests/session/session_rig.h"
#include "tests/support/pty_pair.h"

namespace halvex::testing {
namespace {

using Bytes = std::vector<std::uint8_t>;

// Frames written as the published command lists print them: "FF 01 00 ...".
Bytes hex(const char* text) {
    const QByteArray bytes = QByteArray::fromHex(text);
    return Bytes(bytes.begin(), bytes.end());
}

// A jog message's speeds, signed: pan + right, tilt + up; camera 1's zoom and
// focus as their lens jog bytes.
using Jog = std::array<int, 4>;
const Jog kAtRest{};

Jog jogOf(const std::vector<Byte>& message) {
    namespace jog = vocab::jog;
    const auto speed = [&](vocab::Field<vocab::JogMessage> field, bool positive) {
        const auto value = static_cast<int>(vocab::get(message, field));
        return positive ? value : -value;
    };
    return {speed(jog::kPanSpeed, test::isSet(message, jog::kPanCw)),
            speed(jog::kTiltSpeed, test::isSet(message, jog::kTiltUp)),
            speed(jog::kLensJog[0], true), speed(jog::kLensJog[1], true)};
}

const Bytes kStop = hex("FF 01 00 00 00 00 01");
const Bytes kPanRight20 = hex("FF 01 00 02 20 00 23");

class PelcoDBridgeTest : public SessionTest {
  protected:
    // The unit online and a keyboard connected over TCP.
    void SetUp() override {
        ASSERT_TRUE(bridge.listen(QHostAddress::LocalHost, 0));
        ASSERT_TRUE(connect());
        keyboard.connectToHost(QHostAddress::LocalHost, bridge.serverPort());
        ASSERT_TRUE(keyboard.waitForConnected(2000));
        ASSERT_TRUE(runUntil([&] { return bridge.clientCount() == 1; }, 2000));
    }
    void send(const Bytes& bytes) {
        keyboard.write(reinterpret_cast<const char*>(bytes.data()),
                       static_cast<qint64>(bytes.size()));
        keyboard.flush();
    }
    std::vector<Jog> jogsSince(std::size_t from) const {
        std::vector<Jog> jogs;
        for (std::size_t i = from; i < line.frames().size(); ++i) {
            if (line.frames()[i].message.at(0) == vocab::JogMessage::kCode) {
                jogs.push_back(jogOf(line.frames()[i].message));
            }
        }
        return jogs;
    }
    // The first jog message since `from` that is `want`, or the last one
    // seen when none comes within two seconds.
    Jog jogAfter(std::size_t from, const Jog& want) {
        Jog last{-1, -1, -1, -1};
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
    // Whether each of the next ten jog messages is at rest.
    bool staysAtRest() {
        const std::size_t from = line.frames().size();
        const bool ticked = runUntil([&] { return jogsSince(from).size() >= 10; }, 2000);
        return ticked && std::ranges::all_of(jogsSince(from), [](Jog j) { return j == kAtRest; });
    }

    PelcoDBridge bridge{session};
    QTcpSocket keyboard;
    // What the operator is told.
    QSignalSpy told{&bridge, &PelcoDBridge::commandHandled};
};

TEST_F(PelcoDBridgeTest, EachKeyboardFrameReachesTheLineAsTheUnitsJogOrPresetMessage) {
    namespace store = vocab::store_preset;
    const int in = lensJogByte(127);
    const auto goTo = [](int n) {
        return Messages{test::message<vocab::GoToPreset>({{vocab::go_to_preset::kPreset, n}})};
    };
    const auto set = [](int n) {
        return test::message<vocab::StoreCurrentPosition>(
            {{vocab::store_current_position::kPreset, n}});
    };
    const Messages none;
    // Camera 1's frames from published command lists, the jog that follows,
    // the unit's other messages and what the operator is told of them.
    const struct {
        const char* frames;
        Jog jog;
        Messages sent;
        const char* told;
    } cases[] = {
        {"FF 01 00 0C 01 01 0F", {-4, 4}, none, "pan left 1, tilt up 1"},
        {"FF 01 00 12 3F 3F 91", {252, -252}, none, "pan right 63, tilt down 63"},
        {"FF 01 00 04 40 00 45", {-255, 0}, none, "pan left turbo"},  // an older turbo
        // A speed with no way and a way with no speed move nothing.
        {"FF 01 00 02 20 10 33", {128, 0}, none, "pan right 32"},
        {"FF 01 00 08 10 00 19", kAtRest, none, ""},
        {"FF 01 00 20 00 00 21", {0, 0, in, 0}, none, "zoom tele"},
        {"FF 01 00 80 00 00 81", {0, 0, 0, in}, none, "focus far"},
        {"FF 01 00 27 00 00 28 FF 01 01 00 00 00 02",
         {0, 0, 0, lensJogByte(-31)},
         none,
         "focus speed 0; focus near"},
        {"FF 01 00 25 00 01 27 FF 01 00 40 00 00 41",
         {0, 0, lensJogByte(-63), 0},
         none,
         "zoom speed 1; zoom wide"},
        {"FF 01 00 25 00 04 2A", kAtRest, none, "zoom speed 4: ignored (0..3 only)"},
        {"FF 01 00 07 00 1E 26", kAtRest, goTo(30), "call preset 30"},
        // A call ends the keyboard's jog; a set leaves it running.
        {"FF 01 00 02 20 00 23 FF 01 00 07 00 01 09", kAtRest, goTo(1),
         "pan right 32; call preset 1"},
        {"FF 01 00 02 20 00 23 FF 01 00 03 00 02 06",
         {128, 0},
         {set(2)},
         "pan right 32; set preset 2"},
        {"FF 01 00 05 00 01 07",
         kAtRest,
         {test::message<vocab::StorePreset>(
             {{store::kPreset, 1}, {store::kPan, 0}, {store::kTilt, 0}})},
         "clear preset 1"},
        // Nothing: the unit's home position (told again when repeated, as every
        // preset is), another camera, a preset past a byte.
        {"FF 01 00 07 00 1F 27 FF 01 00 07 00 1F 27", kAtRest, none,
         "call preset 31: ignored (presets 0..30 only); call preset 31: ignored (presets 0..30 "
         "only)"},
        {"FF 02 00 02 20 00 24", kAtRest, none, ""},
        {"FF 01 00 07 01 01 0A", kAtRest, none, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.frames);
        const std::size_t mark = line.frames().size();
        told.clear();
        send(hex(c.frames));
        if (c.jog == kAtRest) {
            EXPECT_TRUE(staysAtRest());
        } else {
            EXPECT_EQ(jogAfter(mark, c.jog), c.jog);
        }
        runUntil([&] { return commandsSince(mark).size() >= c.sent.size(); }, 2000);
        EXPECT_EQ(commandsSince(mark), c.sent);
        QStringList texts;
        for (const QList<QVariant>& signal : told) {
            texts << signal.at(0).toString();
        }
        EXPECT_EQ(texts.join("; "), QLatin1String(c.told));
        send(kStop);
        EXPECT_EQ(jogAfter(line.frames().size(), kAtRest), kAtRest);
        settle();
    }
}

TEST_F(PelcoDBridgeTest, WithNoRefreshTimeTheJogRunsUntilItsKeyboardGoesAway) {
    QSignalSpy clients(&bridge, &PelcoDBridge::clientCountChanged);
    const Jog right{128, 0};
    bridge.setRefreshMs(0);
    send(kPanRight20);
    runUntil([] { return false; }, 200);
    const std::size_t mark = line.frames().size();
    EXPECT_EQ(jogAfter(mark, right), right);
    keyboard.abort();
    EXPECT_EQ(jogAfter(mark, kAtRest), kAtRest);
    ASSERT_TRUE(runUntil([&] { return !clients.isEmpty(); }, 2000));
    EXPECT_EQ(clients.takeFirst().at(0).toInt(), 0);
    EXPECT_EQ(told.takeLast().at(0).toString(), QStringLiteral("stop: the keyboard went away"));
}

TEST_F(PelcoDBridgeTest, ARefusedFrameMovesNothingAndSaysWhy) {
    const auto sent = [&](const Bytes& frame) {
        send(frame);
        runUntil([&] { return !told.isEmpty(); }, 2000);
        return told.isEmpty() ? QString() : told.takeLast().at(0).toString();
    };
    JogDemand operatorLeft;
    operatorLeft.pan = {90, false};
    session.jogSources().apply(JogSource::Keyboard, operatorLeft);
    const std::size_t mark = line.frames().size();
    EXPECT_EQ(sent(kPanRight20), QStringLiteral("pan right 32: refused: the operator is jogging"));
    EXPECT_EQ(sent(hex("FF 01 00 07 00 02 0A")),
              QStringLiteral("call preset 2: refused: the operator is jogging"));
    EXPECT_EQ(jogAfter(mark, {-90, 0}), (Jog{-90, 0}));
    EXPECT_TRUE(commandsSince(mark).empty());

    // The operator lets go: the keyboard's next repeat moves.
    session.jogSources().release(JogSource::Keyboard);
    EXPECT_EQ(sent(kPanRight20), QStringLiteral("pan right 32"));
    EXPECT_EQ(jogAfter(line.frames().size(), {128, 0}), (Jog{128, 0}));

    // Closed under the keyboard's jog: stopped, and the keyboard let go.
    QSignalSpy clients(&bridge, &PelcoDBridge::clientCountChanged);
    bridge.close();
    EXPECT_EQ(told.takeLast().at(0).toString(), QStringLiteral("stop: the bridge was closed"));
    ASSERT_EQ(clients.size(), 1);
    EXPECT_EQ(clients.takeFirst().at(0).toInt(), 0);
    EXPECT_EQ(jogAfter(line.frames().size(), kAtRest), kAtRest);
}

TEST_F(PelcoDBridgeTest, ASerialKeyboardDrivesTheJogUntilItsLineIsLost) {
    PtyPair adapter;
    ASSERT_TRUE(adapter.ok());
    EXPECT_FALSE(bridge.openSerial(adapter.slavePath(), 1200));
    ASSERT_TRUE(bridge.openSerial(adapter.slavePath(), 9600)) << bridge.errorString().toStdString();
    for (const auto& [address, taken] :
         {std::pair{0, false}, {1, true}, {255, true}, {256, false}, {7, true}}) {
        EXPECT_EQ(bridge.setAddress(address), taken) << address;
    }
    bridge.setRefreshMs(0);

    // Camera 7, down-left at 0x10 and 0x08, in two pieces.
    std::size_t mark = line.frames().size();
    adapter.write(hex("FF 07 00"));
    runUntil([] { return false; }, 10);
    adapter.write(hex("14 10 08 33"));
    EXPECT_EQ(jogAfter(mark, {-64, -32}), (Jog{-64, -32}));

    QSignalSpy lost(&bridge, &PelcoDBridge::serialLost);
    mark = line.frames().size();
    adapter.closeUnitSide();
    EXPECT_EQ(jogAfter(mark, kAtRest), kAtRest);
    EXPECT_TRUE(runUntil([&] { return !lost.isEmpty(); }, 2000));
    EXPECT_FALSE(bridge.serialOpen());
}

}  // namespace
}  // namespace halvex::testing
