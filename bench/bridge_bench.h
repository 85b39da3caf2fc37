#pragma once

// What the remote-bridge latency programs share: the console online against
// the virtual unit in this process, a way to let the event loop run, and
// the arithmetic of their summaries. Each program keeps its own bridge,
// client and measurement; this only sets the stage so that their numbers
// are taken the same way and can be put side by side.

#include <QCoreApplication>
#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QString>
#include <QTimer>
#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "protocol/in_process_port.h"
#include "protocol/link.h"
#include "session/session.h"
#include "session/unit_connection.h"
#include "sim/unit.h"
#include "tests/support/recording_peer.h"
#include "tests/support/run_until.h"

namespace halvex::bench {

// Handles events until `done` holds, looking again after every batch of
// events rather than on a poll, so a frame seen on the line ends the wait at
// once and the next sample's clock is not held up by a sleep.
using testing::runUntil;

// Lets the event loop run for `ms`: the ticks go on meanwhile, so a request
// sent after a random pause lands at a random moment of the tick.
inline void pause(int ms) {
    runUntil([] { return false; }, ms);
}

// Nanoseconds as milliseconds, the unit every summary is printed in.
inline double milliseconds(qint64 ns) {
    return static_cast<double>(ns) / 1e6;
}

// The value `fraction` of the way up the sorted values, rounded down to a
// value that was measured rather than one interpolated between two.
inline double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1));
    return values[index];
}

// What each program prints of its latencies. A tick-bound latency is spread
// over a whole tick, so the median says little on its own: the 99th
// percentile and the worst show what a client can be kept waiting.
struct Spread {
    double p50 = 0.0;
    double p99 = 0.0;
    double max = 0.0;
};

// `latencies` must not be empty.
inline Spread spread(const std::vector<double>& latencies) {
    return {percentile(latencies, 0.5), percentile(latencies, 0.99),
            *std::max_element(latencies.begin(), latencies.end())};
}

// The virtual unit behind the in-process port, with a recording peer between
// them whose onFrame sees every frame as it reaches the line, and a session
// on that port at the line's real tick: what a bridge's request waits for is
// the tick, as it is against a unit on a cable, and no serial device or
// second process adds its own delay to the figure.
struct Rig {
    sim::Unit unit;
    testing::RecordingPeer line{unit};
    Session session{new InProcessPort(&line), Link::kTickMs};  // the session owns the port
    UnitConnection connection{session,
                              {[] { return QStringLiteral("virtual"); }, [] { return 9600; },
                               [] { return QStringLiteral("the virtual unit"); }}};

    Rig() { clock_.start(); }

    // Connects as the operator's Start does and waits for the connection to
    // end rather than for the online flag alone: a line that will not open
    // or a unit that does not answer ends the wait at once, not after the
    // whole timeout. False when it did not end online.
    bool bringOnline(int timeoutMs = 60000) {
        // The flag is a member: a connection still running at the timeout
        // would otherwise set a local that is gone.
        static_cast<void>([](QCoro::Task<bool> starting, bool& ended) -> QCoro::Task<> {
            co_await std::move(starting);
            ended = true;
        }(connection.start(), started_));
        return runUntil([this] { return started_; }, timeoutMs) && session.online();
    }

    // Nanoseconds since the rig was made: the one clock for a request's send
    // and its frame's arrival.
    qint64 now() const { return clock_.nsecsElapsed(); }

  private:
    QElapsedTimer clock_;
    bool started_ = false;
};

}  // namespace halvex::bench
