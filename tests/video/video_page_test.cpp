#include <gtest/gtest.h>

#include "tests/setup/page_rig.h"
#include "tests/support/messages.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

class VideoPage : public OnlineSuite<PagesRig> {
  protected:
    void SetUp() override { shared_->showPage(5); }
};

using test::message;
using test::withBits;
using VC = vocab::VideoConfiguration;
using LV = vocab::LegacyVideo;
namespace vc = vocab::video_configuration;
namespace lv = vocab::legacy_video;
constexpr auto kPal = vc::kPal;
constexpr auto kBlank1 = vc::kBlankOutput1;
constexpr auto kBlank2 = vc::kBlankOutput2;
constexpr auto kPower1 = vc::kCamera1Power;
constexpr auto kPower2 = vc::kCamera2Power;

// The video configuration: the route, and the mode and power bits given.
Bytes video(int route, std::initializer_list<vocab::Bit<VC>> bits) {
    return withBits(message<VC>({{vc::kRoute, route}}), bits);
}

Bytes legacy(std::initializer_list<vocab::Bit<LV>> bits) {
    return withBits(message<LV>(), bits);
}

constexpr auto& kAux = vocab::aux_outputs::kOutput;

template <class M>
Bytes display(int line, std::initializer_list<vocab::Bit<M>> bits) {
    return withBits(message<M>({{vocab::DisplaySetting<M>::kLine, line}}), bits);
}
using Angle = vocab::angle_display;
using Name = vocab::name_display;

// The site name message with exactly `text`, twelve characters.
Bytes siteName(const char (&text)[vocab::site_name::kTextLength + 1]) {
    Bytes bytes = message<vocab::SiteName>();
    std::copy(text, text + vocab::site_name::kTextLength, bytes.begin() + vocab::site_name::kText);
    return bytes;
}

}  // namespace

TEST_F(VideoPage, EveryControlSendsItsWholeConfiguration) {
    PagesRig& rig = *shared_;
    // The unit came up with routing 0 and both cameras powered.
    rig.runRows({
        {"VidOption_5", video(5, {kPower1, kPower2})},
        {"BlankCheck_0", video(5, {kBlank2, kPower1, kPower2})},
        {"BlankCheck_1", video(5, {kBlank2, kBlank1, kPower1, kPower2})},
        {"PALCheck", video(5, {kBlank2, kBlank1, kPal, kPower1, kPower2})},
        {"CamPwrCheck_0", video(5, {kBlank2, kBlank1, kPal, kPower2})},
        {"StoreInitBut", video(5, {kBlank2, kBlank1, kPal, vc::kStore, kPower2})},
        {"VidOption_6", video(6, {kBlank2, kBlank1, kPal, kPower2})},  // the store bit is not kept
        {"GetVidBut", vocab::readRequest<VC>()},
        {"AuxCheck_0", withBits(message<vocab::AuxOutputs>(), {kAux[0]})},
        {"AuxCheck_3", withBits(message<vocab::AuxOutputs>(), {kAux[0], kAux[3]})},
        {"AuxCheck_0", withBits(message<vocab::AuxOutputs>(), {kAux[3]})},
        {"AngDisCheck", display<vocab::AngleDisplay>(0, {Angle::kOn})},
        {"AngSgnCheck", display<vocab::AngleDisplay>(0, {Angle::kOn, Angle::kSigned})},
        {"AngLineScroll=11", display<vocab::AngleDisplay>(11, {Angle::kOn, Angle::kSigned})},
        {"AngStorBut",
         display<vocab::AngleDisplay>(11, {Angle::kOn, Angle::kSigned, Angle::kStore})},
        {"AngSgnCheck", display<vocab::AngleDisplay>(11, {Angle::kOn})},
        {"NumDisCheck", display<vocab::NameDisplay>(0, {Name::kOn})},
        {"NumLineScroll=3", display<vocab::NameDisplay>(3, {Name::kOn})},
        {"NameStoreBut", display<vocab::NameDisplay>(3, {Name::kOn, Name::kStore})},
    });
    // Names are cut or padded to twelve, tabs and characters beyond ASCII as spaces.
    rig.setText("NameText", QString::fromUtf8("Caf\xC3\xA9\t\xC2\x80North Gate"));
    EXPECT_EQ(rig.sentBy("NameSaveBut").at(0), siteName("Caf   North "));
    // Twelve characters as the operator sees them: an emoji, and an e with
    // a combining accent, are one character and one space each.
    rig.setText("NameText", QString::fromUtf8("\xF0\x9F\x98\x80"
                                              "Cafe\xCC\x81"
                                              "ABCDEFGHIJ"));
    EXPECT_EQ(rig.sentBy("NameSaveBut").at(0), siteName(" Caf ABCDEFG"));
}

TEST_F(VideoPage, RepliesFillTheControlsAndSendNothing) {
    PagesRig& rig = *shared_;
    const std::pair<Bytes, const char*> cases[] = {
        {video(2, {}),
         "VidOption_2 !BlankCheck_0 !BlankCheck_1 LVidOption_2 !PALCheck !CamPwrCheck_0"},
        // Output 1 blanked alone stands for "Video Sel".
        {video(1, {vc::kBlankOutput1}), "VidOption_1 !BlankCheck_0 BlankCheck_1 LVidOption_1"},
        // Store and read bits dropped, power bits only: every bit set. Output
        // 2 blanked stands for the legacy "Undefined".
        {message<VC>({{vc::kModeByte, 255}, {vc::kRoute, 5}, {vc::kPower, 255}}),
         "VidOption_5 BlankCheck_0 BlankCheck_1 LVidOption_0 PALCheck PALCheck2 CamPwrCheck_0 "
         "CamPwrCheck_1 LCamPwrCheck_0 LCamPwrCheck_1"},
        // Every bit but the first selection bit and camera 2's power.
        {message<LV>({{lv::kSettingsByte, 0xFF ^ vocab::maskOf(lv::kSelectionLow) ^
                                              vocab::maskOf(lv::kCamera2Power)}}),
         "LVidOption_1 LCamPwrCheck_0 !LCamPwrCheck_1"},
        // Neither selection bit is Blank Video; both read as the first.
        {legacy({lv::kCamera2Power}), "LVidOption_2 !LCamPwrCheck_0 LCamPwrCheck_1"},
        {legacy({lv::kSelectionLow, lv::kSelectionHigh}), "LVidOption_0"},
        // Lines 12 to 15 show as line 0; the on and signed bits still count.
        {display<vocab::AngleDisplay>(14, {Angle::kOn, Angle::kSigned}),
         "AngLineScroll=0 AngDisCheck AngSgnCheck"},
        {display<vocab::NameDisplay>(12, {Name::kOn}), "NumLineScroll=0 NumDisCheck"},
        {display<vocab::NameDisplay>(5, {}), "NumLineScroll=5 !NumDisCheck"},
    };
    for (const auto& [reply, states] : cases) {
        SCOPED_TRACE(states);
        EXPECT_TRUE(rig.sentBy([&rig, &reply = reply] { rig.inject(reply); }).empty());
        rig.expect(states);
    }
    EXPECT_EQ(rig.sentBy("VidOption_6"),
              std::vector<Bytes>{video(6, {kBlank2, kBlank1, kPal, kPower1, kPower2})});
    EXPECT_TRUE(rig.window->state().UserClickEnabled);
}

// A unit of the older type, whose legacy video frame is the one enabled.
TEST(LegacyVideoPage, LegacyControlsSendTheirShortCommands) {
    sim::UnitOptions options;
    options.variant = 2;
    PagesRig rig(options);
    ASSERT_TRUE(rig.connect());
    rig.showPage(5);
    EXPECT_FALSE(rig.at("VidConfigFrame")->isEnabled());
    ASSERT_TRUE(rig.at("VideoFrame")->isEnabled());
    rig.runRows({
        {"LVidOption_1", legacy({lv::kSelectionHigh})},
        // The unit's answer to the first click cleared both power boxes.
        {"LCamPwrCheck_1", legacy({lv::kSelectionHigh, lv::kCamera2Power})},
        {"LVidOption_2", legacy({lv::kCamera2Power})},  // blanking clears both bits
        {"LVidOption_0", legacy({lv::kSelectionLow, lv::kCamera2Power})},
        // The three-byte form carries camera 1's power.
        {"PALCheck2", withBits(message<VC>(), {kPal, kPower1})},
        {"OSDOnCheck", withBits(message<VC>(), {vc::kLegacyDisplayOn, kPal, kPower1})},
        // The store message has two bytes.
        {"InitVModeBut",
         withBits(message<VC>({}, VC::kShortest), {vc::kLegacyDisplayOn, kPal, vc::kStore})},
    });
}
