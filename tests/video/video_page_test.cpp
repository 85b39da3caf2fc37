#include <gtest/gtest.h>

#include <QListWidget>

#include "tests/setup/page_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

class VideoPage : public OnlineSuite<PagesRig> {
  protected:
    void SetUp() override { shared_->showPage(5); }
};

// A unit of the older type, whose legacy video frame is the one enabled.
struct LegacyRig : PagesRig {
    LegacyRig()
        : PagesRig([] {
              sim::UnitOptions options;
              options.variant = 2;
              return options;
          }()) {}
};
class LegacyVideoPage : public OnlineSuite<LegacyRig> {};

}  // namespace

TEST_F(VideoPage, EveryControlSendsItsWholeConfiguration) {
    PagesRig& rig = *shared_;
    // The unit came up with routing 0 and both cameras powered (0x0C).
    rig.runRows({
        {"VidOption_5", {0x64, 0x05, 0x0C}},
        {"BlankCheck_0", {0x64, 0x15, 0x0C}},  // Vout 2, bit 4
        {"BlankCheck_1", {0x64, 0x35, 0x0C}},  // Vout 1, bit 5
        {"PALCheck", {0x64, 0x3D, 0x0C}},
        {"CamPwrCheck_0", {0x64, 0x3D, 0x08}},
        {"StoreInitBut", {0x64, 0x7D, 0x08}},
        {"VidOption_6", {0x64, 0x3E, 0x08}},  // the store bit is not kept
        {"VidOption_0", {0x64, 0x38, 0x08}},
        {"GetVidBut", {0x64, 0x80, 0x00}},
        {"AuxCheck_0", {0x66, 0x01}},
        {"AuxCheck_3", {0x66, 0x09}},
        {"AuxCheck_0", {0x66, 0x08}},
        {"AngDisCheck", {0x70, 0x10}},
        {"AngSgnCheck", {0x70, 0x30}},
        {"AngLineScroll=11", {0x70, 0x3B}},
        {"AngStorBut", {0x70, 0x7B}},
        {"AngSgnCheck", {0x70, 0x1B}},
        {"NumDisCheck", {0x71, 0x10}},
        {"NumLineScroll=3", {0x71, 0x13}},
        {"NameStoreBut", {0x71, 0x53}},
    });
    // Names are cut or padded to twelve, tabs and characters beyond ASCII as spaces.
    rig.setText("NameText", QString::fromUtf8("Caf\xC3\xA9\t\xC2\x80North Gate"));
    EXPECT_EQ(rig.sentBy("NameSaveBut").at(0),
              (Bytes{0x75, 'C', 'a', 'f', ' ', ' ', ' ', 'N', 'o', 'r', 't', 'h', ' '}));
    rig.setText("NameText", "Gate");
    EXPECT_EQ(rig.sentBy("NameSaveBut").at(0),
              (Bytes{0x75, 'G', 'a', 't', 'e', ' ', ' ', ' ', ' ', ' ', ' ', ' ', ' '}));
    // Twelve characters as the operator sees them: an emoji, and an e with
    // a combining accent, are one character and one space each.
    rig.setText("NameText", QString::fromUtf8("\xF0\x9F\x98\x80"
                                              "Cafe\xCC\x81"
                                              "ABCDEFGHIJ"));
    EXPECT_EQ(rig.sentBy("NameSaveBut").at(0),
              (Bytes{0x75, ' ', 'C', 'a', 'f', ' ', 'A', 'B', 'C', 'D', 'E', 'F', 'G'}));
}

TEST_F(VideoPage, RepliesFillTheControlsAndSendNothing) {
    PagesRig& rig = *shared_;
    const std::pair<Bytes, const char*> cases[] = {
        {{0x64, 0x02, 0x00},
         "VidOption_2 !BlankCheck_0 !BlankCheck_1 LVidOption_2 !PALCheck !CamPwrCheck_0"},
        // Store and read bits dropped, power bits only.
        {{0x64, 0xFD, 0xFF},
         "VidOption_5 BlankCheck_0 BlankCheck_1 PALCheck PALCheck2 CamPwrCheck_0 CamPwrCheck_1 "
         "LCamPwrCheck_0 LCamPwrCheck_1"},
        {{0x63, 0xF6}, "LVidOption_1 LCamPwrCheck_0 !LCamPwrCheck_1"},
        // Neither selection bit is Blank Video; both read as the first.
        {{0x63, 0x08}, "LVidOption_2 !LCamPwrCheck_0 LCamPwrCheck_1"},
        {{0x63, 0x03}, "LVidOption_0"},
        // Lines 12 to 15 show as line 0; the on and signed bits still count.
        {{0x70, 0x3E}, "AngLineScroll=0 AngDisCheck AngSgnCheck"},
        {{0x71, 0x1C}, "NumLineScroll=0 NumDisCheck"},
        {{0x71, 0x05}, "NumLineScroll=5 !NumDisCheck"},
    };
    for (const auto& [reply, states] : cases) {
        SCOPED_TRACE(states);
        EXPECT_TRUE(rig.sentBy([&] { rig.inject(reply); }).empty());
        rig.expect(states);
    }
    EXPECT_EQ(rig.sentBy("VidOption_6"), (std::vector<Bytes>{{0x64, 0x3E, 0x0C}}));
    EXPECT_TRUE(rig.window->state().UserClickEnabled);
}

TEST_F(VideoPage, BlankCheckMarksTheDwellByteOfATourStep) {
    PagesRig& rig = *shared_;
    rig.press("VBlankCheck");
    rig.sentBy([&] { rig.showPage(3); });  // the Tours page reads the tour when shown
    rig.act("CamSel_1 WaitScroll=10");
    auto* choices = rig.at<QListWidget>("ScriptPreList");
    ASSERT_GT(choices->count(), 5);
    choices->setCurrentRow(5);
    // Preset 5 + 64 for camera 2; dwell 10 + 128 for the blanking.
    EXPECT_EQ(rig.sentBy([&] { emit choices->itemDoubleClicked(choices->item(5)); }).at(0),
              (Bytes{0x52, 0, 69, 138}));
}

TEST_F(LegacyVideoPage, LegacyControlsSendTheirShortCommands) {
    LegacyRig& rig = *shared_;
    rig.showPage(5);
    EXPECT_FALSE(rig.at("VidConfigFrame")->isEnabled());
    ASSERT_TRUE(rig.at("VideoFrame")->isEnabled());
    rig.runRows({
        {"LVidOption_1", {0x63, 0x02}},
        // The unit's answer to the first click cleared both power boxes.
        {"LCamPwrCheck_1", {0x63, 0x0A}},
        {"LVidOption_2", {0x63, 0x08}},  // blanking clears both bits
        {"LVidOption_0", {0x63, 0x09}},
        {"PALCheck2", {0x64, 0x08, 0x04}},
        {"OSDOnCheck", {0x64, 0x09, 0x04}},
        {"InitVModeBut", {0x64, 0x49}},  // the store message has two bytes
    });
}
