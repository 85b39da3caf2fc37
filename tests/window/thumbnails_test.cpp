// The presets' pictures in the whole console against the virtual unit: a
// preset stored where the platform points shows what the video showed, on
// the Presets page, on the Tours page's steps and under the range plot's
// tool tip, for that unit only, until it no longer shows the preset.

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QPixmap>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextDocument>
#include <functional>

#include "live_video/preset_thumbnails.h"
#include "protocol/port_map.h"
#include "tests/support/console_rig.h"
#include "tests/support/finish.h"
#include "views/pages/presets_page.h"
#include "views/pages/tours_page.h"
#include "views/widgets/range_plot.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

constexpr int kPresetsPage = 1;

// A frame of one colour with a white bar across its top, 16:9.
QImage frameOf(QColor colour) {
    QImage frame(640, 360, QImage::Format_RGB32);
    frame.fill(colour);
    QPainter(&frame).fillRect(0, 0, 640, 60, Qt::white);
    return frame;
}

// The picture a tool tip's rich text shows, as a text document loads it.
QImage tipPicture(const QString& tip) {
    static const QRegularExpression source(QStringLiteral("<img src=\"([^\"]+)\""));
    const QRegularExpressionMatch found = source.match(tip);
    if (!found.hasMatch()) {
        return {};
    }
    QTextDocument document;
    document.setHtml(tip);
    const QVariant loaded =
        document.resource(QTextDocument::ImageResource, QUrl(found.captured(1)));
    // Loaded as a pixmap, for the text to be drawn with.
    return loaded.value<QPixmap>().toImage().convertToFormat(QImage::Format_RGB32);
}

// The pictures' folder for the console's line and address.
QString unitFolder(const QString& data) {
    return data + QStringLiteral("/") + QCoreApplication::applicationName() +
           QStringLiteral("/thumbnails/") + unitFolderName(comPortDevice(1), 0);
}

// The user's data folder, with what `fill` puts in it before the window
// reads it.
struct DataFolder {
    explicit DataFolder(const std::function<void(const QString& unitFolder)>& fill) {
        qputenv("XDG_DATA_HOME", QFile::encodeName(path.path()));
        if (fill) {
            QDir().mkpath(unitFolder(path.path()));
            fill(unitFolder(path.path()));
        }
    }
    QTemporaryDir path;
};

// Presets 1 to 5 spread over the range, and tour 0 through 5, 1 and 3.
struct ThumbnailRig : DataFolder, ConsoleRig {
    explicit ThumbnailRig(const std::function<void(const QString&)>& fill = {})
        : DataFolder(fill), ConsoleRig({}, kFastTickMs, 20) {
        auto& presets = unit.state().presets;
        presets.at(1) = {-4500, 1000, {}};
        presets.at(2) = {3050, -525, {}};
        presets.at(3) = {9000, 0, {}};
        presets.at(4) = {-12075, 2250, {}};
        presets.at(5) = {6000, 1500, {}};
        for (int preset : {5, 1, 3}) {
            unit.state().tours.append(0, {static_cast<Byte>(preset), 5});
        }
        thumbnails().setPictureSource([this] { return frame; });
        window->rangePlot().resize(560, 360);
    }

    PresetThumbnails& thumbnails() { return window->presetThumbnails(); }
    PresetsPage& presetsPage() { return *find<PresetsPage>(QStringLiteral("PresetsPage")); }
    ToursPage& toursPage() { return *find<ToursPage>(QStringLiteral("ToursPage")); }
    QListWidget& presetList() { return *presetsPage().PresetList; }

    // Where the platform points, then that stored as `number` from the
    // Presets page.
    bool storeAt(int number, double pan, double tilt) {
        Session& session = window->session();
        if (!finish(session.moveTo({pan, tilt})).isDone() || !waitFor([&] {
                return std::abs(session.status().CurrentPan - pan) < 0.01 &&
                       std::abs(session.status().CurrentTilt - tilt) < 0.01 &&
                       !session.status().Moving();
            })) {
            return false;
        }
        window->SSTab1().setCurrentIndex(kPresetsPage);
        presetList().setCurrentRow(number);
        QSignalSpy stored(&session, &Session::presetStoredHere);
        click(QStringLiteral("SaveCurPreBut"));
        return waitFor([&] { return stored.count() == 1; }) &&
               session.presets().at(number).pan == std::lround(pan * 100);
    }

    // The range plot's tool tip over preset `number`'s marker.
    QString plotTip(int number) {
        const PresetRecord& record = window->session().presets().at(number);
        RangePlot& plot = window->rangePlot();
        return plot.toolTipAt(plot.frame().toPixel({record.pan / 100.0, record.tilt / 100.0}));
    }

    // The tour's step entry that goes to `preset`.
    int stepTo(int preset) {
        const auto& steps = window->session().tours().steps;
        for (std::size_t i = 0; i < steps.size(); ++i) {
            if (steps[i].preset == preset) {
                return static_cast<int>(i);
            }
        }
        return -1;
    }

    bool shownEverywhere(int number) {
        return !presetsPage().presetIcon(number).isNull() &&
               !presetList().item(number)->icon().isNull() &&
               plotTip(number).contains(QStringLiteral("<img")) &&
               (stepTo(number) < 0 || !toursPage().stepIcon(stepTo(number)).isNull());
    }
    bool shownNowhere(int number) {
        return presetsPage().presetIcon(number).isNull() &&
               !plotTip(number).contains(QStringLiteral("<img")) &&
               (stepTo(number) < 0 || toursPage().stepIcon(stepTo(number)).isNull());
    }

    QImage frame = frameOf(Qt::darkGreen);
};

TEST(PresetThumbnails, AStoredPresetShowsWhatTheVideoShowedForThatUnitOnly) {
    ThumbnailRig rig;
    ASSERT_TRUE(rig.connect());
    ASSERT_TRUE(rig.waitFor([&] { return rig.stepTo(5) >= 0; }));
    ASSERT_TRUE(rig.storeAt(5, 20.0, 4.5));

    // Kept small in the unit's folder: the line COM1 names, the address 0.
    const QString folder = rig.thumbnails().folder();
    EXPECT_TRUE(
        folder.endsWith(QStringLiteral("/thumbnails/") + unitFolderName(comPortDevice(1), 0)))
        << folder.toStdString();
    const QImage kept(folder + QStringLiteral("/preset-5.png"), "PNG");
    ASSERT_EQ(kept.size(), QSize(160, 90));
    EXPECT_EQ(QColor(kept.pixel(80, 70)), QColor(Qt::darkGreen));
    EXPECT_EQ(QColor(kept.pixel(80, 5)), QColor(Qt::white));

    ASSERT_TRUE(rig.shownEverywhere(5));
    EXPECT_TRUE(rig.plotTip(5).startsWith(QStringLiteral("<p")));
    EXPECT_TRUE(rig.plotTip(5).contains(QStringLiteral("Preset 5: pan 20.00, tilt 4.50")));
    // A tool tip has nowhere to look the picture up: its text carries it.
    EXPECT_EQ(tipPicture(rig.plotTip(5)), kept);
    // The others have none, and their entries only keep the columns in line.
    EXPECT_TRUE(rig.shownNowhere(1));
    EXPECT_EQ(rig.plotTip(1), QStringLiteral("Preset 1: pan -45.00, tilt 10.00"));
    EXPECT_FALSE(rig.presetList().item(1)->icon().isNull());

    // Another address, then another line: other pictures, none here.
    Session& session = rig.window->session();
    session.talkTo(7);
    EXPECT_TRUE(rig.shownNowhere(5));
    EXPECT_FALSE(rig.presetList().item(1)->data(Qt::DecorationRole).isValid());
    session.talkTo(0);
    EXPECT_TRUE(rig.shownEverywhere(5));
    qputenv("HALVEX_COM1", "socket://10.0.0.5:4001");
    ASSERT_TRUE(finish(session.reloadPresets()).isDone());
    EXPECT_TRUE(rig.shownNowhere(5));
    qunsetenv("HALVEX_COM1");
    ASSERT_TRUE(finish(session.reloadPresets()).isDone());
    EXPECT_TRUE(rig.shownEverywhere(5));

    // Clearing the unit's presets takes its pictures.
    rig.window->SSTab1().setCurrentIndex(kPresetsPage);
    rig.click(QStringLiteral("ClearPreBut"));
    ASSERT_TRUE(rig.waitFor(
        [&] { return !QFile::exists(folder + QStringLiteral("/preset-5.png")); }, 10000));
    EXPECT_TRUE(rig.shownNowhere(5));
    EXPECT_TRUE(rig.waitFor([&] { return rig.presetList().count() > 5; }, 10000));
    EXPECT_FALSE(rig.presetList().item(5)->data(Qt::DecorationRole).isValid());
}

// Pictures kept from an earlier run show once the console has read the
// presets and the tour.
TEST(PresetThumbnails, PicturesKeptEarlierShowOnceTheUnitIsRead) {
    ThumbnailRig rig([](const QString& folder) {
        frameOf(Qt::darkRed).scaledToWidth(160).save(folder + QStringLiteral("/preset-5.png"));
        frameOf(Qt::darkCyan).scaledToWidth(160).save(folder + QStringLiteral("/preset-0.png"));
    });
    ASSERT_TRUE(rig.connect());
    // Preset 5 is a step of the tour read as the console connects.
    EXPECT_TRUE(rig.shownEverywhere(5));
    EXPECT_TRUE(rig.shownNowhere(1));
    // The first preset of the table is one like the others.
    EXPECT_FALSE(rig.presetsPage().presetIcon(0).isNull());
}

}  // namespace
