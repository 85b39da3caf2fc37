// A lens calibrated against the virtual unit: two marks of a feature with
// the console's pan between them give the field at each zoom position, and
// Save hands on the table they make.

#include <gtest/gtest.h>

#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QtMath>
#include <cmath>

#include "live_video/calibration_dialog.h"
#include "live_video/video_aim.h"
#include "live_video/video_pane.h"
#include "tests/session/session_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

class CalibrationTest : public SessionTest {
  protected:
    CalibrationTest() {
        pane.resize(640, 360);
        pane.setFrame(QImage(1280, 720, QImage::Format_RGB32));
    }

    // Where the lens really puts a feature `angle` degrees right of the axis.
    double seenAt(double angle) const {
        const double field = truth.degreesAt(session.status().Lens[0]);
        return 0.5 +
               std::tan(qDegreesToRadians(angle)) / (2 * std::tan(qDegreesToRadians(field / 2)));
    }

    // Marks a feature at `bearing` (degrees of pan), lets the dialog pan,
    // and marks it again where it is then.
    bool measure(double bearing) {
        const double before = session.status().CurrentPan;
        emit pane.centreRequested(QPointF(seenAt(bearing - before), 0.5));
        // A click while the platform pans marks nothing.
        emit pane.centreRequested(QPointF(0.9, 0.5));
        const bool panned = runUntil(
            [&] {
                return dialog.step().startsWith(QStringLiteral("When the platform")) &&
                       !session.status().Moving() && session.status().CurrentPan != before;
            },
            20000);
        emit pane.centreRequested(QPointF(seenAt(bearing - session.status().CurrentPan), 0.5));
        return panned;
    }

    bool zoomTo(int zoom) {
        PanTiltTarget hold;
        hold.holdPan = hold.holdTilt = true;
        return finish(session.moveToWithLenses(hold, {zoom, 128, 128, 128})).isDone() &&
               runUntil([&] { return session.status().Lens[0] == zoom; }, 20000);
    }

    // What the lens really is, and what the console thinks at first.
    FieldOfView truth = *FieldOfView::fromPoints({{0, 50.0}, {255, 4.0}});
    VideoPane pane{QStringLiteral("Output 1")};
    VideoAim aim{session, pane, 0, [](int) { return FieldOfView(); }, [](const QString&) {}};
    CalibrationDialog dialog{session, {&aim, nullptr}, 0, FieldOfView()};
};

TEST_F(CalibrationTest, TwoZoomPositionsMeasuredGiveTheLensTable) {
    ASSERT_TRUE(connect());
    dialog.show();
    auto* save = dialog.findChild<QPushButton*>(QStringLiteral("CalibrationSave"));
    ASSERT_TRUE(measure(2.0));
    EXPECT_FALSE(save->isEnabled());
    const QString first = QString::number(dialog.measured().at(128), 'f', 2);
    const auto* points = dialog.findChild<QListWidget*>(QStringLiteral("CalibrationPoints"));
    // Under the points kept before.
    ASSERT_EQ(points->count(), 3);
    EXPECT_EQ(points->item(0)->text(), QStringLiteral("zoom 0: 60.00 degrees (as kept)"));
    EXPECT_EQ(points->item(2)->text(), QStringLiteral("zoom 128: %1 degrees").arg(first));
    ASSERT_TRUE(zoomTo(220));
    ASSERT_TRUE(measure(session.status().CurrentPan - 0.8));
    ASSERT_EQ(dialog.measured().size(), 2u);

    QSignalSpy calibrated(&dialog, &CalibrationDialog::calibrated);
    save->click();
    ASSERT_EQ(calibrated.size(), 1);
    EXPECT_EQ(calibrated[0][0].toInt(), 0);
    const auto lens = calibrated[0][1].value<FieldOfView>();
    ASSERT_EQ(lens.points().size(), 2u);
    // The pan is carried in hundredths; the field is worked out from the
    // pan the unit reports having made.
    EXPECT_NEAR(lens.degreesAt(128), truth.degreesAt(128), 0.01);
    EXPECT_NEAR(lens.degreesAt(220), truth.degreesAt(220), 0.01);
}

TEST_F(CalibrationTest, WhileItIsOpenAClickMarksAndMovesNothing) {
    ASSERT_TRUE(connect());
    {
        // Camera 2 is on no output the console shows.
        CalibrationDialog other{session, {&aim, nullptr}, 1, FieldOfView()};
        other.show();
        EXPECT_EQ(other.step(), QStringLiteral("Camera 2 is on neither output: route it to one on "
                                               "the Video page."));
    }
    dialog.show();
    const std::size_t from = line.frames().size();
    // A mark at the centre is too near it to pan by.
    emit pane.centreRequested(QPointF(0.5, 0.3));
    EXPECT_EQ(dialog.step(), QStringLiteral("Click a feature further from the centre."));
    EXPECT_TRUE(commandsSince(from).empty());
    dialog.hide();
    // Closed, a click aims again.
    emit pane.centreRequested(QPointF(0.6, 0.5));
    EXPECT_TRUE(runUntil([&] { return !commandsSince(from).empty(); }, 5000));
}

TEST_F(CalibrationTest, MarksThatDoNotFitAndARefusedPanAreSaidAndStartThePointAfresh) {
    dialog.show();
    emit pane.centreRequested(QPointF(0.7, 0.5));
    ASSERT_TRUE(
        runUntil([&] { return dialog.step().startsWith(QStringLiteral("The pan")); }, 5000));
    EXPECT_EQ(dialog.step(), QStringLiteral("The pan was not made (refused: the unit is "
                                            "offline): click the feature again."));
    ASSERT_TRUE(connect());
    emit pane.centreRequested(QPointF(0.7, 0.5));
    ASSERT_TRUE(runUntil(
        [&] {
            return !session.status().Moving() && dialog.step().startsWith(QStringLiteral("When"));
        },
        20000));
    // The feature seen further right after panning right: no field fits.
    emit pane.centreRequested(QPointF(0.9, 0.5));
    EXPECT_EQ(dialog.step(),
              QStringLiteral("Those marks do not fit a pan of 5.36 degrees: click the "
                             "feature again to start this point afresh."));
    EXPECT_TRUE(dialog.measured().empty());
}

}  // namespace
