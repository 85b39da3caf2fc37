// Aiming by the picture against the virtual unit: a click, a box and the
// wheel reach the unit as moves of the angles the pinhole gives, for the
// camera the route puts on the output, or are refused with the reason.

#include <gtest/gtest.h>

#include <QtMath>
#include <cmath>

#include "live_video/video_aim.h"
#include "live_video/video_pane.h"
#include "tests/session/session_rig.h"

using namespace halvex;
using namespace halvex::testing;
namespace v = halvex::vocab;

namespace {

// The pane shows a 16:9 picture; the lenses are the virtual unit's.
class VideoAimTest : public SessionTest {
  protected:
    VideoAimTest() {
        pane.resize(640, 360);
        pane.setFrame(QImage(1280, 720, QImage::Format_RGB32));
    }

    // The soft limits close about the centre, in view of the lenses' middle
    // zoom (13.3 degrees across): pan ±5, tilt ±3.
    void narrowLimits() { unit.state().settings.softLimits = {500, -500, 300, -300}; }

    // The angle from the axis of a point `fraction` of the way across.
    static double panTo(double fraction, double field) {
        return qRadiansToDegrees(
            std::atan((fraction - 0.5) * 2.0 * std::tan(qDegreesToRadians(field / 2))));
    }

    Messages sent(std::size_t from, Byte code) const {
        Messages found = commandsSince(from);
        std::erase_if(found, [&](const auto& message) { return message.at(0) != code; });
        return found;
    }

    double field(int lens) const { return lenses.degreesAt(session.status().Lens.at(lens)); }

    VideoPane pane{QStringLiteral("Output 1")};
    FieldOfView lenses;
    std::vector<QString> told;
    VideoAim aim{session, pane, 0, [this](int) { return lenses; },
                 [this](const QString& text) { told.push_back(text); }};
};

TEST_F(VideoAimTest, AClickMovesByTheAnglesThatBringThePointToTheCentre) {
    ASSERT_TRUE(connect());
    const double wide = field(0);
    const double pan = panTo(0.75, wide);
    const double tilt = panTo(0.5 + 0.2 * 9 / 16, wide);  // 0.2 of the height up
    const std::size_t from = line.frames().size();
    emit pane.centreRequested(QPointF(0.75, 0.3));
    // The target is marked where the click was...
    ASSERT_TRUE(pane.overlay().target);
    EXPECT_NEAR(pane.overlay().target->x(), 0.75, 1e-9);
    EXPECT_NEAR(pane.overlay().target->y(), 0.3, 1e-9);
    // ...and stays on the clicked point while the platform moves...
    const PictureGeometry picture{wide, 9.0 / 16};
    ASSERT_TRUE(runUntil(
        [&] { return session.status().CurrentPan > pan / 4 && session.status().Moving(); }, 5000));
    ASSERT_TRUE(pane.overlay().target);
    EXPECT_NEAR(pane.overlay().target->x(), *picture.acrossAt(pan - session.status().CurrentPan),
                1e-4);
    EXPECT_NEAR(pane.overlay().target->y(), *picture.downAt(tilt - session.status().CurrentTilt),
                1e-4);
    ASSERT_TRUE(arrives(std::round(pan * 100) / 100, std::round(tilt * 100) / 100));
    const Messages moves = sent(from, v::DeltaMove::kCode);
    ASSERT_EQ(moves.size(), 1u);
    EXPECT_EQ(vocab::getSigned(moves[0], v::delta_move::kPan), std::lround(pan * 100));
    EXPECT_EQ(vocab::getSigned(moves[0], v::delta_move::kTilt), std::lround(tilt * 100));
    EXPECT_TRUE(told.empty());
    // ...until it has come to rest on it.
    EXPECT_TRUE(runUntil([&] { return !pane.overlay().target; }, 5000));
}

TEST_F(VideoAimTest, TheRouteSaysWhichCamerasLensTheAnglesComeFrom) {
    ASSERT_TRUE(connect());
    // Route 2 puts camera 2 on output 1; its zoom lens is narrowed.
    VideoSettings video = session.status().Video;
    video.route = 2;
    ASSERT_TRUE(finish(session.setVideo(video)).isDone());
    ASSERT_EQ(aim.camera(), 1);
    EXPECT_EQ(pane.accessibleName(), pane.caption() + QStringLiteral(", camera 2"));
    std::array<int, 4> lenses{128, 128, 220, 128};
    ASSERT_TRUE(finish(session.moveToWithLenses({0, 0}, lenses)).isDone());
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[2] == 220; }, 20000));
    const std::size_t from = line.frames().size();
    emit pane.centreRequested(QPointF(1.0, 0.5));
    ASSERT_TRUE(runUntil([&] { return !sent(from, v::DeltaMove::kCode).empty(); }, 5000));
    EXPECT_EQ(vocab::getSigned(sent(from, v::DeltaMove::kCode)[0], v::delta_move::kPan),
              std::lround(field(2) / 2 * 100));
}

TEST_F(VideoAimTest, ABoxCentresItsMiddleAndZoomsTheLensSoItFillsThePicture) {
    ASSERT_TRUE(connect());
    const double wide = field(0);
    const QRectF box(0.5, 0.2, 0.25, 0.2);
    const PictureGeometry picture{wide, 9.0 / 16};
    const int zoom = lenses.zoomFor(picture.fieldFilledBy(box));
    const QPointF by = picture.anglesTo(box.center());
    const std::size_t from = line.frames().size();
    emit pane.boxRequested(box);
    ASSERT_TRUE(runUntil([&] { return session.status().Moving(); }, 5000));
    EXPECT_TRUE(pane.overlay().target);
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[0] == zoom; }, 20000));
    const Messages moves = sent(from, v::AbsoluteMoveWithLenses::kCode);
    ASSERT_EQ(moves.size(), 1u);
    namespace m = v::absolute_move_with_lenses;
    EXPECT_EQ(vocab::getSigned(moves[0], m::kPan), std::lround(by.x() * 100));
    EXPECT_EQ(vocab::getSigned(moves[0], m::kTilt), std::lround(by.y() * 100));
    EXPECT_EQ(vocab::get(moves[0], m::kLens[0]), zoom);
    for (std::size_t other : {1u, 2u, 3u}) {
        EXPECT_EQ(vocab::get(moves[0], m::kLens.at(other)), 128) << other;
    }
}

TEST_F(VideoAimTest, TheWheelZoomsTheLensAndLeavesThePlatformWhereItIs) {
    ASSERT_TRUE(connect());
    const double before = field(0);
    const std::size_t from = line.frames().size();
    emit pane.zoomRequested(2);
    const int zoom = lenses.zoomFor(before * VideoAim::kZoomPerNotch * VideoAim::kZoomPerNotch);
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[0] == zoom; }, 20000));
    const Messages moves = sent(from, v::AbsoluteMoveWithLenses::kCode);
    ASSERT_EQ(moves.size(), 1u);
    EXPECT_EQ(vocab::getSigned(moves[0], v::absolute_move_with_lenses::kPan),
              v::absolute_move::kHoldAxis);
    EXPECT_EQ(vocab::getSigned(moves[0], v::absolute_move_with_lenses::kTilt),
              v::absolute_move::kHoldAxis);

    // A table too coarse for a fifth of the field to be a whole step: a
    // notch still moves the lens one step, each way.
    lenses = *FieldOfView::fromPoints({{100, 60}, {101, 3}});
    ASSERT_TRUE(finish(session.moveToWithLenses({0, 0}, {100, 128, 128, 128})).isDone());
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[0] == 100; }, 20000));
    // The zoom a notch asks for, or -1 when none is asked.
    const auto notch = [&](int steps) {
        const std::size_t since = line.frames().size();
        emit pane.zoomRequested(steps);
        Messages moves;
        runUntil([&] { return !(moves = sent(since, v::AbsoluteMoveWithLenses::kCode)).empty(); },
                 5000);
        return moves.empty() ? -1
                             : static_cast<int>(vocab::get(moves.back(),
                                                           v::absolute_move_with_lenses::kLens[0]));
    };
    EXPECT_EQ(notch(1), 101);
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[0] == 101; }, 20000));
    EXPECT_EQ(notch(-1), 100);

    // At the narrow end a notch further in asks for that end again, never
    // for a step past it that would wrap round to the wide end.
    lenses = *FieldOfView::fromPoints({{0, 60}, {255, 3}});
    ASSERT_TRUE(finish(session.moveToWithLenses({0, 0}, {255, 128, 128, 128})).isDone());
    ASSERT_TRUE(runUntil([&] { return session.status().Lens[0] == 255; }, 20000));
    EXPECT_EQ(notch(1), 255);
}

TEST_F(VideoAimTest, ARefusedRequestIsSaidAndMarksNothing) {
    emit pane.centreRequested(QPointF(0.9, 0.5));
    ASSERT_TRUE(runUntil([&] { return !told.empty(); }, 5000));
    EXPECT_EQ(told.back(),
              QStringLiteral("Output 1: ") + Outcome::refused(Refusal::Offline).text());
    EXPECT_EQ(pane.notice(), Outcome::refused(Refusal::Offline).text());
    EXPECT_FALSE(pane.overlay().target);
}

TEST_F(VideoAimTest, TheSoftLimitsInViewAreDrawnWhereTheyFall) {
    narrowLimits();
    ASSERT_TRUE(connect());
    // From pan 1, tilt 0.5 they are nearer on the right and at the top.
    ASSERT_TRUE(finish(session.moveTo({1, 0.5})).isDone());
    ASSERT_TRUE(arrives(1, 0.5));
    ASSERT_TRUE(
        runUntil([&] { return pane.readout().startsWith(QStringLiteral("Pan 1.00")); }, 5000));
    const PictureGeometry picture{field(0), 9.0 / 16};
    const VideoOverlay& moved = pane.overlay();
    ASSERT_TRUE(moved.limitLeft && moved.limitRight && moved.limitTop && moved.limitBottom);
    EXPECT_DOUBLE_EQ(*moved.limitLeft, *picture.acrossAt(-6));
    EXPECT_DOUBLE_EQ(*moved.limitRight, *picture.acrossAt(4));
    EXPECT_DOUBLE_EQ(*moved.limitTop, *picture.downAt(2.5));
    EXPECT_DOUBLE_EQ(*moved.limitBottom, *picture.downAt(-3.5));
}

}  // namespace
