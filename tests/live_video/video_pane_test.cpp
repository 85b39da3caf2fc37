// A video pane on its own: where the picture sits, what a click, a dragged
// box and the wheel ask for, and what it draws over the picture.

#include <gtest/gtest.h>

#include <QPainter>
#include <QTest>
#include <QWheelEvent>

#include "live_video/video_pane.h"
#include "live_video/video_panel.h"
#include "tests/support/kept_picture.h"

using namespace halvex;

namespace {

const halvex::testing::KeptPictures kPictures{HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES};

class Pane : public ::testing::Test {
  protected:
    void SetUp() override {
        pane.resize(400, 300);
        QObject::connect(&pane, &VideoPane::centreRequested,
                         [this](QPointF p) { centres.push_back(p); });
        QObject::connect(&pane, &VideoPane::boxRequested, [this](QRectF b) { boxes.push_back(b); });
        QObject::connect(&pane, &VideoPane::zoomRequested, [this](int s) { zooms.push_back(s); });
    }

    // Pressed at the first point, moved through the others, let go at the last.
    void drag(std::initializer_list<QPoint> path) {
        QTest::mousePress(&pane, Qt::LeftButton, {}, *path.begin());
        for (auto point = std::next(path.begin()); point != path.end(); ++point) {
            QTest::mouseMove(&pane, *point);
        }
        QTest::mouseRelease(&pane, Qt::LeftButton, {}, *std::prev(path.end()));
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
    EXPECT_EQ(pane.toPicture({125, 300}), QPointF(0.0, 1.0));
    // Laid out at the sizes it asks for, the first picture fills it.
    for (const QSize size : {pane.sizeHint(), pane.minimumSizeHint()}) {
        EXPECT_EQ(size.width() * 9, size.height() * 16) << size.width() << " x " << size.height();
    }
}

TEST_F(Pane, AClickAsksForThePointToComeToTheCentre) {
    pane.setFrame(QImage(640, 480, QImage::Format_RGB32));
    QTest::mouseClick(&pane, Qt::LeftButton, {}, QPoint(300, 75));
    ASSERT_EQ(centres.size(), 1u);
    EXPECT_EQ(centres[0], QPointF(0.75, 0.25));
    // A press that wanders less than a drag's worth is still a click.
    drag({{100, 150}, {102, 152}});
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
    drag({{100, 60}, {150, 90}, {200, 120}});
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_EQ(boxes[0], QRectF(0.25, 0.2, 0.25, 0.2));
    // Dragged up and left, and out of the pane: normalised and clipped.
    drag({{300, 150}, {250, 100}, {-50, -30}});
    ASSERT_EQ(boxes.size(), 2u);
    EXPECT_EQ(boxes[1], QRectF(0.0, 0.0, 0.75, 0.5));
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

// A landscape of sorts: sky over ground, with posts to see the scaling by.
QImage landscape() {
    QImage picture(640, 360, QImage::Format_RGB32);
    QPainter painter(&picture);
    painter.fillRect(0, 0, 640, 200, QColor(96, 144, 200));
    painter.fillRect(0, 200, 640, 160, QColor(72, 112, 56));
    for (int x = 40; x < 640; x += 80) {
        painter.fillRect(x, 150, 8, 90, QColor(40, 32, 24));
    }
    return picture;
}

// Both outputs as an operator sees them: one playing with every mark over
// it and a box being dragged, the other waiting for its stream; then the
// same stacked in a tall panel, the picture with a message on it.
TEST(VideoPanelLook, MarksAndMessagesLookAsKept) {
    VideoPanel panel;
    panel.resize(960, 320);
    panel.show();
    VideoPane& playing = panel.pane(0);
    playing.setFrame(landscape());
    playing.setOverlay({QStringLiteral("Pan 12.50  Tilt -3.25  Zoom 128"), 0.125, 0.9, 0.2, 0.85,
                        QPointF(0.7, 0.3)});
    playing.showNotice(QStringLiteral("refused: outside the soft limits"));
    QTest::mousePress(&playing, Qt::LeftButton, {}, QPoint(200, 100));
    QTest::mouseMove(&playing, QPoint(300, 180));
    panel.pane(1).setMessage(QStringLiteral("stream lost: reconnecting"));
    QCoreApplication::processEvents();
    halvex::testing::expectLooksAsKept(panel, kPictures, QStringLiteral("panel-side-by-side"));

    QTest::mouseRelease(&playing, Qt::LeftButton, {}, QPoint(300, 180));
    playing.setMessage(QStringLiteral("connecting to rtsp://camera/out1"));
    panel.resize(420, 560);
    QCoreApplication::processEvents();
    halvex::testing::expectLooksAsKept(panel, kPictures, QStringLiteral("panel-stacked"));
}

// Side by side from 16:9 on, where the two pictures are larger so; stacked
// in anything narrower.
TEST(VideoPanelLook, TheOutputsSitSideBySideInAPanelAtLeast16By9) {
    VideoPanel panel;
    panel.show();
    const auto sideBySide = [&](QSize size) {
        panel.resize(size);
        QCoreApplication::processEvents();
        return panel.pane(0).mapTo(&panel, QPoint()).y() ==
               panel.pane(1).mapTo(&panel, QPoint()).y();
    };
    EXPECT_TRUE(sideBySide({1600, 900}));
    EXPECT_FALSE(sideBySide({1599, 900}));
}

}  // namespace
