// A remote bridge's jog through the session: it reaches the jog message and
// gives way to the operator and to a later bridge.

#include "remote/remote_jog.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

class RemoteJogTest : public SessionTest {
  protected:
    // Pan speed, tilt speed and zoom 1 of the next jog message to go out.
    std::array<std::int64_t, 3> nextJog() {
        const Messages jogs = nextJogs(1);
        if (jogs.empty()) {
            return {-1, -1, -1};
        }
        namespace jog = vocab::jog;
        return {vocab::get(jogs[0], jog::kPanSpeed), vocab::get(jogs[0], jog::kTiltSpeed),
                vocab::get(jogs[0], jog::kLensJog[0])};
    }
    static JogDemand panRight(Byte speed) {
        JogDemand demand;
        demand.pan = {speed, true};
        return demand;
    }

    RemoteJog remote{session, JogSource::PelcoD, 60};
};

using Jog = std::array<std::int64_t, 3>;

TEST_F(RemoteJogTest, TheOperatorsJogComesFirstAndCutsARemoteJogForGood) {
    EXPECT_EQ(remote.drive(panRight(40)), Refusal::Offline);
    ASSERT_TRUE(connect());
    JogSources& sources = session.jogSources();
    sources.apply(JogSource::Keyboard, panRight(90));
    EXPECT_EQ(remote.drive(panRight(40)), Refusal::OperatorJogging);
    EXPECT_EQ(nextJog(), (Jog{90, 0, 0}));
    sources.release(JogSource::Keyboard);

    ASSERT_EQ(remote.drive(panRight(40)), std::nullopt);
    EXPECT_EQ(nextJog(), (Jog{40, 0, 0}));
    // The operator takes over; letting go stops the platform, and the remote
    // client's refreshes are refused until it has stopped once.
    sources.apply(JogSource::Controller, panRight(200));
    EXPECT_EQ(nextJog(), (Jog{200, 0, 0}));
    sources.release(JogSource::Controller);
    EXPECT_EQ(nextJog(), (Jog{0, 0, 0}));
    EXPECT_EQ(remote.drive(panRight(40)), Refusal::OperatorJogging);
    EXPECT_EQ(nextJog(), (Jog{0, 0, 0}));
    remote.stop();
    EXPECT_EQ(remote.drive(panRight(41)), std::nullopt);
    EXPECT_EQ(nextJog(), (Jog{41, 0, 0}));

    // Two remote bridges: the later steers, and the jog goes back to the
    // earlier one, still refreshed, when the later stops.
    RemoteJog other{session, JogSource::Visca, 150};
    ASSERT_EQ(other.drive(panRight(5)), std::nullopt);
    EXPECT_EQ(nextJog(), (Jog{5, 0, 0}));
    other.stop();
    EXPECT_EQ(nextJog(), (Jog{41, 0, 0}));
    // The dead-man stops every source.
    sources.stopAll();
    EXPECT_EQ(nextJog(), (Jog{0, 0, 0}));
    EXPECT_EQ(remote.drive(panRight(41)), Refusal::OperatorJogging);
}

}  // namespace
}  // namespace halvex::testing
