// The session without a window: a core application drives the virtual unit
// through the session's operations, and each outcome and each message on the
// line is checked by name.

#include <QSignalSpy>
#include <QTimer>
#include <array>

#include "remote/session_rotator.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

TEST_F(SessionTest, ProgramsAreRefusedWithTheReasonAndNothingIsSent) {
    EXPECT_EQ(finish(session.moveTo({10.0, 10.0})).refusal(), Refusal::Offline);
    ASSERT_TRUE(connect());
    const std::size_t mark = line.frames().size();

    EXPECT_EQ(finish(session.moveTo({175.0, 0.0})).refusal(), Refusal::OutsideLimits);
    EXPECT_EQ(finish(session.moveTo({0.0, -86.0})).refusal(), Refusal::OutsideLimits);
    // A delta is judged by where it lands from where the platform stands.
    session.status().CurrentPan = 100.0f;
    EXPECT_EQ(finish(session.moveBy(75.0, 0.0)).refusal(), Refusal::OutsideLimits);
    session.status().CurrentPan = 0.0f;
    session.status().CurrentTilt = -80.0f;
    EXPECT_EQ(finish(session.moveBy(0.0, -10.0)).refusal(), Refusal::OutsideLimits);
    session.status().CurrentTilt = 0.0f;
    {
        const Session::PagesLock locked(session);
        EXPECT_EQ(finish(session.moveHome()).refusal(), Refusal::PagesLocked);
    }
    JogDemand demand;
    demand.pan = {40, true};
    session.jogSources().apply(JogSource::Keyboard, demand);
    EXPECT_EQ(finish(session.moveToCentre()).refusal(), Refusal::OperatorJogging);
    session.jogSources().release(JogSource::Keyboard);
    EXPECT_TRUE(commandsSince(mark).empty());

    // The operator's own controls send what they show, limits or not.
    EXPECT_TRUE(finish(session.moveTo({175.0, 0.0, false, true}, Requester::Operator)).isDone());

    // A program's target on a limit is inside it.
    EXPECT_TRUE(finish(session.moveTo({0.0, session.status().TiltMinLimit})).isDone());
    EXPECT_TRUE(finish(session.moveTo({session.status().PanMaxLimit, 0.0})).isDone());
}

TEST_F(SessionTest, ReinitialiseOrStartWhileAConnectionRunsLeavesItToFinishAloneAndStaysOnline) {
    QCoro::Task<bool> starting = connection.start();
    EXPECT_FALSE(finish(connection.reinitialise()));
    EXPECT_FALSE(finish(connection.start()));
    EXPECT_TRUE(finish(std::move(starting)));
    // One connection sequence: the offsets were asked for once.
    const auto sent = commandsSince(0);
    EXPECT_EQ(std::count(sent.begin(), sent.end(), test::message<vocab::OffsetsRequest>()), 1);
    // Reading the unit again keeps the console online meanwhile.
    QCoro::Task<bool> reading = connection.reinitialise();
    EXPECT_TRUE(session.online());
    EXPECT_TRUE(finish(std::move(reading)));
}

// The port lost while the soft limits, the last reads, are asked for: the
// sequence ends offline, and says so to whoever waits for it.
TEST_F(SessionTest, APortLostDuringTheLastReadsLeavesTheConsoleOffline) {
    QSignalSpy finished(&connection, &UnitConnection::finished);
    line.onFrame = [this](const RecordingPeer::Frame& frame) {
        if (frame.message.at(0) == vocab::SoftLimit::kCode) {
            QTimer::singleShot(0, port, [this] { port->close(); });
        }
    };
    EXPECT_FALSE(finish(connection.start()));
    line.onFrame = nullptr;
    EXPECT_FALSE(session.online());
    ASSERT_EQ(finished.size(), 1);
    EXPECT_FALSE(finished.at(0).at(0).toBool());
}

// What a field cannot carry is a range fault before anything is sent, and a
// refused read by broadcast leaves no broadcast behind; a silent unit is no
// reply.
TEST_F(SessionTest, AValueItsFieldCannotCarryIsARangeFaultAndSendsNothingAndASilentUnitNoReply) {
    ASSERT_TRUE(connect());
    std::size_t mark = line.frames().size();
    const Outcome fault = finish(session.moveBy(std::nan(""), 0.0, Requester::Operator));
    EXPECT_EQ(fault.kind(), Outcome::Kind::RangeFault);
    EXPECT_THROW(fault.raiseRangeFault(), RangeFault);
    EXPECT_TRUE(commandsSince(mark).empty());
    // The line is free again for the next move.
    EXPECT_FALSE(session.state().SendInProgress);
    const auto rangeFault = [](QCoro::Task<Outcome> task) {
        return finish(std::move(task)).kind() == Outcome::Kind::RangeFault;
    };
    EXPECT_TRUE(rangeFault(session.goToPreset(-1)));
    EXPECT_TRUE(rangeFault(session.addLensPositions(256)));
    EXPECT_TRUE(rangeFault(session.sendToCamera(2, {'x'})));
    EXPECT_TRUE(rangeFault(session.sendToCamera(0, std::vector<Byte>(128, 'x'))));
    EXPECT_TRUE(rangeFault(session.setCameraTimeouts({0, 5})));
    EXPECT_TRUE(rangeFault(session.setCameraTimeouts({5, 101})));
    EXPECT_TRUE(
        rangeFault(session.setCameraLines({CameraLine{8, 0, false, false, false}, CameraLine{}})));
    EXPECT_TRUE(
        rangeFault(session.setCameraLines({CameraLine{}, CameraLine{0, 4, false, false, false}})));
    EXPECT_TRUE(rangeFault(session.setPanSteps({0, 32768})));
    EXPECT_TRUE(rangeFault(session.setTiltDrive(1, 256, {})));
    EXPECT_TRUE(rangeFault(session.appendTourStep(1, {0, -1, 0, 5, false})));
    EXPECT_TRUE(rangeFault(session.insertTourStep(1, 0, {0, 1, 0, 128, true})));
    EXPECT_TRUE(rangeFault(session.loadTour(3)));
    EXPECT_TRUE(rangeFault(session.setVideo({kVideoRoutes, false, false, false, {}})));
    EXPECT_TRUE(rangeFault(session.storeVideoAsInitial({-1, false, false, false, {}})));
    EXPECT_TRUE(rangeFault(session.setAngleDisplay({true, false, kOsdLines})));
    EXPECT_TRUE(rangeFault(session.storeNameDisplayAsInitial({false, false, -1})));
    EXPECT_TRUE(rangeFault(session.setUnitAddress(256, true)));
    EXPECT_TRUE(commandsSince(mark).empty());
    EXPECT_EQ(session.state().AddressOverride, kNoOverride);
    // The longest string a camera takes does go out, and the time-outs' ends.
    EXPECT_TRUE(finish(session.sendToCamera(0, std::vector<Byte>(127, 'x'))).isDone());
    EXPECT_TRUE(finish(session.setCameraTimeouts({1, 100})).isDone());

    line.setConnected(false);
    mark = line.frames().size();
    const Outcome silent = finish(session.moveToWithLenses({5.0, 5.0}, {1, 2, 3, 4}), 20000);
    EXPECT_EQ(silent.kind(), Outcome::Kind::NoReply);
    EXPECT_EQ(commandsSince(mark).size(), 1u);
}

TEST_F(SessionTest, PresetsAreReadAgainOneRequestAtATime) {
    ASSERT_TRUE(connect());
    // Each preset is asked for only after the previous reply: the unit is
    // slow with preset 3, and nothing more goes out meanwhile.
    unit.state().presets.at(4).tilt = 225;
    session.link().Timer4().setInterval(20000);  // no watchdog while held
    std::size_t sentWhileHeld = 0;
    std::size_t mark = line.frames().size();
    line.onFrame = [&](const RecordingPeer::Frame& frame) {
        if (frame.message ==
            test::message<vocab::PresetRequest>({{vocab::preset_request::kPreset, 3}})) {
            line.holdReplies(true);
            QTimer::singleShot(60, &session, [&] {
                sentWhileHeld = commandsSince(mark).size();
                line.holdReplies(false);
            });
        }
    };
    ASSERT_TRUE(finish(session.reloadPresets()).isDone());
    line.onFrame = nullptr;
    EXPECT_EQ(sentWhileHeld, 4u);
    EXPECT_EQ(session.presets().at(4).tilt, 225);

    // Angles outside the soft limits are refused to a program.
    mark = line.frames().size();
    EXPECT_EQ(finish(session.savePreset(5, {0.0, 89.0})).refusal(), Refusal::OutsideLimits);
    EXPECT_TRUE(commandsSince(mark).empty());
}

TEST_F(SessionTest, AProcedureHoldsOffTheRestUntilItEnds) {
    ASSERT_TRUE(connect());
    // While the unit homes, a second procedure and every program's request
    // wait for nothing: they are refused, and the line stays held.
    QSignalSpy homingStarted(&session, &Session::homingStarted);
    const std::size_t mark = line.frames().size();
    auto homing = session.runHomingCycle();
    EXPECT_EQ(homingStarted.size(), 1);
    EXPECT_EQ(session.link().Timer4().interval(), Session::kProcedureWatchdogMs);
    EXPECT_EQ(finish(session.alignEncoders(Requester::Operator)).refusal(), Refusal::UnitBusy);
    EXPECT_EQ(finish(session.moveTo({1.0, 1.0})).refusal(), Refusal::UnitBusy);
    const Outcome homed = finish(std::move(homing));
    ASSERT_TRUE(homed.isDone());
    EXPECT_EQ(homed.reply().at(0), vocab::HomingCycleFinished::kCode);
    EXPECT_EQ(commandsSince(mark),
              (std::vector<std::vector<Byte>>{vocab::blank<vocab::HomingCycle>()}));
    EXPECT_EQ(session.link().Timer4().interval(), Session::kProcedureWatchdogMs);
    ASSERT_TRUE(finish(session.alignEncoders()).isDone());
    EXPECT_EQ(session.link().Timer4().interval(), Session::kAfterAlignmentWatchdogMs);
    EXPECT_TRUE(finish(session.moveTo({1.0, 1.0})).isDone());
}

TEST_F(SessionTest, TheRotatorAnswersFromTheSessionAndMovesThroughIt) {
    SessionRotator rotator(session, [] { return QStringLiteral("COM1"); });
    EXPECT_EQ(rotator.setPosition(10.0, 10.0), network::RotatorResult::Offline);
    ASSERT_TRUE(connect());
    // The unit's limits as a rotator's: pan -170..170 reads as azimuth.
    const network::RotatorLimits limits = rotator.limits();
    EXPECT_DOUBLE_EQ(limits.minAzimuth, -170.0);
    EXPECT_DOUBLE_EQ(limits.maxElevation, 85.0);
    // A limit on the half turn itself is not inside it: a whole turn.
    UnitStatus& status = session.status();
    for (float UnitStatus::*limit : {&UnitStatus::PanMinLimit, &UnitStatus::PanMaxLimit}) {
        const float kept = status.*limit;
        status.*limit = std::copysign(180.0f, kept);
        EXPECT_DOUBLE_EQ(rotator.limits().minAzimuth, 0.0);
        EXPECT_DOUBLE_EQ(rotator.limits().maxAzimuth, 360.0);
        status.*limit = kept;
    }
    // Limits never set, both 0, read as none.
    const UnitStatus set = status;
    status.PanMinLimit = status.PanMaxLimit = status.TiltMinLimit = status.TiltMaxLimit = 0.0f;
    EXPECT_DOUBLE_EQ(rotator.limits().maxAzimuth, 360.0);
    EXPECT_DOUBLE_EQ(rotator.limits().maxElevation, 90.0);
    status = set;
    EXPECT_EQ(rotator.setPosition(180.0, 10.0), network::RotatorResult::OutsideLimits);
    // An azimuth or an elevation no rotator has, with the other one fine.
    EXPECT_EQ(rotator.setPosition(1000.0, 10.0), network::RotatorResult::OutsideLimits);
    EXPECT_EQ(rotator.setPosition(10.0, std::nan("")), network::RotatorResult::OutsideLimits);

    // West of north is a negative pan.
    EXPECT_EQ(rotator.setPosition(300.0, 20.0), network::RotatorResult::Ok);
    EXPECT_TRUE(arrives(-60.0, 20.0));
    ASSERT_TRUE(rotator.position().has_value());
    EXPECT_NEAR(rotator.position()->azimuth, 300.0, 0.01);
}

TEST_F(SessionTest, TheOverrideAndLowSpeedsGoOutInEveryJogMessageOnceSet) {
    ASSERT_TRUE(connect());
    // Override, pan low speed and tilt low speed in the next two jog messages.
    using Modifiers = std::array<bool, 3>;
    const auto nextTwo = [&] {
        std::vector<Modifiers> seen;
        for (const auto& message : nextJogs(2)) {
            namespace jog = vocab::jog;
            seen.push_back({vocab::isSet(message.at(1), jog::kSoftLimitOverride),
                            vocab::isSet(message.at(1), jog::kPanLowSpeed),
                            vocab::isSet(message.at(1), jog::kTiltLowSpeed)});
        }
        return seen;
    };
    QSignalSpy changes(&session, &Session::jogModifiersChanged);
    session.setSoftLimitOverride(true);
    session.setLowSpeed(false, true);
    session.setLowSpeed(false, true);  // no change: no signal
    ASSERT_EQ(changes.size(), 2);
    EXPECT_EQ(changes.back(), (QVariantList{true, false, true}));
    EXPECT_EQ(nextTwo(), (std::vector<Modifiers>(2, {true, false, true})));

    session.setSoftLimitOverride(false);
    session.setLowSpeed(true, false);
    EXPECT_EQ(nextTwo(), (std::vector<Modifiers>(2, {false, true, false})));
    EXPECT_EQ(changes.size(), 4);
}

TEST_F(SessionTest, TheAddressIsReadByBroadcastAndTheSiteNameKeepsPrintableCodes) {
    ASSERT_TRUE(connect());
    // The unit moves to address 5 and the console follows it.
    ASSERT_TRUE(finish(session.setUnitAddress(5, false)).isDone());
    session.talkTo(5);
    QSignalSpy addresses(&session, &Session::unitAddressReported);
    std::size_t mark = line.frames().size();
    ASSERT_TRUE(finish(session.readUnitAddress()).isDone());
    ASSERT_TRUE(finish(session.readCommTimeout()).isDone());
    // The read went by broadcast; the frames around it still went to unit 5.
    int broadcasts = 0;
    for (std::size_t i = mark; i < line.frames().size(); ++i) {
        const RecordingPeer::Frame& frame = line.frames()[i];
        const bool read = frame.message.at(0) == vocab::UnitAddress::kCode;
        broadcasts += read ? 1 : 0;
        EXPECT_EQ(frame.address, read ? kBroadcast : 5) << i - mark;
    }
    EXPECT_EQ(broadcasts, 1);
    ASSERT_EQ(addresses.size(), 1);
    EXPECT_EQ(addresses.at(0).at(0).toInt(), 5);

    // Codes 32 to 127 go into the site name as they are; a control
    // character goes as a space.
    ASSERT_TRUE(finish(session.setSiteName(QStringLiteral("Gate\x7F\x1F~"))).isDone());
    const auto& siteName = unit.state().settings.siteName;
    EXPECT_EQ(std::string(siteName.begin(), siteName.end()), "Gate\x7F ~     ");
}

}  // namespace
}  // namespace halvex::testing
