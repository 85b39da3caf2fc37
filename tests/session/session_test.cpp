// The session without a window: a core application drives the virtual unit
// through the session's operations, and each outcome and each message on the
// line is checked by name.

#include <QSignalSpy>
#include <QTimer>
#include <array>

#include "protocol/frame.h"
#include "remote/session_rotator.h"
#include "tests/session/session_rig.h"

namespace halvex::testing {
namespace {

TEST_F(SessionTest, ConnectsReadingOffsetsAndLimitsThenMovesStopsAndFollowsThePlatform) {
    port->setOpenFails(true);
    EXPECT_FALSE(session.open(QStringLiteral("COM1"), 9600));
    EXPECT_FALSE(session.link().Timer2().isActive());
    EXPECT_FALSE(finish(connection.start()));
    port->setOpenFails(false);
    QSignalSpy stages(&connection, &UnitConnection::stageChanged);
    ASSERT_TRUE(connect());
    std::vector<ConnectStage> seen;
    for (const QList<QVariant>& stage : stages) {
        seen.push_back(stage.at(0).value<ConnectStage>());
    }
    EXPECT_EQ(seen, (std::vector<ConnectStage>{ConnectStage::FirstAnswer, ConnectStage::Offsets,
                                               ConnectStage::Limits, ConnectStage::Online}));
    // The unit's own limits, read as it connected.
    EXPECT_FLOAT_EQ(session.status().PanMaxLimit, 170.0f);
    EXPECT_FLOAT_EQ(session.status().TiltMinLimit, -85.0f);
    const auto reads = commandsSince(0);
    ASSERT_EQ(reads.size(), 5u);
    EXPECT_EQ(reads[0].at(0), vocab::OffsetsRequest::kCode);
    for (std::size_t i = 1; i < reads.size(); ++i) {
        EXPECT_EQ(reads[i].at(0), vocab::SoftLimit::kCode);
        EXPECT_EQ(vocab::get(reads[i], vocab::soft_limit::kLimit), i - 1);
    }

    QSignalSpy positions(&session, &Session::positionReported);
    std::size_t mark = line.frames().size();
    const Outcome moved = finish(session.moveTo({45.25, -10.5}));
    ASSERT_TRUE(moved.isDone()) << moved.text().toStdString();
    // Answered with the position report, which has no code of its own.
    EXPECT_EQ(moved.reply().at(0), vocab::AbsoluteMove::kCode);
    EXPECT_EQ(commandsSince(mark), Messages{absolute(4525, -1050)});
    EXPECT_TRUE(arrives(45.25, -10.5));
    EXPECT_FALSE(positions.isEmpty());

    // With the lenses: they travel to their places too.
    const Outcome withLenses = finish(session.moveToWithLenses({10.0, 5.0}, {10, 200, 30, 40}));
    ASSERT_TRUE(withLenses.isDone()) << withLenses.text().toStdString();
    EXPECT_TRUE(arrives(10.0, 5.0));
    EXPECT_TRUE(runUntil(
        [&] {
            return session.status().Lens == LensPositions{10, 200, 30, 40};
        },
        20000));

    // Stop during a long move: the stop bit rides on one jog message, and
    // the platform comes to rest short of the target.
    ASSERT_TRUE(finish(session.moveTo({-150.0, 0.0})).isDone());
    mark = line.frames().size();
    EXPECT_TRUE(session.stop().isDone());
    ASSERT_TRUE(runUntil([&] { return line.frames().size() > mark + 2; }, 2000));
    EXPECT_EQ(stopsSince(mark), 1);
    EXPECT_TRUE(runUntil([&] { return (session.status().StatusBytes[2] & 0x0F) == 0; }, 5000));
    EXPECT_GT(session.status().CurrentPan, -149.0f);
}

TEST_F(SessionTest, ProgramsAreRefusedWithTheReasonAndNothingIsSent) {
    EXPECT_EQ(finish(session.moveTo({10.0, 10.0})).refusal(), Refusal::Offline);
    ASSERT_TRUE(connect());
    const std::size_t mark = line.frames().size();

    EXPECT_EQ(finish(session.moveTo({175.0, 0.0})).refusal(), Refusal::OutsideLimits);
    EXPECT_EQ(finish(session.moveTo({0.0, -86.0})).refusal(), Refusal::OutsideLimits);
    EXPECT_EQ(finish(session.moveBy(0.0, 90.0)).refusal(), Refusal::OutsideLimits);
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
    const Outcome operatorMove =
        finish(session.moveTo({175.0, 0.0, false, true}, Requester::Operator));
    EXPECT_TRUE(operatorMove.isDone()) << operatorMove.text().toStdString();
    EXPECT_EQ(commandsSince(mark), Messages{absolute(17500, vocab::absolute_move::kHoldAxis)});

    // A program's target on a limit is inside it.
    const Outcome onLimit = finish(session.moveTo({0.0, session.status().TiltMinLimit}));
    EXPECT_TRUE(onLimit.isDone()) << onLimit.text().toStdString();
    const Outcome onUpperLimit = finish(session.moveTo({session.status().PanMaxLimit, 0.0}));
    EXPECT_TRUE(onUpperLimit.isDone()) << onUpperLimit.text().toStdString();
}

TEST_F(SessionTest, ReinitialiseOrStartWhileAConnectionRunsLeavesItToFinishAloneAndStaysOnline) {
    QCoro::Task<bool> starting = connection.start();
    EXPECT_FALSE(finish(connection.reinitialise()));
    EXPECT_FALSE(finish(connection.start()));
    EXPECT_TRUE(finish(std::move(starting)));
    EXPECT_TRUE(finish(connection.start()));  // already online
    // One connection sequence: the offsets were asked for once.
    const auto sent = commandsSince(0);
    EXPECT_EQ(std::count(sent.begin(), sent.end(), test::message<vocab::OffsetsRequest>()), 1);
    // Reading the unit again keeps the console online meanwhile.
    QCoro::Task<bool> reading = connection.reinitialise();
    EXPECT_TRUE(session.online());
    EXPECT_TRUE(finish(std::move(reading)));
    EXPECT_TRUE(session.online());
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
    EXPECT_TRUE(
        rangeFault(session.setLensSetup({LensSetup{{false, false, false, 256}, {}, false}})));
    EXPECT_TRUE(rangeFault(session.setPanSteps({0, 32768})));
    EXPECT_TRUE(rangeFault(session.setTiltDrive(1, 256, {})));
    EXPECT_TRUE(rangeFault(session.setMinima({-1, 0})));
    EXPECT_TRUE(rangeFault(session.appendTourStep(1, {0, -1, 0, 5, false})));
    EXPECT_TRUE(rangeFault(session.insertTourStep(1, 0, {0, 1, 0, 128, true})));
    EXPECT_TRUE(rangeFault(session.loadTour(3)));
    EXPECT_TRUE(rangeFault(session.setVideo({kVideoRoutes, false, false, false, {}})));
    EXPECT_TRUE(rangeFault(session.storeVideoAsInitial({-1, false, false, false, {}})));
    EXPECT_TRUE(rangeFault(session.setAngleDisplay({true, false, kOsdLines})));
    EXPECT_TRUE(rangeFault(session.storeNameDisplayAsInitial({false, false, -1})));
    EXPECT_TRUE(rangeFault(session.setHeaterMode(256)));
    EXPECT_TRUE(rangeFault(session.setCommTimeout(-1)));
    EXPECT_TRUE(rangeFault(session.setUnitAddress(256, true)));
    EXPECT_TRUE(commandsSince(mark).empty());
    EXPECT_EQ(session.state().AddressOverride, kNoOverride);

    line.setConnected(false);
    mark = line.frames().size();
    const Outcome silent = finish(session.moveToWithLenses({5.0, 5.0}, {1, 2, 3, 4}), 20000);
    EXPECT_EQ(silent.kind(), Outcome::Kind::NoReply);
    namespace lenses = vocab::absolute_move_with_lenses;
    EXPECT_EQ(commandsSince(mark),
              Messages{test::message<vocab::AbsoluteMoveWithLenses>({{lenses::kPan, 500},
                                                                     {lenses::kTilt, 500},
                                                                     {lenses::kLens[0], 1},
                                                                     {lenses::kLens[1], 2},
                                                                     {lenses::kLens[2], 3},
                                                                     {lenses::kLens[3], 4}})});
}

TEST_F(SessionTest, APresetSavedAtAnglesOrWhereThePlatformIsIsGoneTo) {
    // Only a preset the unit stored where the platform points is announced
    // as such: not one refused, not one stored at typed angles.
    QSignalSpy storedHere(&session, &Session::presetStoredHere);
    EXPECT_EQ(finish(session.saveCurrentPosition(7)).refusal(), Refusal::Offline);
    ASSERT_TRUE(connect());
    std::size_t mark = line.frames().size();
    ASSERT_TRUE(finish(session.savePreset(4, {-3.5, 2.25})).isDone());
    namespace store = vocab::store_preset;
    EXPECT_EQ(commandsSince(mark),
              Messages{test::message<vocab::StorePreset>(
                  {{store::kPreset, 4}, {store::kPan, -350}, {store::kTilt, 225}})});

    mark = line.frames().size();
    const Outcome went = finish(session.goToPreset(4));
    ASSERT_TRUE(went.isDone()) << went.text().toStdString();
    EXPECT_EQ(commandsSince(mark),
              Messages{test::message<vocab::GoToPreset>({{vocab::go_to_preset::kPreset, 4}})});
    EXPECT_TRUE(arrives(-3.5, 2.25));

    // Where the platform is now, into another preset, and back to it.
    EXPECT_EQ(storedHere.count(), 0);
    ASSERT_TRUE(finish(session.saveCurrentPosition(7)).isDone());
    ASSERT_EQ(storedHere.count(), 1);
    EXPECT_EQ(storedHere.at(0).at(0).toInt(), 7);
    ASSERT_TRUE(finish(session.moveTo({2.0, 0.0})).isDone());
    EXPECT_TRUE(arrives(2.0, 0.0));
    ASSERT_TRUE(finish(session.goToPreset(7)).isDone());
    EXPECT_TRUE(arrives(-3.5, 2.25));

    // Read again into the table, each preset asked for only after the
    // previous reply: the unit is slow with preset 3, and nothing more goes
    // out meanwhile.
    session.presets().store(4, {});
    session.link().Timer4().setInterval(20000);  // no watchdog while held
    std::size_t sentWhileHeld = 0;
    mark = line.frames().size();
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
    EXPECT_EQ(commandsSince(mark).size(), 32u);
    EXPECT_EQ(session.presets().at(4).tilt, 225);
    ASSERT_TRUE(finish(session.clearAllPresets(), 20000).isDone());
    EXPECT_EQ(session.presets().at(4).tilt, 0);
    EXPECT_EQ(session.presets().at(7).pan, 0);

    // Angles outside the soft limits are refused to a program.
    mark = line.frames().size();
    EXPECT_EQ(finish(session.savePreset(5, {0.0, 89.0})).refusal(), Refusal::OutsideLimits);
    EXPECT_TRUE(commandsSince(mark).empty());
}

TEST_F(SessionTest, CameraLinesTimeOutsAndLensesAreSetAndReadAndAStringReachesTheCamera) {
    EXPECT_EQ(finish(session.sendToCamera(0, {'x'})).refusal(), Refusal::Offline);
    ASSERT_TRUE(connect());
    // The spare bit goes out as the console holds it; the unit keeps none.
    CameraLine spare;
    spare.spare = true;
    const std::size_t linesSent = line.frames().size();
    ASSERT_TRUE(finish(session.setCameraLines({spare, CameraLine{}})).isDone());
    const auto linesCommands = commandsSince(linesSent);
    ASSERT_EQ(linesCommands.size(), 1u);
    EXPECT_EQ(linesCommands[0].at(vocab::camera_lines::kCamera1Byte.offset),
              vocab::maskOf(vocab::camera_lines::Camera1::kSpare));
    QSignalSpy linesReported(&session, &Session::cameraLinesReported);
    const CameraLine fast{7, 3, true, true, false};
    ASSERT_TRUE(finish(session.setCameraLines({CameraLine{}, fast})).isDone());
    ASSERT_TRUE(finish(session.setCameraTimeouts({100, 1})).isDone());
    const LensSetupPair lenses = {
        LensSetup{{true, false, true, 12}, {false, true, false, 255}, false},
        LensSetup{{false, true, false, 0}, {true, false, true, 1}, true}};
    ASSERT_TRUE(finish(session.setLensSetup(lenses)).isDone());
    // What the unit holds now, read back: the reply fills the status.
    session.status().CameraLineSettings = {};
    session.status().LensSetups = {};
    ASSERT_TRUE(finish(session.readCameraLines()).isDone());
    ASSERT_TRUE(finish(session.readCameraTimeouts()).isDone());
    ASSERT_TRUE(finish(session.readLensSetup({})).isDone());
    EXPECT_EQ(session.status().LensSetups, lenses);
    EXPECT_EQ(session.status().CameraLineSettings[1], fast);
    EXPECT_EQ(session.status().CameraLineSettings[0], CameraLine{});
    EXPECT_EQ(session.status().CameraAnswerTimeouts, (CameraTimeouts{100, 1}));
    ASSERT_EQ(linesReported.size(), 2);
    EXPECT_EQ(linesReported.at(1).at(0).value<CameraLinePair>()[1], fast);

    // Camera 2's line is on, so it answers; its answer comes back in the
    // position reports.
    std::vector<Byte> heard;
    const QObject listening;
    QObject::connect(&session, &Session::cameraBytesReported, &listening,
                     [&](int camera, const std::vector<Byte>& bytes) {
                         if (camera == 1) {
                             heard.insert(heard.end(), bytes.begin(), bytes.end());
                         }
                     });
    std::size_t mark = line.frames().size();
    const Outcome sent = finish(session.sendToCamera(1, {'h', 'i', '\r'}));
    ASSERT_TRUE(sent.isDone());
    EXPECT_EQ(sent.reply().at(0), vocab::CameraTransmitDone::kCode);
    namespace transmit = vocab::camera_transmit;
    auto hi = test::message<vocab::CameraTransmit>({{transmit::kCamera, 1}, {transmit::kCount, 3}},
                                                   transmit::kData);
    hi.insert(hi.end(), {'h', 'i', '\r'});
    EXPECT_EQ(commandsSince(mark), Messages{hi});
    ASSERT_TRUE(runUntil([&] { return heard.size() >= 3; }, 20000));
    EXPECT_EQ(heard, (std::vector<Byte>{'h', 'i', '\r'}));
    EXPECT_TRUE(finish(session.sendToCamera(0, std::vector<Byte>(127, 'x'))).isDone());
}

TEST_F(SessionTest, DriveAndMountSettingsAreSetAndReadBackAndAProcedureHoldsOffTheRest) {
    ASSERT_TRUE(connect());
    const DriveRates rates{{5, 10, 3}, {127, 255, 63}};
    const MountSettings mount{true, false, false, true, true, false, 0};
    ASSERT_TRUE(finish(session.setDriveRates(rates)).isDone());
    ASSERT_TRUE(finish(session.setTopSpeeds(TopSpeedSet::Second, {9, 10})).isDone());
    ASSERT_TRUE(finish(session.setTopSpeeds(TopSpeedSet::First, {7, 8})).isDone());
    // The maxima are the step ranges' maxima, so they go first.
    ASSERT_TRUE(finish(session.setMaxima({200, 100})).isDone());
    // The highest word a step range takes, both ways.
    ASSERT_TRUE(finish(session.setPanSteps({300, 32767})).isDone());
    ASSERT_TRUE(finish(session.setMount(mount)).isDone());
    ASSERT_TRUE(finish(session.setEncoderCounts({10000, 300})).isDone());
    UnitStatus& status = session.status();
    status.Rates = {};
    status.PanSteps = {};
    status.Mount = {};
    status.EncoderCounts = {};
    status.TopSpeeds = {};
    QSignalSpy topSpeeds(&session, &Session::topSpeedsReported);
    for (auto read : {&Session::readDriveRates, &Session::readPanSteps, &Session::readMount,
                      &Session::readEncoderCounts}) {
        ASSERT_TRUE(finish((session.*read)(Requester::Program)).isDone());
    }
    ASSERT_TRUE(finish(session.readTopSpeeds(TopSpeedSet::Second)).isDone());
    EXPECT_EQ(status.Rates, rates);
    EXPECT_EQ(status.PanSteps, (StepRange{300, 32767}));
    EXPECT_EQ(status.Mount, mount);
    EXPECT_EQ(status.EncoderCounts, (AxisPair{10000, 300}));
    EXPECT_EQ(status.TopSpeeds[1], (AxisPair{9, 10}));
    EXPECT_EQ(status.TopSpeeds[0], AxisPair{});
    ASSERT_TRUE(finish(session.readTopSpeeds(TopSpeedSet::First)).isDone());
    EXPECT_EQ(status.TopSpeeds[0], (AxisPair{7, 8}));
    EXPECT_EQ(status.TopSpeeds[1], (AxisPair{9, 10}));
    ASSERT_EQ(topSpeeds.size(), 2);
    EXPECT_EQ(topSpeeds.at(0).at(0).value<TopSpeedSet>(), TopSpeedSet::Second);
    EXPECT_EQ(topSpeeds.at(1).at(0).value<TopSpeedSet>(), TopSpeedSet::First);

    // And a word the unit reports beyond it stops the reply's handler and
    // keeps nothing.
    unit.state().settings.panMax = 32768;
    QSignalSpy faults(&session.state(), &FormState::faultReported);
    ASSERT_TRUE(finish(session.readPanSteps(Requester::Program)).isDone());
    ASSERT_EQ(faults.size(), 1);
    EXPECT_EQ(faults.at(0).at(0).toString(),
              QStringLiteral("Run-time error 6: Overflow in SerPort1_OnComm"));
    EXPECT_EQ(status.PanSteps, (StepRange{300, 32767}));

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
    const Outcome moved = finish(session.moveTo({1.0, 1.0}));
    EXPECT_TRUE(moved.isDone()) << moved.text().toStdString();
}

TEST_F(SessionTest, ATourIsEditedStepByStepReadAgainStartedAndCleared) {
    ASSERT_TRUE(connect());
    const auto presetsOf = [this] {
        std::vector<int> presets;
        for (const TourStep& step : session.tours().steps) {
            presets.push_back(step.preset);
        }
        return presets;
    };
    ASSERT_TRUE(finish(session.loadTour(1)).isDone());
    EXPECT_EQ(session.tours().selected, 1);
    EXPECT_EQ(session.tours().stepCount, 0);
    // An appended or replaced step comes back in the unit's reply.
    ASSERT_TRUE(finish(session.appendTourStep(1, {0, 3, 0, 5, false})).isDone());
    ASSERT_TRUE(finish(session.appendTourStep(1, {0, 4, 2, 10, true})).isDone());
    EXPECT_EQ(session.tours().steps.at(1), (TourStep{1, 4, 2, 10, true}));
    ASSERT_TRUE(finish(session.insertTourStep(1, 0, {0, 7, 0, 1, false})).isDone());
    ASSERT_TRUE(finish(session.loadTour(1)).isDone());
    EXPECT_EQ(session.tours().stepCount, 3);
    EXPECT_EQ(presetsOf(), (std::vector<int>{7, 3, 4}));
    ASSERT_TRUE(finish(session.replaceTourStep(1, 2, {0, 9, 0, 2, false})).isDone());
    EXPECT_EQ(session.tours().steps.at(2), (TourStep{2, 9, 0, 2, false}));
    ASSERT_TRUE(finish(session.deleteTourStep(1, 0)).isDone());
    ASSERT_TRUE(finish(session.loadTour(1)).isDone());
    EXPECT_EQ(presetsOf(), (std::vector<int>{3, 9}));

    QSignalSpy started(&session, &Session::tourStarted);
    ASSERT_TRUE(finish(session.startTour(1)).isDone());
    ASSERT_EQ(started.size(), 1);
    EXPECT_EQ(started.at(0).at(0).toInt(), 1);
    session.stop();
    ASSERT_TRUE(finish(session.clearTour(1)).isDone());
    EXPECT_TRUE(session.tours().steps.empty());
    ASSERT_TRUE(finish(session.loadTour(1)).isDone());
    EXPECT_EQ(session.tours().stepCount, 0);

    // A cleared reply for a tour there is not leaves the tour as it was.
    port->injectIncoming(encodeFrame(
        kAck, 0,
        test::message<vocab::TourCleared>({{vocab::tour_cleared::kTour, TourTable::kTours}}), 0));
    runUntil([] { return false; }, 100);
    EXPECT_EQ(session.tours().selected, 1);
    // A load that was answered before says nothing of the next one.
    line.setConnected(false);
    EXPECT_EQ(finish(session.loadTour(1, Requester::Operator)).kind(), Outcome::Kind::NoReply);
}

TEST_F(SessionTest, NewOffsetsShiftTheLimitsAndPresetsWhichAreReadAgainWithTheTablesLocked) {
    ASSERT_TRUE(connect());
    ASSERT_TRUE(finish(session.savePreset(2, {20.0, 10.0})).isDone());
    QSignalSpy started(&session, &Session::tableReloadStarted);
    QSignalSpy ended(&session, &Session::tableReloadEnded);
    int lockedReads = 0;
    QObject::connect(&session, &Session::softLimitReported,
                     [&] { lockedReads += session.pagesLocked() ? 1 : 0; });
    const Outcome changed = finish(session.setAngleOffsets(12.5, -2.0), 20000);
    ASSERT_TRUE(changed.isDone()) << changed.text().toStdString();
    EXPECT_EQ(changed.reply().at(0), vocab::SetAngleOffsets::kCode);
    EXPECT_FLOAT_EQ(session.status().PanAngleOffset, 12.5f);
    EXPECT_FLOAT_EQ(session.status().TiltAngleOffset, -2.0f);
    EXPECT_FLOAT_EQ(session.status().PanMaxLimit, 182.5f);
    EXPECT_FLOAT_EQ(session.status().TiltMinLimit, -87.0f);
    EXPECT_EQ(session.presets().at(2).pan, 3250);
    EXPECT_EQ(session.presets().at(2).tilt, 800);
    EXPECT_EQ(lockedReads, 4);
    EXPECT_EQ(started.size(), 1);
    EXPECT_EQ(ended.size(), 1);
    EXPECT_FALSE(session.pagesLocked());
    EXPECT_TRUE(session.status().SyncDesiredPending);

    // A program is refused while the tables are read again; a value that
    // cannot be sent starts nothing.
    {
        const Session::PagesLock reloading(session);
        EXPECT_EQ(finish(session.zeroOffsets()).refusal(), Refusal::PagesLocked);
    }
    const std::size_t mark = line.frames().size();
    EXPECT_EQ(finish(session.alignToCoordinates(std::nan(""), 0.0)).kind(),
              Outcome::Kind::RangeFault);
    EXPECT_TRUE(commandsSince(mark).empty());
    EXPECT_EQ(started.size(), 1);
    ASSERT_TRUE(finish(session.zeroOffsets(), 20000).isDone());
    EXPECT_FLOAT_EQ(session.status().PanMaxLimit, 170.0f);
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

    const std::size_t mark = line.frames().size();
    // West of north is a negative pan.
    EXPECT_EQ(rotator.setPosition(300.0, 20.0), network::RotatorResult::Ok);
    EXPECT_TRUE(arrives(-60.0, 20.0));
    EXPECT_EQ(commandsSince(mark), Messages{absolute(-6000, 2000)});
    ASSERT_TRUE(rotator.position().has_value());
    EXPECT_NEAR(rotator.position()->azimuth, 300.0, 0.01);
    EXPECT_EQ(rotator.info(), "Halvex pan & tilt unit on COM1");
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

TEST_F(SessionTest, ExitTellsTheUnitToStopThenClosesTheLine) {
    ASSERT_TRUE(connect());
    ASSERT_TRUE(finish(session.moveTo({100.0, 0.0})).isDone());
    const std::size_t mark = line.frames().size();
    finish(connection.exit());
    EXPECT_FALSE(session.port().isOpen());
    EXPECT_GE(stopsSince(mark), 1);
    // Nothing goes out once the line is closed.
    const std::size_t sent = line.frames().size();
    runUntil([] { return false; }, 50);
    EXPECT_EQ(line.frames().size(), sent);
}

TEST_F(SessionTest, VideoAndOnScreenDisplayAreSetAndReadBackAndWhatCannotBeSentSendsNothing) {
    EXPECT_EQ(finish(session.setVideo({})).refusal(), Refusal::Offline);
    ASSERT_TRUE(connect());
    // The older units' byte first: it sets the cameras' power that the video
    // message sets too.
    const LegacyVideoSettings legacy{LegacyVideoSelection::VideoSelect, {false, true}};
    ASSERT_TRUE(finish(session.setLegacyVideo(legacy)).isDone());
    EXPECT_EQ(session.status().LegacyVideoSetup, legacy);
    const VideoSettings video{5, true, false, true, {true, false}};
    const OsdSetting angles{true, true, 11};
    const OsdSetting name{true, false, 3};
    const AuxOutputStates aux{true, false, false, true};
    ASSERT_TRUE(finish(session.setVideo(video)).isDone());
    ASSERT_TRUE(finish(session.setAngleDisplay(angles)).isDone());
    ASSERT_TRUE(finish(session.setNameDisplay(name)).isDone());
    ASSERT_TRUE(finish(session.setAuxOutputs(aux)).isDone());
    EXPECT_EQ(session.status().AuxOutputsOn, aux);
    ASSERT_TRUE(finish(session.setSiteName(QStringLiteral("North Gate"))).isDone());
    const auto& siteName = unit.state().settings.siteName;
    EXPECT_EQ(std::string(siteName.begin(), siteName.end()), "North Gate  ");
    // A longer name is cut at the unit's twelve characters.
    ASSERT_TRUE(finish(session.setSiteName(QStringLiteral("North Gate East"))).isDone());
    EXPECT_EQ(std::string(siteName.begin(), siteName.end()), "North Gate E");
    // Codes 32 to 127 go as they are; a control character goes as a space.
    ASSERT_TRUE(finish(session.setSiteName(QStringLiteral("Gate\x7F\x1F~"))).isDone());
    EXPECT_EQ(std::string(siteName.begin(), siteName.end()), "Gate\x7F ~     ");

    // What the unit holds now, read back: the replies fill the status.
    session.status().Video = {};
    session.status().AngleOsd = {};
    session.status().NameOsd = {};
    QSignalSpy videoReported(&session, &Session::videoReported);
    ASSERT_TRUE(finish(session.readVideo()).isDone());
    ASSERT_TRUE(finish(session.readAngleDisplay()).isDone());
    ASSERT_TRUE(finish(session.readNameDisplay()).isDone());
    EXPECT_EQ(session.status().Video, video);
    EXPECT_EQ(session.status().AngleOsd, angles);
    EXPECT_EQ(session.status().NameOsd, name);
    ASSERT_EQ(videoReported.size(), 1);
    EXPECT_EQ(videoReported.at(0).at(0).value<VideoSettings>(), video);
}

TEST_F(SessionTest, TheAddressIsReadByBroadcastAndTheIdentityRepliesFillTheStatus) {
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

    unit.state().options.clockDate = sim::CalendarDate{2011, 6, 15};
    QSignalSpy firmware(&session, &Session::firmwareReported);
    ASSERT_TRUE(finish(session.readFirmware()).isDone());
    const FirmwareRevision expected{2, 10, 15, 6, 2011};
    EXPECT_EQ(session.status().Firmware, expected);
    ASSERT_EQ(firmware.size(), 1);
    EXPECT_EQ(firmware.at(0).at(0).value<FirmwareRevision>(), expected);
}

}  // namespace
}  // namespace halvex::testing
