#include <gtest/gtest.h>

#include <QDate>
#include <QLocale>
#include <algorithm>

#include "tests/setup/page_rig.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

// A unit whose alignment and homing take a moment, not seconds.
struct QuickProcedureRig : PagesRig {
    QuickProcedureRig()
        : PagesRig([] {
              sim::UnitOptions options;
              options.alignmentMs = options.homingMs = 50;
              return options;
          }()) {}
};

using test::message;
using test::withBits;
namespace v = vocab;

class SetupPages : public OnlineSuite<QuickProcedureRig> {
  protected:
    void SetUp() override {
        shared_->showPage(6);
        shared_->clearStatus();
    }
};

}  // namespace

TEST_F(SetupPages, EveryButtonSendsItsBytes) {
    auto& rig = *shared_;
    using Pan = v::rates::Pan;
    using Tilt = v::rates::Tilt;
    namespace top = v::top_speeds;
    rig.runRows({
        {"GetRateBut", v::readRequest<v::Rates>()},
        {"PSafeScroll=5 PRampScroll=10 PDecelScroll=3 TSafeScroll=127 TRampScroll=255 "
         "TDecelScroll=63 SetRateBut",
         message<v::Rates>({{Pan::kSafeSpeedByte, 5},
                            {Pan::kRamp, 10},
                            {Pan::kDeceleration, 3},
                            {Tilt::kSafeSpeedByte, 127},
                            {Tilt::kRamp, 255},
                            {Tilt::kDeceleration, 63}})},
        {"GetCMaxBut", v::readRequest<v::TopSpeeds>()},
        {"PTopScroll=100 TTopScroll=90 SetCMaxBut",
         message<v::TopSpeeds>({{top::kPan, 100}, {top::kTilt, 90}})},
        {"GetIMaxBut", withBits(v::readRequest<v::TopSpeeds>(), {top::kSecond})},
        {"PITopScroll=1 TITopScroll=255 SetIMaxBut",
         withBits(message<v::TopSpeeds>({{top::kPan, 1}, {top::kTilt, 255}}), {top::kSecond})},
        {"GetPStepBut", v::readRequest<v::PanSteps>()},
        {"PMinScroll=300 PMaxScroll=30000 SetPStepBut",
         message<v::PanSteps>({{v::pan_steps::kMinimum, 300}, {v::pan_steps::kMaximum, 30000}})},
        {"GetTStepBut", v::readRequest<v::TiltSteps>()},
        {"TMinScroll=15 TMaxScroll=255 SetTStepBut",
         message<v::TiltSteps>({{v::tilt_steps::kMinimum, 15}, {v::tilt_steps::kMaximum, 255}})},
        {"PMaxScroll=200 SetMaxPairBut",
         message<v::MaximumPair>({{v::maximum_pair::kPan, 200}, {v::maximum_pair::kTilt, 255}})},
        {"SetMinPairBut", {}},
        {"PMinScroll=20 SetMinPairBut",
         message<v::MinimumPair>({{v::minimum_pair::kPan, 20}, {v::minimum_pair::kTilt, 15}})},
        {"SetTiltBut", message<v::TiltSettings>({{v::tilt_settings::kSafeSpeed, 127},
                                                 {v::tilt_settings::kRamp, 255},
                                                 {v::tilt_settings::kMinimum, 15},
                                                 {v::tilt_settings::kMaximum, 255}})},
        {"GetTOBut", v::readRequest<v::CommTimeout>()},
        {"TOScroll=45 SetTOBut", message<v::CommTimeout>({{v::comm_timeout::kSeconds, 45}})},
        {"GetHeatBut", v::readRequest<v::Heater>()},
        {"HeatOp_2", message<v::Heater>({{v::heater::kModeByte, 2}})},
        {"RevBut", message<v::FirmwareRequest>()},
        {"GetIDBut", v::readRequest<v::UnitAddress>()},
    });
    EXPECT_TRUE(rig.statusMessage().contains("SetMinPairBut_Click"));
    rig.expect("Label28:5 Label1_21:255 TOLabel:45");
}

TEST_F(SetupPages, ANewAddressIsSetWhereTheConsoleTalksOrByBroadcast) {
    auto& rig = *shared_;
    // Units answer at addresses 0 to 99.
    for (const char* bar : {"CurrIDScroll", "IDScroll"}) {
        EXPECT_EQ(rig.at<QScrollBar>(bar)->maximum(), 99) << bar;
    }
    // Set goes to the unit the console talks to, not to every unit.
    EXPECT_EQ(rig.sentBy("IDScroll=7 SetIDBut"), (std::vector<Bytes>{{0x9F, 7}}));
    EXPECT_TRUE(std::ranges::any_of(rig.line.frames(), [](const auto& frame) {
        return frame.address == 0 && frame.message == Bytes{0x9F, 7};
    }));
    rig.scroll("CurrIDScroll", 7);
    // The unit answers a broadcast from its own address, which the console
    // does not talk to.
    rig.line.clear();
    rig.act("IDScroll=0 BSetIDBut");
    ASSERT_TRUE(rig.waitFor([&] { return !rig.line.messages(false).empty(); }));
    EXPECT_EQ(rig.line.messages(false), (std::vector<Bytes>{{0x9F, 0}}));
    EXPECT_TRUE(std::ranges::any_of(rig.line.frames(), [](const auto& frame) {
        return frame.address == kBroadcast && frame.message == Bytes{0x9F, 0};
    }));
    rig.scroll("CurrIDScroll", 0);
}

TEST_F(SetupPages, RepliesFillTheControlsWithTheirSubstitutions) {
    auto& rig = *shared_;
    const std::pair<Bytes, const char*> cases[] = {
        {{0x92, 0x85, 10, 64, 0, 0xFF, 255, 63},
         "PSafeScroll=5 PRampScroll=10 PDecelScroll=1 TSafeScroll=127 TRampScroll=255 "
         "TDecelScroll=63"},
        {{0x86, 0x80, 0x85}, "PRampScroll=1 TRampScroll=5"},
        {{0x9C, 0x00, 7, 8}, "PTopScroll=7 TTopScroll=8"},
        {{0x9C, 0x40, 9, 10}, "PITopScroll=9 TITopScroll=10 PTopScroll=7"},
        {{0xA1, 0x10, 0x27, 0x30, 0x75}, "PMinScroll=10000 PMaxScroll=30000"},
        {{0xA2, 0x0F, 0x00, 0x10, 0x00}, "TMinScroll=15 TMaxScroll=16"},
        {{0x98, 200, 100}, "PMaxScroll=200 TMaxScroll=100"},
        {{0x96, 200}, "TOScroll=120"},
        {{0x9F, 99}, "IDScroll=99"},
        {{0xA5, 0x10, 0x27, 0x00, 0x00}, "PEncScroll=10000 TEncScroll=0"},
        {{0x97, 3}, "HeatOp_3 !HeatOp_0 !HeatOp_1 !HeatOp_2"},  // the hidden option
        {{0x97, 0x81}, "HeatOp_1"},
    };
    for (const auto& [reply, states] : cases) {
        SCOPED_TRACE(states);
        EXPECT_TRUE(rig.sentBy([&rig, &reply = reply] { rig.inject(reply); }).empty());
        rig.expect(states);
    }
    rig.expect("Label35:1 TOLabel:120 Label34:10000");
}

TEST_F(SetupPages, ValuesOutOfRangeStopTheDecoderAndNothingSticks) {
    auto& rig = *shared_;
    rig.act("PSafeScroll=9 PMaxScroll=300 TMaxScroll=400");
    rig.inject({0x9A, 2, 3, 15, 6, 11});
    const QString revision =
        "Rev 2.03  " + QLocale::system().toString(QDate(2011, 6, 15), QLocale::ShortFormat);
    EXPECT_EQ(rig.text("RevLabel"), revision);
    const std::pair<const char*, Bytes> cases[] = {
        {"maxima below 16", {0x99, 0, 7}},
        {"safe speed 0", {0x92, 0x80, 1, 1, 0, 1, 1, 1}},
        {"minimum word above 32767", {0xA2, 0xFF, 0xFF, 0x10, 0x00}},
        {"address above 99", {0x9F, 150}},
        {"negative encoder", {0xA5, 0xFF, 0xFF, 0, 0}},
        {"29 February of a common year", {0x9A, 2, 3, 29, 2, 23}},
    };
    for (const auto& [what, reply] : cases) {
        SCOPED_TRACE(what);
        rig.clearStatus();
        EXPECT_TRUE(rig.sentBy([&rig, &reply = reply] { rig.inject(reply); }).empty());
        EXPECT_TRUE(rig.statusMessage().startsWith("Run-time error 6"))
            << rig.statusMessage().toStdString();
        EXPECT_TRUE(rig.window->state().UserClickEnabled);
    }
    // The read-outs show what the bars hold, and so what Set would send.
    rig.expect("PMaxScroll=300 Label1_20:300 Label1_21:400 PSafeScroll=9");
    EXPECT_EQ(rig.text("RevLabel"), revision);
    // The console goes on: a read still gets its answer into the page.
    rig.sentBy("TOScroll=17 SetTOBut");
    rig.sentBy("TOScroll=3 GetTOBut");
    EXPECT_EQ(rig.value("TOScroll"), 17);
}

TEST_F(SetupPages, FactoryCodeUncoversTheControls) {
    auto& rig = *shared_;
    // How the cover looks, and that it goes, is held by the window's pictures
    // and layout tests; the buttons below must be enabled to be pressed.
    rig.showPage(7);
    EXPECT_FALSE(rig.at("FactoryControls")->isEnabled());
    rig.setText("PassText", "7214");
    rig.press("PassEntBut");

    namespace dir = v::directions;
    rig.runRows({
        {"GetRevBut", v::readRequest<v::Directions>()},
        {"GetEncBut", v::readRequest<v::Encoders>()},
        {"ConCheck RevCheck_0 SetRevBut",
         withBits(message<v::Directions>(), {dir::kContinuousRotation, dir::kPanMotorReverse})},
        {"PEncScroll=10000 TEncScroll=300 SetEncBut",
         message<v::Encoders>({{v::encoders::kPan, 10000}, {v::encoders::kTilt, 300}})},
    });
    // A direction reply sets the boxes and the flags the next Set sends.
    const Bytes directions =
        withBits(message<v::Directions>(), {dir::kPanResolverInvert, dir::kInvertedMount});
    EXPECT_TRUE(rig.sentBy([&] { rig.inject(directions); }).empty());
    rig.expect("!RevCheck_0 !RevCheck_1 RevCheck_2 !RevCheck_3 !ConCheck InvCheck");
    EXPECT_EQ(rig.sentBy("SetRevBut"), std::vector<Bytes>{directions});

    // Cancel in either checklist: nothing sent.
    rig.presenterAnswer = false;
    EXPECT_TRUE(rig.sentBy("InitEncBut").empty());
    EXPECT_TRUE(rig.sentBy("EncHomeBut").empty());
    rig.presenterAnswer = true;

    // OK: each sends its command.
    EXPECT_EQ(rig.sentBy("InitEncBut"), std::vector<Bytes>{message<v::EncoderAlignment>()});
    // The homing cycle: the unit is silent for longer than the usual
    // watchdog, then reports the index points it found.
    EXPECT_EQ(rig.sentBy("EncHomeBut"), std::vector<Bytes>{message<v::HomingCycle>()});
    EXPECT_FALSE(rig.window->state().LinkFault);
    // Resolver centre 32768 plus the pan encoder value set above.
    EXPECT_EQ(rig.text("Pindex"), "42768");
    rig.window->link().Timer4().setInterval(Link::kWatchdogMs);
}
