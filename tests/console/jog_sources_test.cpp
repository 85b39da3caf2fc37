#include <gtest/gtest.h>

#include <QSignalSpy>

#include "session/jog_sources.h"

using namespace halvex;

namespace {
// A demand for pan and tilt, each a speed and its way (clockwise, up).
JogDemand demand(AxisDemand pan, AxisDemand tilt = {}) {
    JogDemand demand;
    demand.pan = pan;
    demand.tilt = tilt;
    return demand;
}

struct Sources : ::testing::Test {
    JogState jog;
    JogSources sources{jog};
    std::string speeds() const {
        return std::to_string(jog.PanJogSpeed) + (jog.PanJogDirection ? "R " : "L ") +
               std::to_string(jog.TiltJogSpeed) + (jog.TiltJogDirection ? "U" : "D");
    }
};
}  // namespace

TEST_F(Sources, TheSourceThatStartedLastSteersLettingGoHandsBackAndAnAxisAtRestKeepsItsWay) {
    sources.apply(JogSource::Controller, demand({200, true}));
    EXPECT_EQ(speeds(), "200R 0D");
    sources.apply(JogSource::Keyboard, demand({}, {96, true}));
    EXPECT_EQ(speeds(), "0R 96U");
    EXPECT_EQ(sources.owner(), JogSource::Keyboard);
    // A remote source may not start while the operator jogs.
    EXPECT_FALSE(sources.apply(JogSource::Visca, demand({10, true})));
    EXPECT_EQ(speeds(), "0R 96U");
    // The stick moving on under the keys changes nothing while the keys steer.
    sources.apply(JogSource::Controller, demand({150, false}));
    EXPECT_EQ(speeds(), "0R 96U");
    // Letting the keys go hands the platform back to the stick, as it is now.
    sources.release(JogSource::Keyboard);
    EXPECT_EQ(speeds(), "150L 0U");
    EXPECT_EQ(sources.owner(), JogSource::Controller);
    sources.release(JogSource::Controller);
    EXPECT_EQ(speeds(), "0L 0U");
    EXPECT_FALSE(sources.operatorJogging());

    // An axis at rest keeps its direction.
    sources.apply(JogSource::Box, demand({40, true}));
    sources.apply(JogSource::Box, demand({}, {30, false}));  // pan on its centre line
    EXPECT_EQ(speeds(), "0R 30D");
    // A source at rest that was not steering leaves the state alone.
    sources.release(JogSource::Controller);
    EXPECT_EQ(speeds(), "0R 30D");
}

TEST_F(Sources, AStopHoldsEverySourceUntilItComesBackToRest) {
    QSignalSpy stopped(&sources, &JogSources::stopped);
    QSignalSpy owners(&sources, &JogSources::ownerChanged);
    sources.apply(JogSource::Controller, demand({255, true}));
    sources.stopAll();
    EXPECT_EQ(speeds(), "0R 0D");
    EXPECT_EQ(stopped.count(), 1);
    EXPECT_FALSE(sources.owner());
    // The stick still pushed after the stop does not start the platform again.
    sources.apply(JogSource::Controller, demand({255, true}));
    EXPECT_EQ(speeds(), "0R 0D");
    // Another source that was at rest may steer at once.
    sources.apply(JogSource::Keyboard, demand({}, {24, false}));
    EXPECT_EQ(speeds(), "0R 24D");
    sources.release(JogSource::Keyboard);
    // Back at the centre, the stick steers again.
    sources.release(JogSource::Controller);
    sources.apply(JogSource::Controller, demand({10, false}));
    EXPECT_EQ(speeds(), "10L 0D");
    ASSERT_GE(owners.count(), 4);
    EXPECT_EQ(owners.first().at(0).value<std::optional<JogSource>>(), JogSource::Controller);
}

TEST_F(Sources, LensBytesFromASourceEndWithItButTheLensBoxesKeepTheirs) {
    JogDemand zoom;
    zoom.lens[0] = lensJogByte(64);
    sources.apply(JogSource::Keyboard, zoom);
    EXPECT_EQ(jog.LensJogSpeeds, (std::array<Byte, 4>{129, 0, 0, 0}));
    sources.release(JogSource::Keyboard);
    EXPECT_EQ(jog.LensJogSpeeds, (std::array<Byte, 4>{}));
    // A lens box held on the Camera page writes its own byte; a pan from the
    // jog box must not clear it.
    jog.LensJogSpeeds[3] = 77;
    sources.apply(JogSource::Box, demand({5, true}));
    sources.release(JogSource::Box);
    EXPECT_EQ(jog.LensJogSpeeds[3], 77);
}

TEST(LensJogByte, CarriesTheSpeedDoubledWithTheWayInItsLowBit) {
    for (const auto& [speed, byte] : {std::pair{0, 0}, {1, 3}, {-1, 2}, {127, 255}, {-500, 254}}) {
        EXPECT_EQ(lensJogByte(speed), byte) << speed;
    }
}
