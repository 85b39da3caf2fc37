#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QTimer>
#include <random>

#include "tests/support/console_rig.h"
#include "tests/support/scripted_unit.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
const std::vector<Byte> kHome{0x36};

// A console whose port is open and ticking against the virtual unit, without
// the seconds the connection sequence takes.
struct TickingConsole : ConsoleRig {
    TickingConsole() {
        for (int step = 0; step < 6; ++step) {
            unit.state().tours.append(1, {static_cast<Byte>(step), 2});
        }
        port->open(QStringLiteral("COM1"), 9600);
        window->link().Timer2().start();
        window->SSTab1().setEnabled(true);
    }
    bool sawAfter(std::size_t from, const std::vector<Byte>& message) const {
        const auto& frames = line.frames();
        for (std::size_t i = from; i < frames.size(); ++i) {
            if (frames[i].message == message) {
                return true;
            }
        }
        return false;
    }
    std::size_t jogsAfter(std::size_t from) const {
        std::size_t jogs = 0;
        for (std::size_t i = from; i < line.frames().size(); ++i) {
            jogs += line.frames()[i].message.front() == 0x31 ? 1 : 0;
        }
        return jogs;
    }
    // Returns once what the click started has finished.
    void press(const char* name) {
        find<QAbstractButton>(QString::fromLatin1(name))->click();
        settle();
    }
};

// The operations that hold the line across many request/reply pairs, each
// with the request it sends last.
struct Operation {
    const char* name;
    const char* button;
    bool fromOffline;
    std::vector<Byte> lastRequest;
};
const Operation kOperations[] = {
    {"preset clear and reload", "ClearPreBut", false, {0x40, 31}},
    {"tour load", "TourSel_1", false, {0x51, 1, 5}},
    {"connection sequence", "StartBut", true, {0x71, 0x80}},
};

// Runs the operation's click and, once three of its requests are out,
// `meanwhile`. Returns how long the click took.
qint64 runWith(TickingConsole& rig, const Operation& op, const std::function<void()>& meanwhile) {
    if (op.fromOffline) {
        rig.window->link().stop();
        rig.port->close();
    }
    int requests = 0;
    rig.line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message.front() != 0x31 && ++requests == 3) {
            QTimer::singleShot(0, rig.window.get(), meanwhile);
        }
    };
    QElapsedTimer clock;
    clock.start();
    rig.press(op.button);
    rig.line.onFrame = nullptr;
    EXPECT_GE(requests, 3) << "the operation was over before anything happened meanwhile";
    return clock.elapsed();
}
}  // namespace

TEST(SendRaces, AClickDuringALongOperationGoesOutAndTheOperationFinishes) {
    for (const Operation& op : kOperations) {
        SCOPED_TRACE(op.name);
        TickingConsole rig;
        const std::size_t start = rig.line.frames().size();
        runWith(rig, op, [&] { rig.press("HomeBut"); });
        EXPECT_TRUE(rig.sawAfter(start, kHome));
        EXPECT_TRUE(rig.sawAfter(start, op.lastRequest));
        EXPECT_TRUE(rig.shown.empty());
        // The line is free again: jog messages flow.
        const std::size_t after = rig.line.frames().size();
        EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.jogsAfter(after) >= 3; }, 1000));
    }
}

TEST(SendRaces, ExitDuringALongOperationClosesThePortPromptly) {
    for (const Operation& op : kOperations) {
        SCOPED_TRACE(op.name);
        TickingConsole rig;
        const qint64 took = runWith(rig, op, [&] { rig.window->close(); });
        EXPECT_LT(took, 3000);
        EXPECT_FALSE(rig.port->isOpen());
        EXPECT_TRUE(rig.shown.empty()) << "a message box on the way out";
        const std::size_t atExit = rig.line.frames().size();
        QTest::qWait(300);
        EXPECT_EQ(rig.line.frames().size(), atExit) << "frames after the port closed";
    }
}

TEST(SendRaces, AUnitThatFallsSilentEndsTheOperationAndTheConsoleCarriesOn) {
    for (const Operation& op : kOperations) {
        SCOPED_TRACE(op.name);
        TickingConsole rig;
        const qint64 took = runWith(rig, op, [&] { rig.line.setConnected(false); });
        EXPECT_LT(took, 4000);
        EXPECT_FALSE(rig.window->state().SendInProgress);
        rig.line.setConnected(true);
        const std::size_t after = rig.line.frames().size();
        rig.press("HomeBut");
        EXPECT_TRUE(rig.sawAfter(after, kHome));
        EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.jogsAfter(after) >= 3; }, 1000));
    }
}

TEST(SendRaces, ABurstOfOddRepliesLeavesTheLineWorking) {
    TickingConsole rig;
    // Well-formed replies of codes that start reloads and waits, with random
    // payloads, a fifth of them cut short, every 2 ms on top of the unit's
    // own answers.
    const Byte codes[] = {0x31, 0x37, 0x40, 0x50, 0x51, 0x52, 0x56, 0x80,
                          0x81, 0x85, 0x94, 0x9D, 0x9E, 0x60, 0x61, 0x9F};
    std::mt19937 random(8);
    QTimer noise;
    int sent = 0;
    QObject::connect(&noise, &QTimer::timeout, [&] {
        std::vector<Byte> message{codes[random() % std::size(codes)]};
        for (int n = static_cast<int>(random() % 20); n > 0; --n) {
            message.push_back(static_cast<Byte>(random()));
        }
        std::vector<Byte> wire = ScriptedUnit::replyWire(0, message);
        if (++sent % 5 == 0) {
            wire.resize(wire.size() / 2);
        }
        rig.port->injectIncoming(wire);
    });
    noise.start(2);
    QTimer::singleShot(2000, &noise, &QTimer::stop);
    rig.press("TourSel_1");  // and let whatever the noise starts run
    ConsoleRig::waitFor([&] { return !noise.isActive(); }, 5000);

    const std::size_t after = rig.line.frames().size();
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.jogsAfter(after) >= 3; }, 1000))
        << "no jog messages after the burst";
    rig.press("HomeBut");
    EXPECT_TRUE(rig.sawAfter(after, kHome));
}
