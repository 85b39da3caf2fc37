// A remote bridge's jog through the session: it reaches the jog message and
// gives way to the operator and to a later bridge.

#include "remote/remote_jog.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

class RemoteJogTest : public SessionTest {
  protected:
    // The pan speed of the next jog message to go out.
    std::int64_t nextPan() {
        const Messages jogs = nextJogs(1);
        return jogs.empty() ? -1 : vocab::get(jogs[0], vocab::jog::kPanSpeed);
    }
    static JogDemand panRight(Byte speed) {
        JogDemand demand;
        demand.pan = {speed, true};
        return demand;
    }

    RemoteJog remote{session, JogSource::PelcoD, 60};
};

TEST_F(RemoteJogTest, TheOperatorsJogCutsARemoteJogUntilItStopsAndTheLaterBridgeSteers) {
    ASSERT_TRUE(connect());
    JogSources& sources = session.jogSources();
    ASSERT_EQ(remote.drive(panRight(40)), std::nullopt);
    EXPECT_EQ(nextPan(), 40);
    // The operator takes over; letting go stops the platform, and the remote
    // client's refreshes are refused until it has stopped once.
    sources.apply(JogSource::Controller, panRight(200));
    EXPECT_EQ(nextPan(), 200);
    sources.release(JogSource::Controller);
    EXPECT_EQ(nextPan(), 0);
    EXPECT_EQ(remote.drive(panRight(40)), Refusal::OperatorJogging);
    EXPECT_EQ(nextPan(), 0);
    remote.stop();
    EXPECT_EQ(remote.drive(panRight(41)), std::nullopt);
    EXPECT_EQ(nextPan(), 41);

    // Two remote bridges: the later steers, and the jog goes back to the
    // earlier one, still refreshed, when the later stops.
    RemoteJog other{session, JogSource::Visca, 150};
    ASSERT_EQ(other.drive(panRight(5)), std::nullopt);
    EXPECT_EQ(nextPan(), 5);
    other.stop();
    EXPECT_EQ(nextPan(), 41);
    // The dead-man stops every source.
    sources.stopAll();
    EXPECT_EQ(nextPan(), 0);
    EXPECT_EQ(remote.drive(panRight(41)), Refusal::OperatorJogging);
}

}  // namespace
}  // namespace halvex::testing
