// The live video in the main window: where the panel goes on each screen,
// the View menu's entry, the output toggles, and the sources and lenses
// chosen in the dialog, kept unless the command line gave them for the run.

#include <gtest/gtest.h>

#include <QAction>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QToolButton>

#include "live_video/live_video.h"
#include "live_video/video_pane.h"
#include "live_video/video_panel.h"
#include "live_video/video_sources_dialog.h"
#include "tests/support/console_rig.h"
#include "views/pages/pan_tilt_page.h"
#include "window/page_place.h"
#include "window/video_wiring.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

struct VideoRig : ConsoleRig {
    VideoWiring& video() { return window->videoWiring(); }
    LiveVideoChoice choice() { return video().liveVideo().choice(); }
    void resize(QSize size) {
        window->resize(size);
        ASSERT_TRUE(waitFor([&] { return window->size() == size; }));
        settle();
    }
    // Types the entries into the sources dialog and presses OK.
    void choose(const QString& output1, const QString& lens1) {
        find<QToolButton>(QStringLiteral("VideoSourcesBut"))->click();
        VideoSourcesDialog& dialog = video().sourcesDialog();
        dialog.findChild<QLineEdit*>(QStringLiteral("VideoSource_0"))->setText(output1);
        dialog.findChild<QLineEdit*>(QStringLiteral("FieldOfView_0"))->setText(lens1);
        dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
    }
};

TEST(VideoWindow, AWideScreenHasTheVideoOnThePanTiltPageAndASmallOneInItsOwnWindow) {
    VideoRig rig;
    PagePlace& place = rig.video().place();
    QGroupBox* slot = rig.window->panTiltPage().VideoSlot;
    rig.resize(QSize(1920, 1000));
    EXPECT_TRUE(place.onPage());
    EXPECT_TRUE(slot->isVisible());
    EXPECT_GE(rig.find<VideoPane>(QStringLiteral("VideoPane_0"))->width(), 320);
    // The menu entry of a panel on the page shows the page.
    rig.window->SSTab1().setCurrentIndex(1);
    rig.find<QAction>(QStringLiteral("MenuVideo"))->trigger();
    EXPECT_EQ(rig.window->SSTab1().currentIndex(), 0);
    EXPECT_FALSE(place.ownWindow().isVisible());

    rig.resize(QSize(1024, 700));
    EXPECT_FALSE(place.onPage());
    EXPECT_FALSE(slot->isVisible());
    EXPECT_FALSE(place.ownWindow().isVisible());
    rig.find<QAction>(QStringLiteral("MenuVideo"))->trigger();
    EXPECT_TRUE(place.ownWindow().isVisible());
    EXPECT_EQ(rig.video().panel().window(), &place.ownWindow());

    // A small screen shows one output at a time, and loses no control.
    auto* toggle = rig.find<QToolButton>(QStringLiteral("VideoToggle_1"));
    ASSERT_NE(toggle, nullptr);
    toggle->click();
    EXPECT_FALSE(rig.video().panel().pane(1).isVisible());
    EXPECT_TRUE(toggle->isVisible());
    toggle->click();
    EXPECT_TRUE(rig.video().panel().pane(1).isVisible());
}

TEST(VideoWindow, SourcesAndLensesChosenInTheDialogAreKeptAndShown) {
    const QString udp = QStringLiteral("udp://127.0.0.1:5999");
    {
        VideoRig rig;
        rig.choose(QStringLiteral("ftp://camera"), QStringLiteral("0:50;255:4"));
        VideoSourcesDialog& dialog = rig.video().sourcesDialog();
        // Nothing is taken while an entry does not read.
        const auto error = [&dialog] {
            return dialog.findChild<QLabel*>(QStringLiteral("VideoSourcesError"))->text();
        };
        EXPECT_TRUE(
            error().startsWith(QStringLiteral("Output 1: not a video source: ftp://camera")));
        rig.choose(udp, QStringLiteral("0:50;255:60"));
        EXPECT_TRUE(error().startsWith(QStringLiteral("Camera 1: ")));
        rig.choose(udp, QStringLiteral("0:50;255:4"));
        EXPECT_FALSE(dialog.isVisible());
    }
    // The next run starts with them; a source given for the run is shown
    // but not kept.
    {
        VideoRig rig;
        EXPECT_EQ(rig.choice().sources[0], udp);
        EXPECT_EQ(rig.choice().lenses[0].text(), QStringLiteral("0:50;255:4"));
        const QString given = QStringLiteral("rtsp://127.0.0.1:1/out1");
        rig.video().overrideSources({given, std::nullopt});
        // A lens saved meanwhile keeps the kept source.
        const FieldOfView lens = *FieldOfView::fromText(QStringLiteral("0:40;255:2"));
        emit rig.video().sourcesDialog().calibrationRequested(1);
        ASSERT_NE(rig.video().calibrationDialog(), nullptr);
        emit rig.video().calibrationDialog()->calibrated(1, lens);
        EXPECT_EQ(rig.choice().sources[0], given);
        EXPECT_EQ(loadLiveVideoChoice().sources[0], udp);
        EXPECT_EQ(loadLiveVideoChoice().lenses[1].text(), QStringLiteral("0:40;255:2"));
        // Under names that later versions read too.
        EXPECT_EQ(QSettings().value(QStringLiteral("LiveVideo/Source1")).toString(), udp);
        EXPECT_EQ(QSettings().value(QStringLiteral("LiveVideo/FieldOfView2")).toString(),
                  QStringLiteral("0:40;255:2"));
        rig.video().calibrationDialog()->close();
        rig.choose(QString(), QStringLiteral("0:60;255:3"));
    }
    EXPECT_EQ(VideoRig().choice().sources[0], QString());
}

}  // namespace
