// Every page of the main window, online, as it was last looked at: at
// 1024 x 700 and at the roomy 1400 x 900 of a large screen in the desktop
// palette, and the Pan/Tilt page also by night and in the dark palette. A
// control moved, cut off or lying on another shows here, as does a colour
// of a palette.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <utility>

#include "live_video/preset_thumbnails.h"
#include "tests/support/console_rig.h"
#include "tests/support/kept_picture.h"
#include "tests/support/online_suite.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

const KeptPictures kPictures{HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES};

// The Setup page shows the unit's date. Three presets, two of them with the
// picture taken when they were stored, and a tour through all three.
struct DatedRig : ConsoleRig {
    DatedRig() : ConsoleRig(options()) {
        auto& presets = unit.state().presets;
        presets.at(1) = {-4500, 1000, {}};
        presets.at(2) = {3050, -525, {}};
        presets.at(3) = {9000, 0, {}};
        for (int preset : {3, 2, 1}) {
            unit.state().tours.append(0, {static_cast<Byte>(preset), 5});
        }
        QImage picture(160, 90, QImage::Format_RGB32);
        PresetThumbnails& thumbnails = window->presetThumbnails();
        thumbnails.setPictureSource([&picture] { return picture; });
        for (const auto& [preset, sky] :
             {std::pair{1, QColor(70, 120, 190)}, {3, QColor(150, 110, 40)}}) {
            picture.fill(sky);
            thumbnails.keep(preset);
        }
        thumbnails.setPictureSource({});
    }
    static sim::UnitOptions options() {
        sim::UnitOptions options;
        options.clockDate = sim::CalendarDate{2026, 11, 25};
        return options;
    }
};

// One console online for the pictures, each test starting at 1024 x 700.
class Pictures : public OnlineSuite<DatedRig> {
  protected:
    void SetUp() override { show(QSize(1024, 700)); }
    void show(QSize size) {
        rig.window->resize(size);
        ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.window->size() == size; }));
    }
    // The page settled, with no text cursor blinking in it.
    void showPage(int page) {
        rig.window->SSTab1().setCurrentIndex(page);
        if (QWidget* focus = QApplication::focusWidget()) {
            focus->clearFocus();
        }
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    ConsoleRig& rig = *shared_;
};

}  // namespace

TEST_F(Pictures, EveryPageOnASmallAndALargeScreenAndPanTiltByNightAndInTheDark) {
    QTabWidget& tabs = rig.window->SSTab1();
    ASSERT_EQ(tabs.count(), 8);
    const char* names[] = {"pan-tilt", "presets", "offsets", "tours",
                           "camera",   "video",   "setup",   "factory"};
    for (const auto& [screen, size] :
         {std::pair{"small", QSize(1024, 700)}, std::pair{"large", QSize(1400, 900)}}) {
        show(size);
        for (int page = 0; page < tabs.count(); ++page) {
            showPage(page);
            expectLooksAsKept(
                *rig.window, kPictures,
                QStringLiteral("%1-%2").arg(QLatin1String(screen), QLatin1String(names[page])));
        }
    }
    show(QSize(1024, 700));
    // The factory controls, once the access code has uncovered them.
    showPage(7);
    rig.find<QLineEdit>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
    rig.click(QStringLiteral("PassEntBut"));
    expectLooksAsKept(*rig.window, kPictures, QStringLiteral("small-factory-uncovered"));
    for (const char* palette : {"Night", "Dark"}) {
        rig.find<QAction>("MenuPalette" + QLatin1String(palette))->trigger();
        showPage(0);  // the widgets take a new palette from a posted event
        expectLooksAsKept(*rig.window, kPictures,
                          "small-pan-tilt-" + QLatin1String(palette).toString().toLower());
    }
    rig.find<QAction>(QStringLiteral("MenuPaletteDesktop"))->trigger();
}
