// The presets' pictures against the virtual unit: what the video shows when
// a preset is stored where the platform points is kept, small, in the
// unit's own folder, and goes when it no longer shows the preset. Files
// found there are read with care.

#include <gtest/gtest.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "live_video/preset_thumbnails.h"
#include "tests/session/session_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

// A 16:9 frame, red on the left half and blue on the right.
QImage twoColourFrame() {
    QImage frame(640, 360, QImage::Format_RGB32);
    frame.fill(Qt::red);
    QPainter(&frame).fillRect(320, 0, 320, 360, Qt::blue);
    return frame;
}

class PresetThumbnailsTest : public SessionTest {
  protected:
    PresetThumbnailsTest() { qputenv("XDG_DATA_HOME", QFile::encodeName(data.path())); }

    bool store(int number) { return finish(session.saveCurrentPosition(number)).isDone(); }
    bool kept(int number) const { return QFile::exists(thumbnails.fileOf(number)); }

    QTemporaryDir data;
    QImage frame = twoColourFrame();
    QString unitName = QStringLiteral("virtual-unit1");
    PresetThumbnails thumbnails{session, [this] { return frame; }, [this] { return unitName; }};
};

TEST(UnitFolderName, IsTheLineMadeSafeForAFileNameAndTheAddress) {
    const struct {
        QString line;
        int unitId;
        QString name;
    } cases[] = {
        {QStringLiteral("/dev/ttyUSB0"), 1, QStringLiteral("dev_ttyUSB0-unit1")},
        {QStringLiteral("rfc2217://[fd00::5]:2001"), 255,
         QStringLiteral("rfc2217_fd00_5_2001-unit255")},
        // Nothing that climbs out of the folder or hides in it.
        {QStringLiteral("../../etc"), 2, QStringLiteral("etc-unit2")},
        {QString(), 4, QStringLiteral("line-unit4")},
        {QString(100, u'a'), 5, QString(64, u'a') + QStringLiteral("-unit5")},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line.toStdString());
        EXPECT_EQ(unitFolderName(c.line, c.unitId), c.name);
    }
}

TEST(PictureToKeep, IsTheNewestFrameOfTheFirstOutputThatPlays) {
    QImage first(8, 8, QImage::Format_RGB32);
    first.fill(Qt::red);
    QImage second(8, 8, QImage::Format_RGB32);
    second.fill(Qt::green);
    const struct {
        const char* what;
        std::array<OutputPicture, 2> outputs;
        QImage kept;
    } cases[] = {
        {"both play", {{{true, first}, {true, second}}}, first},
        {"the first lost, its last frame still held", {{{false, first}, {true, second}}}, second},
        {"nothing plays", {{{false, first}, {false, second}}}, QImage()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(pictureToKeep(c.outputs), c.kept);
    }
}

TEST_F(PresetThumbnailsTest, APresetStoredHereKeepsTheVideoSmallInTheUnitsFolder) {
    ASSERT_TRUE(connect());
    QSignalSpy changed(&thumbnails, &PresetThumbnails::changed);
    ASSERT_TRUE(store(5));
    EXPECT_EQ(thumbnails.fileOf(5), data.path() + QStringLiteral("/") +
                                        QCoreApplication::applicationName() +
                                        QStringLiteral("/thumbnails/virtual-unit1/preset-5.png"));
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).toInt(), 5);

    const QImage kept = thumbnails.thumbnail(5);
    ASSERT_EQ(kept.size(), QSize(160, 90));
    EXPECT_EQ(QColor(kept.pixel(20, 45)), QColor(Qt::red));
    EXPECT_EQ(QColor(kept.pixel(140, 45)), QColor(Qt::blue));

    // An upright picture is as high as a wide one is wide.
    frame = QImage(300, 600, QImage::Format_RGB32);
    frame.fill(Qt::green);
    ASSERT_TRUE(store(6));
    EXPECT_EQ(thumbnails.thumbnail(6).size(), QSize(80, 160));
}

TEST_F(PresetThumbnailsTest, APictureGoesWhenItNoLongerShowsThePreset) {
    ASSERT_TRUE(connect());
    for (int number : {1, 2, 3}) {
        ASSERT_TRUE(store(number));
    }
    QSignalSpy changed(&thumbnails, &PresetThumbnails::changed);

    // Stored again with no video: the old picture shows somewhere else.
    frame = QImage();
    ASSERT_TRUE(store(1));
    EXPECT_FALSE(kept(1));
    // Stored at typed angles, whoever asked: no picture, and the old one goes.
    ASSERT_TRUE(finish(session.savePreset(2, {1.5, -2.0})).isDone());
    EXPECT_FALSE(kept(2));
    frame = twoColourFrame();
    ASSERT_TRUE(finish(session.savePreset(4, {1.5, -2.0})).isDone());
    EXPECT_FALSE(kept(4));
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed.at(0).at(0).toInt(), 1);
    EXPECT_EQ(changed.at(1).at(0).toInt(), 2);

    // A refused store changes nothing.
    session.state().Online = false;
    EXPECT_FALSE(store(3));
    EXPECT_TRUE(kept(3));
}

TEST_F(PresetThumbnailsTest, ClearingThePresetsRemovesTheUnitsPicturesOnly) {
    ASSERT_TRUE(connect());
    ASSERT_TRUE(store(3));
    unitName = QStringLiteral("virtual-unit2");
    ASSERT_TRUE(store(7));
    unitName = QStringLiteral("virtual-unit1");
    ASSERT_TRUE(store(5));

    QSignalSpy cleared(&thumbnails, &PresetThumbnails::allChanged);
    ASSERT_TRUE(finish(session.clearAllPresets(), 20000).isDone());
    EXPECT_EQ(cleared.count(), 1);
    EXPECT_FALSE(kept(3));
    EXPECT_FALSE(kept(5));
    unitName = QStringLiteral("virtual-unit2");
    EXPECT_TRUE(kept(7));
}

TEST_F(PresetThumbnailsTest, AFileThatIsNotASmallPngReadsAsNoPicture) {
    QDir().mkpath(thumbnails.folder());
    const auto write = [this](int number, const QByteArray& bytes) {
        QFile file(thumbnails.fileOf(number));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    const auto encoded = [](const QImage& image, const char* format) {
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, format);
        return bytes;
    };
    QImage wide(4000, 2, QImage::Format_RGB32);
    wide.fill(Qt::black);
    QImage small(16, 9, QImage::Format_RGB32);
    small.fill(Qt::black);
    QByteArray padded = encoded(small, "PNG");
    padded.append(QByteArray(PresetThumbnails::kMostFileBytes, '\0'));

    const struct {
        const char* what;
        QByteArray bytes;
    } cases[] = {
        {"a JPEG under the name", encoded(small, "JPG")},
        {"wider than a thumbnail could be", encoded(wide, "PNG")},
        {"a small PNG in a large file", padded},
    };
    int number = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        write(number, c.bytes);
        EXPECT_TRUE(thumbnails.thumbnail(number).isNull());
        ++number;
    }
}

}  // namespace
