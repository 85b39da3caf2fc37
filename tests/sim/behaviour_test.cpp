// What the console's own tests against the unit do not reach: refused and
// out-of-range values, injected faults, the comm time-out, the limits,
// camera bytes spread over reports, the state file.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <string>

#include "sim/tour_runner.h"
#include "tests/sim/unit_test_support.h"

namespace halvex::sim::testing {
namespace {

namespace v = vocab;
namespace r = vocab::report;
using test::isSet;
using test::message;
using test::withBits;

std::int32_t panOf(const std::vector<Byte>& report) {
    return v::getSigned(report, r::kPan);
}
std::int32_t tiltOf(const std::vector<Byte>& report) {
    return v::getSigned(report, r::kTilt);
}
// M with pan and tilt in hundredths, three bytes each from byte 1: a move,
// the offsets, or the answer to either.
template <class M = v::AngleOffsets>
std::vector<Byte> panTilt(std::int32_t pan, std::int32_t tilt) {
    return message<M>({{v::PanTilt<M>::kPan, pan}, {v::PanTilt<M>::kTilt, tilt}});
}
constexpr auto moveTo = &panTilt<v::AbsoluteMove>;
constexpr auto commTimeout = &test::sample;
constexpr auto setOffsets = &panTilt<v::SetAngleOffsets>;
constexpr int kNoStep = v::tour_step::kNoStep;

TEST(UnitReplies, OddValuesAreRefusedOrLimitedAndOffsetsChangeOnlyTheReadings) {
    struct Step {
        std::vector<Byte> send;
        std::vector<Byte> reply;
    };
    namespace video = v::video_configuration;
    const auto timeouts = [](int camera1, int camera2) {
        return message<v::CameraTimeouts>(
            {{v::camera_timeouts::kCamera1, camera1}, {v::camera_timeouts::kCamera2, camera2}});
    };
    // The video on route 1 with these bits.
    const auto route1 = [](std::initializer_list<v::Bit<v::VideoConfiguration>> bits,
                           int length = v::VideoConfiguration::kLength) {
        return withBits(message<v::VideoConfiguration>({{video::kRoute, 1}}, length), bits);
    };
    const auto maxima =
        message<v::MaximumPair>({{v::maximum_pair::kPan, 40}, {v::maximum_pair::kTilt, 50}});
    const Step steps[] = {
        {readPreset(32), presetRecord(v::preset_record::kNoPreset)},
        {storePreset(40, 100, 200), presetRecord<v::StorePreset>(v::preset_record::kNoPreset)},
        {appendStep(1, 3, 4), tourStep<v::AppendTourStep>(1, 0, 3, 4)},
        {message<v::TourStepRequest>(
             {{v::tour_step_request::kTour, 1}, {v::tour_step_request::kStep, 1}}),
         tourStep<v::TourStepRequest>(1, kNoStep)},
        {tourStep<v::InsertTourStep>(1, 2, 1, 1), tourStep<v::InsertTourStep>(1, kNoStep, 1, 1)},
        {commTimeout(121), commTimeout(120)},
        {timeouts(0, 101), timeouts(10, 10)},
        {timeouts(1, 100), timeouts(1, 100)},  // the shortest and longest time-outs
        // Stored for power up: the store bit stays out of the setting.
        {route1({video::kPal, video::kStore, video::kCamera1Power}),
         route1({video::kPal, video::kCamera1Power})},
        // The short form keeps the power.
        {route1({video::kStore}, v::VideoConfiguration::kShortest), route1({video::kCamera1Power})},
        {maxima, maxima},
        {message<v::MaximaRequest>(),
         message<v::Maxima>({{v::maxima::kPan, 40}, {v::maxima::kTilt, 50}})},
        // Preset 2 at 10.00/0.00 and offsets of +5.00/-2.00 read 15.00/-2.00.
        {storePreset(2, 1000, 0), presetRecord<v::StorePreset>(2, 1000, 0)},
        {setOffsets(500, -200), setOffsets(500, -200)},
        {readPreset(2), presetRecord(2, 1500, -200)},
        // A preset stored at these offsets reads back as it was sent.
        {storePreset(3, 300, 300), presetRecord<v::StorePreset>(3, 300, 300)},
        {readPreset(3), presetRecord(3, 300, 300)},
        // The CW limit reads 175.00.
        {v::readRequest<v::SoftLimit>(),
         message<v::SoftLimitReply>(
             {{v::soft_limit_reply::kLimit, 0}, {v::soft_limit_reply::kPosition, 17500}})},
    };
    UnitHarness unit;
    for (const Step& step : steps) {
        SCOPED_TRACE(::testing::Message() << "command " << int(step.send[0]));
        EXPECT_EQ(unit.exchange(step.send), step.reply);
    }
    EXPECT_EQ(unit.unit.state().powerUp.videoMode, 1) << "route 1, as the short form left it";
    for (int i = 1; i < 63; ++i) {
        ASSERT_EQ(v::get(unit.exchange(appendStep(1, 1, 0)), v::tour_step::kStep), i);
    }
    EXPECT_EQ(unit.exchange(appendStep(1, 1, 0)), tourStep<v::AppendTourStep>(1, kNoStep, 1))
        << "full";
    EXPECT_EQ(unit.exchange(tourStep<v::InsertTourStep>(1, 0, 1)),
              tourStep<v::InsertTourStep>(1, kNoStep, 1));

    // Going to the preset lands on the same mechanical place whatever the offset.
    unit.exchange(setOffsets(500, -200));
    unit.exchange(message<v::GoToPreset>({{v::go_to_preset::kPreset, 2}}));
    unit.advance(3000);
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 1000);
    EXPECT_EQ(panOf(unit.jog()), 1500);
    // 99999 holds pan while tilt goes to 5.00.
    EXPECT_EQ(panOf(unit.exchange(moveTo(v::absolute_move::kHoldAxis, 500))), 1500);
    unit.advance(3000);
    // Tilt 95.00 is past the end: the reply says where it is.
    const auto refused = unit.exchange(moveTo(0, 9500));
    EXPECT_EQ(panOf(refused), 1500);
    EXPECT_EQ(tiltOf(refused), 500);
    EXPECT_TRUE(isSet(refused, r::kTarget));
    unit.advance(3000);
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 1000);
}

TEST(UnitTours, ATourEndsOnTheCommTimeoutAndOnAnyCommandButTheJog) {
    const auto startTour = message<v::ExecuteTour>();
    const auto tourStarted = message<v::TourStarted>();
    UnitHarness unit;
    unit.exchange(storePreset(0, 0, 0));
    unit.exchange(appendStep(0, 0, 5));
    unit.exchange(commTimeout(2));
    EXPECT_EQ(unit.exchange(startTour), tourStarted);
    unit.advance(1000, true);  // speed 0 jogs keep it alive without ending it
    EXPECT_TRUE(isSet(unit.jog(), r::kTourExecuting));
    EXPECT_EQ(unit.unit.nextWakeMs(), unit.now + 2000) << "at rest, it sleeps until the time-out";
    unit.advance(1999);
    EXPECT_TRUE(unit.unit.state().tourRunner.running());
    unit.advance(1);
    EXPECT_FALSE(unit.unit.state().tourRunner.running()) << "silent for 2 s";

    ASSERT_EQ(unit.exchange(startTour), tourStarted);
    unit.advance(500, true);
    ASSERT_TRUE(unit.unit.state().tourRunner.running());
    unit.exchange(message<v::TourStepCountRequest>());
    EXPECT_FALSE(unit.unit.state().tourRunner.running());
}

// Which of pan's limit bits and the axes' fault bits a report shows, by name.
std::string faultsOf(const std::vector<Byte>& report) {
    const std::pair<r::B, const char*> bits[] = {{r::kCcwHardLimit, "ccw-hard "},
                                                 {r::kCwHardLimit, "cw-hard "},
                                                 {r::kCcwSoftLimit, "ccw-soft "},
                                                 {r::kCwSoftLimit, "cw-soft "},
                                                 {r::kPanDirectionFault, "pan-direction "},
                                                 {r::kPanTimeout, "pan-timeout "},
                                                 {r::kTiltDirectionFault, "tilt-direction "},
                                                 {r::kTiltTimeout, "tilt-timeout "}};
    std::string names;
    for (const auto& [bit, name] : bits) {
        names += isSet(report, bit) ? name : "";
    }
    return names;
}

TEST(UnitFaults, InjectedFaultsLatchUntilResetAndWaitForTheirAxisToBeDriven) {
    UnitHarness unit;
    unit.unit.state().motion.latchFault(Fault::PanTimeout);
    unit.unit.state().motion.latchFault(Fault::TiltDirection);
    unit.exchange(moveTo(3000, 3000));
    unit.advance(2000);
    EXPECT_EQ(faultsOf(unit.jog()), "pan-timeout tilt-direction ");
    EXPECT_EQ(unit.unit.state().motion.mechanicalPan(), 0) << "a faulted axis does not move";
    EXPECT_EQ(faultsOf(unit.jog({v::jog::kReset})), "");

    unit.unit.state().motion.armFault(Fault::PanTimeout);
    EXPECT_EQ(faultsOf(unit.jog()), "") << "not before the axis is driven";
    EXPECT_EQ(faultsOf(unit.jog({v::jog::kPanCw}, 100, 0)), "pan-timeout ");

    // A tilt fault waits for the tilt axis: driving pan leaves both clear.
    UnitHarness other;
    other.unit.state().motion.armFault(Fault::TiltTimeout);
    EXPECT_EQ(faultsOf(other.jog({v::jog::kPanCw}, 100, 0)), "");
    EXPECT_EQ(faultsOf(other.jog({v::jog::kTiltUp}, 0, 100)), "tilt-timeout ");
}

// A tour runner on its own. A tour emptied under the runner (a state file
// loaded, say) ends it at the next step instead of waiting at a step that is
// gone. A step waits for the platform to arrive before its dwell begins,
// though the lenses have nowhere to go.
TEST(UnitTours, ATourEmptiedUnderTheRunnerEndsAndAStepDwellsOnlyOnceThePlatformHasArrived) {
    Tours tours;
    Presets presets;
    Settings settings;
    Motion motion;
    Lenses lenses;
    TourPlant plant{tours, presets, settings, motion, lenses};
    // Steps naming no preset (40) only wait out their dwell: nothing moves.
    tours.append(0, {40, 0});
    tours.append(0, {40, 0});
    TourRunner emptied;
    ASSERT_TRUE(emptied.start(0, 0, plant));
    emptied.advance(100, plant);
    EXPECT_TRUE(emptied.running());
    EXPECT_EQ(emptied.stepIndex(), 1);
    tours.clear(0);
    emptied.advance(200, plant);
    EXPECT_FALSE(emptied.running());

    presets.at(0).pan = 9000;
    tours.append(0, {0, 0});
    tours.append(0, {40, 0});
    TourRunner runner;
    ASSERT_TRUE(runner.start(0, 0, plant));
    ASSERT_TRUE(motion.hasTargets());
    std::int64_t now = 0;
    for (; motion.hasTargets() && now < 60000; now += 100) {
        runner.advance(now, plant);
        ASSERT_EQ(runner.stepIndex(), 0) << "left the step while moving, at " << now << " ms";
        motion.step(0.1, settings);
    }
    runner.advance(now, plant);
    EXPECT_EQ(runner.stepIndex(), 1);
}

TEST(UnitLimits, JogStopsAtTheLimitsUnlessOverriddenOrEndlessAndTheBitsClearInside) {
    UnitHarness unit;
    std::vector<Byte> report;
    const auto jogFor = [&](int steps, std::vector<v::jog::B> flags) {
        for (int i = 0; i < steps; ++i) {
            unit.advance(100);
            report = unit.jog(flags, 255, 0);
        }
    };
    jogFor(130, {v::jog::kPanCw});
    EXPECT_EQ(panOf(report), 17000);
    EXPECT_EQ(faultsOf(report), "cw-soft ");
    jogFor(10, {});
    EXPECT_EQ(faultsOf(report), "") << "inside again";
    jogFor(260, {});  // all the way to the CCW one
    EXPECT_EQ(faultsOf(report), "ccw-soft ");
    jogFor(10, {v::jog::kPanCw});
    EXPECT_EQ(faultsOf(report), "") << "inside again";

    jogFor(300, {v::jog::kPanCw, v::jog::kSoftLimitOverride});
    EXPECT_TRUE(isSet(report, r::kSoftLimitOverridden));
    EXPECT_EQ(panOf(report), 18000);
    EXPECT_EQ(faultsOf(report), "cw-hard ") << "overridden, the soft limit shows no bit";
    EXPECT_EQ(unit.exchange(message<v::SoftLimit>({{v::soft_limit::kLimit, 0}})),
              message<v::SoftLimitReply>({{v::soft_limit_reply::kPosition, 18000}}))
        << "the CW limit set where the platform is";

    unit.exchange(withBits(message<v::Directions>(), {v::directions::kContinuousRotation}));
    bool wrapped = false;
    for (int i = 0; i < 20; ++i) {
        jogFor(1, {v::jog::kPanCw});
        EXPECT_EQ(faultsOf(report), "");
        EXPECT_TRUE(std::abs(panOf(report)) <= 18000);
        wrapped = wrapped || panOf(report) < 0;
    }
    EXPECT_TRUE(wrapped) << "past 180.00 the reading goes on from -180.00";
}

// A target at the very end of travel is taken, one hundredth past it is not.
TEST(UnitMotion, MovesReachUpToTheEndsOfTravelAndNoFurther) {
    UnitHarness unit;
    const auto target = [&unit](std::int32_t pan, std::int32_t tilt) {
        const auto reply = unit.exchange(moveTo(pan, tilt));
        return std::pair(panOf(reply), tiltOf(reply));
    };
    EXPECT_EQ(target(18000, 9000), std::pair(18000, 9000));
    EXPECT_EQ(target(-18000, -9000), std::pair(-18000, -9000));
    EXPECT_NE(target(0, 9001).second, 9001);
    EXPECT_NE(target(0, -9001).second, -9001);
    EXPECT_NE(target(18001, 0).first, 18001);
    EXPECT_NE(target(-18001, 0).first, -18001);

    // Part of the way there after a second, as far one way as the other.
    const auto after1s = [](std::int32_t pan, std::int32_t tilt) {
        UnitHarness unit;
        unit.exchange(moveTo(pan, tilt));
        unit.advance(1000);
        const auto report = unit.jog();
        return std::pair(panOf(report), tiltOf(report));
    };
    const auto [cw, up] = after1s(18000, 9000);
    EXPECT_TRUE(cw > 0 && cw < 18000 && up > 0 && up < 9000) << cw << " " << up;
    EXPECT_EQ(after1s(-18000, -9000), std::pair(-cw, -up));
}

TEST(UnitCameras, AnswersWaitForTheTimeOutAndLongOnesAreSpreadOverReports) {
    UnitHarness unit;
    const auto camera1 = [&unit] {
        const auto report = unit.jog();
        const auto count = v::get(report, r::kCamera1Count);
        EXPECT_EQ(report.size(), r::kCameraData + count + v::get(report, r::kCamera2Count));
        return std::vector<Byte>(report.begin() + r::kCameraData,
                                 report.begin() + r::kCameraData + count);
    };
    unit.exchange(toCamera1({0x81, 0x01, 0x04, 0x07, 0x02, 0xFF}));  // zoom tele
    EXPECT_TRUE(camera1().empty()) << "not before the response time-out";
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x41, 0xFF}));
    unit.advance(200);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x51, 0xFF}));
    EXPECT_TRUE(camera1().empty()) << "each byte is delivered once";
    using Bytes = std::vector<Byte>;
    const std::pair<Bytes, Bytes> answers[] = {
        // A command the camera does not know: a syntax error.
        {{0x81, 0x7E, 0xFF}, {0x90, 0x60, 0x02, 0xFF}},
        // The power inquiry: on. The zoom and focus inquiries: where the lens
        // is (128 of 255 each), in four nibbles: zoom 0..0x4000, focus from
        // 0x1000.
        {{0x81, 0x09, 0x04, 0x00, 0xFF}, {0x90, 0x50, 0x02, 0xFF}},
        {{0x81, 0x09, 0x04, 0x47, 0xFF}, {0x90, 0x50, 2, 0, 2, 0, 0xFF}},
        {{0x81, 0x09, 0x04, 0x48, 0xFF}, {0x90, 0x50, 6, 8, 5, 8, 0xFF}},
        // Broadcasts: address set gives the camera address 1, interface
        // clear comes back as sent.
        {{0x88, 0x30, 0x01, 0xFF}, {0x88, 0x30, 0x02, 0xFF}},
        {{0x88, 0x01, 0x00, 0x01, 0xFF}, {0x88, 0x01, 0x00, 0x01, 0xFF}}};
    for (const auto& [command, answer] : answers) {
        unit.exchange(toCamera1(command));
        unit.advance(100);
        EXPECT_EQ(camera1(), answer);
    }

    const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGHIJKLMNOPQRSTUVWXYZABCDEFGH";
    const std::vector<Byte> text(letters.begin(), letters.end());
    // Camera 1 answers after 400 ms.
    unit.exchange(message<v::CameraTimeouts>(
        {{v::camera_timeouts::kCamera1, 50}, {v::camera_timeouts::kCamera2, 10}}));
    unit.exchange(toCamera1(text));
    unit.advance(300);
    EXPECT_TRUE(camera1().empty());
    unit.advance(200);
    std::vector<Byte> received;
    for (int i = 0; i < 3; ++i) {
        const auto bytes = camera1();
        EXPECT_LE(bytes.size(), 24u);
        received.insert(received.end(), bytes.begin(), bytes.end());
    }
    EXPECT_EQ(received, text);

    // The shortest time-out, one step of 8 ms, and the 100 ms a camera takes.
    unit.exchange(message<v::CameraTimeouts>({{v::camera_timeouts::kCamera1, 1}}));
    unit.exchange(toCamera1({0x81, 0x01, 0x04, 0x07, 0x02, 0xFF}));
    unit.advance(8);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x41, 0xFF}));
    unit.advance(100);
    EXPECT_EQ(camera1(), (std::vector<Byte>{0x90, 0x51, 0xFF}));
}

// The unit's state file across a restart. The console's own settings
// surviving a restart of halvex-sim are checked in the setup tests.
TEST(UnitStateFile, StoredSettingsComeBackWholeAndDamagedLinesKeepFactoryValues) {
    UnitOptions options;
    options.statePath = ::testing::TempDir() + "halvex-unit-state";
    using angle = v::angle_display;
    using Lens1 = v::lens_configuration::Lens1;
    using Lens2 = v::lens_configuration::Lens2;
    // Each camera keeps its own lens settings.
    const auto lenses = message<v::LensConfiguration>({{Lens1::kFlags, 1},
                                                       {Lens1::kZoomMinimum, 3},
                                                       {Lens1::kFocusMinimum, 4},
                                                       {Lens2::kFlags, 2},
                                                       {Lens2::kZoomMinimum, 9},
                                                       {Lens2::kFocusMinimum, 10}});
    {
        UnitHarness unit(options);
        unit.exchange(storePreset(3, 10000));
        unit.exchange(appendStep(2, 3, 5));
        unit.exchange(
            withBits(message<v::AngleDisplay>({{angle::kLine, 2}}), {angle::kOn, angle::kStore}));
        unit.exchange(lenses);
        auto site = v::blank<v::SiteName>();
        std::iota(site.begin() + v::site_name::kText, site.end(), Byte('A'));
        unit.exchange(site);
    }
    UnitHarness restarted(options);
    EXPECT_EQ(restarted.exchange(readPreset(3)), presetRecord(3, 10000));
    EXPECT_EQ(restarted.exchange(message<v::TourStepRequest>({{v::tour_step_request::kTour, 2}})),
              tourStep(2, 0, 3, 5));
    EXPECT_EQ(restarted.exchange(v::readRequest<v::AngleDisplay>()),
              withBits(message<v::AngleDisplay>({{angle::kLine, 2}}), {angle::kOn}));
    EXPECT_EQ(restarted.exchange(v::readRequest<v::LensConfiguration>()), lenses);
    const auto& name = restarted.unit.state().settings.siteName;
    EXPECT_EQ(std::string(name.begin(), name.end()), "ABCDEFGHIJKL") << "the site name, whole";

    // Values at their edges are taken, one past is refused; a damaged line
    // keeps the factory value.
    std::ofstream(options.statePath) << "halvex-unit-state 1\nid 4\ncomm-timeout 999\nheater x\n"
                                        "tour-0 1 2 3\n"
                                        "preset-1 -8388608 8388607 255 0 1 2\n"
                                        "preset-2 100 200 256 0 1 2\n"
                                        "preset-3 -8388609 0 0 0 0 0\n"
                                        "preset-4 8388608 0 0 0 0 0\n"
                                        "preset-5 0 8388608 0 0 0 0\n";
    options.id = 6;  // the command line wins
    UnitHarness unit(options);
    EXPECT_EQ(unit.exchange(v::readRequest<v::CommTimeout>()), message<v::CommTimeout>());
    EXPECT_EQ(unit.exchange(v::readRequest<v::Heater>()),
              message<v::Heater>({{v::heater::kModeByte, 1}}));
    EXPECT_EQ(unit.exchange(message<v::TourStepCountRequest>()), message<v::TourStepCount>());
    auto edges = presetRecord(1, -8388608, 8388607);
    v::put(edges, v::preset_record::kLens[0], 255);
    v::put(edges, v::preset_record::kLens[2], 1);
    v::put(edges, v::preset_record::kLens[3], 2);
    EXPECT_EQ(unit.exchange(readPreset(1)), edges);
    for (int refused : {2, 3, 4, 5}) {
        EXPECT_EQ(unit.exchange(readPreset(refused)), presetRecord(refused));
    }
    std::remove(options.statePath.c_str());

    options.statePath = "/proc/no-such-folder/state";  // never writable
    UnitHarness unsaved(options);
    ::testing::internal::CaptureStderr();
    unsaved.exchange(storePreset(3, 10000));  // answered as ever
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "virtual unit: cannot save its state to /proc/no-such-folder/state\n");
}

}  // namespace
}  // namespace halvex::sim::testing
