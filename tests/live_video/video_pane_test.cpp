// A video pane on its own: where the picture sits, what a click, a dragged
// box and the wheel ask for, and what it draws over the picture.

#include <gtest/gtest.h>

#include <QTest>
#include <QWheelEvent>

#include "live_video/video_pane.h"

using namespace halvex;

namespace {

class Pane : public ::testing::Test {
  protected:
    void SetUp() override {
        pane.resize(400, 300);
        QObject::connect(&pane, &VideoPane::centreRequested,
                         [this](QPointF p) { centres.push_back(p); });
        QObject::connect(&pane, &VideoPane::boxRequested, [this](QRectF b) { boxes.push_back(b); });
        QObject::connect(&pane, &VideoPane::zoomRequested, [this](int s) { zooms.push_back(s); });
    }

    void wheel(int delta) {
        QWheelEvent event(QPointF(200, 150), pane.mapToGlobal(QPointF(200, 150)), QPoint(),
                          QPoint(0, delta), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&pane, &event);
    }

    VideoPane pane{QStringLiteral("Output 1")};
    std::vector<QPointF> centres;
    std::vector<QRectF> boxes;
    std::vector<int> zooms;
};

TEST_F(Pane, ThePictureKeepsItsShapeCentredInThePane) {
    // 16:9 before the first frame: 400 wide, 225 high, 37.5 above and below.
    EXPECT_EQ(pane.pictureRect(), QRectF(0, 37.5, 400, 225));
    pane.setFrame(QImage(640, 480, QImage::Format_RGB32));
    EXPECT_EQ(pane.pictureRect(), QRectF(0, 0, 400, 300));
    pane.setFrame(QImage(300, 600, QImage::Format_RGB32));
    EXPECT_EQ(pane.pictureRect(), QRectF(125, 0, 150, 300));
    EXPECT_EQ(pane.toPicture({200, 150}), QPointF(0.5, 0.5));
    EXPECT_EQ(pane.toPicture({125, 300}), QPointF(0.0, 1.0));
    EXPECT_EQ(pane.toWidget({1.0, 0.25}), QPointF(275, 75));
    EXPECT_TRUE(pane.hasPicture());
    pane.clearFrame();
    EXPECT_FALSE(pane.hasPicture());
}

TEST_F(Pane, AClickAsksForThePointToComeToTheCentre) {
    pane.setFrame(QImage(640, 480, QImage::Format_RGB32));
    QTest::mouseClick(&pane, Qt::LeftButton, {}, QPoint(300, 75));
    ASSERT_EQ(centres.size(), 1u);
    EXPECT_EQ(centres[0], QPointF(0.75, 0.25));
    // A press that wanders less than a drag's worth is still a click.
    QTest::mousePress(&pane, Qt::LeftButton, {}, QPoint(100, 150));
    QTest::mouseMove(&pane, QPoint(102, 152));
    QTest::mouseRelease(&pane, Qt::LeftButton, {}, QPoint(102, 152));
    ASSERT_EQ(centres.size(), 2u);
    EXPECT_EQ(centres[1], QPointF(102.0 / 400, 152.0 / 300));
    // Other buttons, and the black bars beside a narrow picture, ask nothing.
    QTest::mouseClick(&pane, Qt::RightButton, {}, QPoint(200, 150));
    pane.setFrame(QImage(300, 600, QImage::Format_RGB32));
    QTest::mouseClick(&pane, Qt::LeftButton, {}, QPoint(60, 150));
    EXPECT_EQ(centres.size(), 2u);
    EXPECT_TRUE(boxes.empty());
}

TEST_F(Pane, ADraggedBoxIsAskedForInPictureFractionsWithinThePicture) {
    pane.setFrame(QImage(640, 480, QImage::Format_RGB32));
    QTest::mousePress(&pane, Qt::LeftButton, {}, QPoint(100, 60));
    QTest::mouseMove(&pane, QPoint(150, 90));
    QTest::mouseMove(&pane, QPoint(200, 120));
    QTest::mouseRelease(&pane, Qt::LeftButton, {}, QPoint(200, 120));
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0], QRectF(0.25, 0.2, 0.25, 0.2));
    // Dragged up and left, and out of the pane: normalised and clipped.
    QTest::mousePress(&pane, Qt::LeftButton, {}, QPoint(300, 150));
    QTest::mouseMove(&pane, QPoint(250, 100));
    QTest::mouseMove(&pane, QPoint(-50, -30));
    QTest::mouseRelease(&pane, Qt::LeftButton, {}, QPoint(-50, -30));
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[1], QRectF(0.0, 0.0, 0.75, 0.5));
    EXPECT_TRUE(centres.empty());
}

TEST_F(Pane, APressOnTheBarsBesideThePictureStartsNoBox) {
    pane.setFrame(QImage(300, 600, QImage::Format_RGB32));  // x 125 to 275
    QTest::mousePress(&pane, Qt::LeftButton, {}, QPoint(60, 150));
    QTest::mouseMove(&pane, QPoint(150, 150));
    QTest::mouseMove(&pane, QPoint(200, 200));
    QTest::mouseRelease(&pane, Qt::LeftButton, {}, QPoint(200, 200));
    EXPECT_TRUE(boxes.empty());
    EXPECT_TRUE(centres.empty());
}

TEST_F(Pane, TheWheelAsksForWholeNotchesOfZoom) {
    wheel(120);
    wheel(-240);
    wheel(60);
    wheel(40);
    EXPECT_EQ(zooms, (std::vector<int>{1, -2}));
    wheel(20);
    EXPECT_EQ(zooms, (std::vector<int>{1, -2, 1}));
}

TEST_F(Pane, TakesNoFocusSoThatTheKeyboardJogKeepsWorking) {
    EXPECT_EQ(pane.focusPolicy(), Qt::NoFocus);
}

// Over a mid-grey picture, the marks show where they belong: the centre
// cross, the soft limit's dashed edge, the target ring, the read-out.
TEST_F(Pane, DrawsTheMarksOverThePicture) {
    QImage grey(640, 360, QImage::Format_RGB32);
    grey.fill(QColor(128, 128, 128));
    pane.resize(640, 360);
    pane.setFrame(grey);
    pane.setOverlay({QStringLiteral("Pan 1.00  Tilt 2.00  Zoom 3"), 0.125, std::nullopt,
                     std::nullopt, 0.75, QPointF(0.75, 0.25)});
    const QImage shown = pane.grab().toImage();
    const auto differs = [&](int x, int y) {
        return shown.pixelColor(x, y) != QColor(128, 128, 128);
    };
    EXPECT_TRUE(differs(320, 180 - 10));  // the centre cross
    EXPECT_TRUE(differs(320 - 10, 180));
    EXPECT_FALSE(differs(300, 160));
    EXPECT_TRUE(differs(80, 200) || differs(80, 201) || differs(80, 205));  // the left limit
    EXPECT_TRUE(differs(400, 270));                                         // the bottom limit
    EXPECT_FALSE(differs(560, 200));                                        // no right limit
    EXPECT_TRUE(differs(480 + 7, 90));                                      // the target ring
    EXPECT_FALSE(differs(480, 90));                                         // its middle is clear
    EXPECT_EQ(pane.readout(), QStringLiteral("Pan 1.00  Tilt 2.00  Zoom 3"));
}

TEST_F(Pane, ANoticeStaysAWhileAndTheMessageIsKept) {
    pane.setMessage(QStringLiteral("stream lost: reconnecting"));
    pane.showNotice(QStringLiteral("refused: offline"));
    EXPECT_EQ(pane.property("message").toString(), QStringLiteral("stream lost: reconnecting"));
    EXPECT_EQ(pane.notice(), QStringLiteral("refused: offline"));
    EXPECT_EQ(pane.accessibleDescription(), QStringLiteral("stream lost: reconnecting"));
}

}  // namespace
