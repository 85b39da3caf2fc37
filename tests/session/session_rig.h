#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "protocol/vocabulary.h"
#include "session/session.h"
#include "session/unit_connection.h"
#include "sim/unit.h"
#include "tests/support/finish.h"
#include "tests/support/messages.h"
#include "tests/support/recording_peer.h"
#include "tests/support/test_port.h"

namespace halvex::testing {

// A session on the in-process port, the virtual unit behind a peer that
// records every frame, and the connection that brings it online.
class SessionTest : public ::testing::Test {
  protected:
    static constexpr int kTickMs = 3;
    // A lost unit is looked for this often rather than every second.
    static constexpr int kReconnectMs = 50;

    SessionTest() { connection.setReconnectInterval(kReconnectMs); }

    bool connect() { return finish(connection.start()) && session.online(); }

    using Messages = std::vector<std::vector<Byte>>;

    // An absolute move to pan and tilt in hundredths of a degree.
    static std::vector<Byte> absolute(std::int64_t pan, std::int64_t tilt) {
        namespace move = vocab::absolute_move;
        return test::message<vocab::AbsoluteMove>({{move::kPan, pan}, {move::kTilt, tilt}});
    }

    // The messages sent since `from` that are not jog messages.
    Messages commandsSince(std::size_t from) const {
        Messages commands;
        const auto& frames = line.frames();
        for (std::size_t i = from; i < frames.size(); ++i) {
            if (frames[i].message.at(0) != vocab::JogMessage::kCode) {
                commands.push_back(frames[i].message);
            }
        }
        return commands;
    }

    // How many of the jog messages sent since `from` carry the stop request.
    long stopsSince(std::size_t from) const {
        return std::count_if(line.frames().begin() + static_cast<std::ptrdiff_t>(from),
                             line.frames().end(), [](const RecordingPeer::Frame& frame) {
                                 return frame.message.at(0) == vocab::JogMessage::kCode &&
                                        vocab::isSet(frame.message.at(1), vocab::jog::kStop);
                             });
    }

    // The next `count` jog messages to go out, or fewer if they do not come.
    Messages nextJogs(std::size_t count) {
        const std::size_t mark = line.frames().size();
        Messages jogs;
        runUntil(
            [&] {
                jogs.clear();
                for (std::size_t i = mark; i < line.frames().size() && jogs.size() < count; ++i) {
                    if (line.frames()[i].message.at(0) == vocab::JogMessage::kCode) {
                        jogs.push_back(line.frames()[i].message);
                    }
                }
                return jogs.size() == count;
            },
            2000);
        return jogs;
    }

    // The unit's position, once it has come to rest there.
    bool arrives(double pan, double tilt) {
        return runUntil(
            [&] {
                const UnitStatus& s = session.status();
                return std::abs(s.CurrentPan - pan) < 0.01 && std::abs(s.CurrentTilt - tilt) < 0.01;
            },
            20000);
    }

    // Alignment and homing take a moment, not seconds.
    sim::Unit unit{[] {
        sim::UnitOptions options;
        options.alignmentMs = options.homingMs = 300;
        return options;
    }()};
    // The platform travels twenty times as fast as a real one.
    RecordingPeer line{unit, 20};
    TestPort* port = new TestPort(&line);
    Session session{port, kTickMs};
    UnitConnection connection{session,
                              {[] { return QStringLiteral("virtual"); }, [] { return 9600; },
                               [] { return QStringLiteral("the virtual unit"); }}};
};

}  // namespace halvex::testing
