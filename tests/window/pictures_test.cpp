// Every page of the main window, online, as it was last looked at: at
// 1024 x 700 and at the roomy 1400 x 900 of a large screen in the desktop
// palette, and the Pan/Tilt page also by night and in the dark palette. The
// layout tests catch a control out of view or lying on another; these catch
// what they cannot.

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontInfo>
#include <utility>

#include "tests/support/console_rig.h"
#include "tests/support/kept_picture.h"
#include "tests/support/online_suite.h"
#include "views/pages/page_parts.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

const KeptPictures kPictures{HALVEX_KEPT_PICTURES, HALVEX_SEEN_PICTURES};

// The Setup page shows the unit's date.
struct DatedRig : ConsoleRig {
    DatedRig() : ConsoleRig(options()) {}
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

// The pictures hold on any machine because the test programs draw in fonts of
// their own choosing, whatever else is installed (CI installs another
// monospace family to prove it): the captions, the fixed-pitch lists that ask
// for "Courier New", the camera lines and the Data Watch.
TEST(PictureFonts, EveryTextIsDrawnInDejaVuWhateverElseTheMachineHas) {
    EXPECT_EQ(QFontInfo(QApplication::font()).family(), QStringLiteral("DejaVu Sans"));
    EXPECT_EQ(QFontInfo(fixedPitchFont()).family(), QStringLiteral("DejaVu Sans Mono"));
    EXPECT_EQ(QFontInfo(QFontDatabase::systemFont(QFontDatabase::FixedFont)).family(),
              QStringLiteral("DejaVu Sans Mono"));
    const QStringList families = QFontDatabase::families();
    EXPECT_FALSE(families.isEmpty());
    // The generic names ("Monospace", "Sans Serif") are in the list too.
    for (const QString& family : families) {
        EXPECT_TRUE(QFontInfo(QFont(family)).family().startsWith(QStringLiteral("DejaVu")))
            << family.toStdString();
    }
    // What fontconfig learnt of those fonts is kept with them, in the test's
    // own scratch folder, not among the user's caches.
    const QFileInfo configuration(qEnvironmentVariable("FONTCONFIG_FILE"));
    EXPECT_FALSE(QDir(configuration.absolutePath() + QStringLiteral("/cache"))
                     .entryList(QDir::Files)
                     .isEmpty())
        << configuration.absolutePath().toStdString();
}

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
    for (const char* palette : {"Night", "Dark"}) {
        rig.find<QAction>("MenuPalette" + QLatin1String(palette))->trigger();
        showPage(0);  // the widgets take a new palette from a posted event
        expectLooksAsKept(*rig.window, kPictures,
                          "small-pan-tilt-" + QLatin1String(palette).toString().toLower());
    }
    rig.find<QAction>(QStringLiteral("MenuPaletteDesktop"))->trigger();
}
