// A lens's field of view across its zoom, and where points of the picture
// lie from the camera's axis.

#include <gtest/gtest.h>

#include <QtMath>
#include <cmath>

#include "live_video/aiming.h"
#include "live_video/calibration.h"
#include "live_video/field_of_view.h"

using namespace halvex;

namespace {

using Point = FieldOfView::Point;

TEST(FieldOfView, InterpolatesGeometricallyBetweenPointsAndHoldsBeyondThem) {
    const FieldOfView lens;  // 60 at 0, 3 at 255
    EXPECT_DOUBLE_EQ(lens.degreesAt(0), 60.0);
    EXPECT_DOUBLE_EQ(lens.degreesAt(255), 3.0);
    EXPECT_DOUBLE_EQ(lens.degreesAt(-4), 60.0);
    EXPECT_DOUBLE_EQ(lens.degreesAt(300), 3.0);
    for (int zoom : {1, 128, 254}) {
        SCOPED_TRACE(zoom);
        EXPECT_NEAR(lens.degreesAt(zoom), 60.0 * std::pow(3.0 / 60.0, zoom / 255.0), 1e-9);
        EXPECT_EQ(lens.zoomFor(lens.degreesAt(zoom)), zoom);
    }

    const auto three = FieldOfView::fromPoints({{0, 50.0}, {100, 20.0}, {255, 5.0}});
    ASSERT_TRUE(three);
    EXPECT_DOUBLE_EQ(three->degreesAt(100), 20.0);
    EXPECT_NEAR(three->degreesAt(50), std::sqrt(50.0 * 20.0), 1e-9);
    EXPECT_NEAR(three->degreesAt(177), 20.0 * std::pow(5.0 / 20.0, 77.0 / 155.0), 1e-9);
    EXPECT_EQ(three->zoomFor(std::sqrt(20.0 * 5.0)), 178);
    EXPECT_EQ(three->zoomFor(80.0), 0);
    EXPECT_EQ(three->zoomFor(1.0), 255);
}

TEST(FieldOfView, AcceptsOnlyTablesThatNarrowAsTheZoomRises) {
    // The last accepted is kept to the last digit. Refused: one point, none,
    // no narrowing, widening, the zoom falling or the same twice, zooms and
    // fields out of range or not numbers ("x" is not read as zoom 0), and
    // other layouts.
    const char* accepted[] = {" 0 : 60 ; 128:12.5;255:3;", "10:40;20:30",
                              "0:60;100:13.333333333333334;255:3"};
    const char* refused[] = {"0:60",        "0:60;255:60", "0:3;255:60",   "128:20;64:30",
                             "-1:60;255:3", "0:60;256:3",  "0:180;255:3",  "0:60;255:0",
                             "0:nan;255:3", "x:60;255:3",  "0:60:1;255:3", "0:60;0:30"};
    for (const char* text : accepted) {
        SCOPED_TRACE(text);
        QString why;
        const auto table = FieldOfView::fromText(QString::fromLatin1(text), &why);
        ASSERT_TRUE(table.has_value());
        EXPECT_TRUE(why.isEmpty());
        EXPECT_EQ(FieldOfView::fromText(table->text()), table);
    }
    for (const char* text : refused) {
        SCOPED_TRACE(text);
        QString why;
        EXPECT_FALSE(FieldOfView::fromText(QString::fromLatin1(text), &why).has_value());
        EXPECT_FALSE(why.isEmpty());
    }
}

TEST(PictureGeometry, APointsAnglesFromTheAxisFollowThePinhole) {
    const PictureGeometry wide{60.0, 9.0 / 16.0};
    const double reach = std::tan(qDegreesToRadians(30.0));
    struct Case {
        QPointF point;
        double pan;
        double tilt;
    };
    const Case cases[] = {
        {{1.0, 0.5}, 30.0, 0.0},
        {{0.5, 0.0}, 0.0, qRadiansToDegrees(std::atan(reach * 9.0 / 16.0))},
        {{0.25, 0.75},
         -qRadiansToDegrees(std::atan(reach / 2)),
         -qRadiansToDegrees(std::atan(reach * 9.0 / 32.0))},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.point.x() << ", " << c.point.y());
        const QPointF angles = wide.anglesTo(c.point);
        EXPECT_NEAR(angles.x(), c.pan, 1e-9);
        EXPECT_NEAR(angles.y(), c.tilt, 1e-9);
        // And back: the angle falls where the point was.
        const auto across = wide.acrossAt(c.pan);
        const auto down = wide.downAt(c.tilt);
        ASSERT_TRUE(across && down);
        EXPECT_NEAR(*across, c.point.x(), 1e-9);
        EXPECT_NEAR(*down, c.point.y(), 1e-9);
    }
    EXPECT_FALSE(wide.acrossAt(30.5));
    EXPECT_FALSE(wide.acrossAt(-95.0));
    EXPECT_FALSE(wide.downAt(20.0));
}

TEST(PictureGeometry, ABoxFillsThePictureByItsWiderSide) {
    const PictureGeometry view{40.0, 0.75};
    const double reach = std::tan(qDegreesToRadians(20.0));
    const auto field = [&](double share) {
        return qRadiansToDegrees(2 * std::atan(reach * share));
    };
    EXPECT_NEAR(view.fieldFilledBy({0.4, 0.4, 0.25, 0.1}), field(0.25), 1e-9);
    EXPECT_NEAR(view.fieldFilledBy({0.4, 0.2, 0.1, 0.5}), field(0.5), 1e-9);
    // Dragged up and to the left.
    EXPECT_NEAR(view.fieldFilledBy({0.6, 0.6, -0.2, -0.1}), field(0.2), 1e-9);
}

TEST(Calibration, TwoMarksOfAFeatureGiveTheFieldThatMovedIt) {
    // Where a feature at `angle` from the axis is seen, for a field.
    const auto seenAt = [](double angle, double field) {
        return 0.5 +
               std::tan(qDegreesToRadians(angle)) / (2 * std::tan(qDegreesToRadians(field / 2)));
    };
    struct Case {
        double field;
        double featureAngle;
        double panned;
    };
    const Case cases[] = {
        {60.0, 12.0, 24.0},  // crossing the centre
        {3.0, -0.9, -1.8},   // narrow, panned left
        {13.3, 2.0, 3.0},    // staying on one side
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        const auto field = fieldFromMarks(seenAt(c.featureAngle, c.field),
                                          seenAt(c.featureAngle - c.panned, c.field), c.panned);
        ASSERT_TRUE(field);
        EXPECT_NEAR(*field, c.field, 1e-6);
    }
    // Marks that moved the wrong way, or no pan.
    EXPECT_FALSE(fieldFromMarks(0.4, 0.6, 10.0));
    EXPECT_FALSE(fieldFromMarks(0.7, 0.3, 0.0));
    // More movement than any field gives for the pan.
    EXPECT_FALSE(fieldFromMarks(0.999, 0.001, 0.01));
}

TEST(Calibration, TheMovePutsTheFeatureAcrossTheCentre) {
    const PictureGeometry picture{20.0, 0.75};
    const double pan = mirroringPan(0.8, 20.0);
    EXPECT_NEAR(pan, 2 * picture.anglesTo({0.8, 0.5}).x(), 1e-9);
    EXPECT_NEAR(*picture.acrossAt(picture.anglesTo({0.8, 0.5}).x() - pan), 0.2, 1e-9);
    EXPECT_NEAR(*fieldFromMarks(0.8, 0.2, pan), 20.0, 1e-6);
}

}  // namespace
