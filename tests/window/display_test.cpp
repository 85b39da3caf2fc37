// Where the windows come back, full screen, and the palettes. Runs on two
// offscreen screens side by side: a 1366 x 768 laptop (primary) and a
// 2560 x 1440 screen to its right.
#include <gtest/gtest.h>

#include <QFile>
#include <QGuiApplication>
#include <QScreen>
#include <QSettings>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTimer>
#include <cmath>

#include "tests/support/console_rig.h"
#include "views/widgets/instrument_light.h"
#include "window/camera_features.h"
#include "window/data_watch.h"
#include "window/help_box.h"
#include "window/palette_choice.h"
#include "window/window_placement.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
QSettings userFile() {
    return {QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("halvex"),
            QStringLiteral("halvex")};
}

QString screenUnder(const QWidget& window) {
    const QScreen* screen = QGuiApplication::screenAt(window.geometry().center());
    return screen != nullptr ? screen->name() : QStringLiteral("(none)");
}

// Each test starts with no places and no palette kept, and leaves none.
class ViewSettings : public ::testing::Test {
  protected:
    void SetUp() override { forget(); }
    void TearDown() override {
        forget();
        applyPalette(Palette::Desktop);
    }
    static void forget() {
        QSettings settings = userFile();
        settings.remove(QStringLiteral("Windows"));
        settings.remove(QStringLiteral("View"));
    }
};
}  // namespace

TEST(PlaceOnScreens, KeepsAPlaceOnAScreenAndBringsBackOneWhoseScreenIsGone) {
    const QRect laptop(0, 0, 1366, 740);  // work areas: a panel takes the bottom 28 pixels
    const QRect large(1366, 0, 2560, 1410);
    const QSize minimum(968, 684);
    const QMargins frame(8, 40, 8, 8);  // 40 for the title bar
    struct Case {
        const char* what;
        QRect saved;
        QList<QRect> screens;
        QRect placed;
    };
    const Case cases[] = {
        {"inside the laptop", {100, 41, 1000, 690}, {laptop, large}, {100, 41, 1000, 690}},
        {"on the second screen", {1500, 100, 1800, 1000}, {laptop, large}, {1500, 100, 1800, 1000}},
        {"hanging off the laptop's right edge, its middle still on it",
         {500, 41, 1000, 690},
         {laptop, large},
         {358, 41, 1000, 690}},
        {"its title bar above the top", {100, 0, 1000, 690}, {laptop}, {100, 40, 1000, 690}},
        {"its screen gone: the middle of the primary",
         {3000, 200, 1000, 690},
         {laptop},
         {183, 41, 1000, 690}},
        {"too large for the laptop: cut down to its work area",
         {3000, 200, 1800, 1000},
         {laptop},
         {8, 40, 1350, 692}},
        {"never below the least size the pages need, title bar in reach",
         {3000, 200, 1800, 1000},
         {QRect(0, 0, 800, 600)},
         {8, 40, 968, 684}},
        {"no screens at all", {3000, 200, 1000, 600}, {}, {3000, 200, 1000, 600}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(placeOnScreens(c.saved, c.screens, minimum, frame), c.placed) << c.what;
    }
}

TEST_F(ViewSettings, TheMainWindowComesBackWhereItWasClosedMaximisedOrNot) {
    ASSERT_EQ(QGuiApplication::screens().size(), 2);
    // Right under the top of the laptop's screen, its title bar as tall as
    // the window manager drew it, not as tall as one is taken to be before
    // the window manager has drawn any; and on the large screen.
    const QRect onLarge(1500, 120, 1300, 900);
    for (const QRect place : {QRect(300, 12, 1000, 690), onLarge}) {
        {
            ConsoleRig rig;
            rig.window->setGeometry(place);
            rig.window->close();
        }
        ConsoleRig rig;
        EXPECT_EQ(rig.window->geometry(), place);
    }
    {
        ConsoleRig rig;
        EXPECT_EQ(screenUnder(*rig.window), QStringLiteral("large"));
        rig.window->showMaximized();
        ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.window->isMaximized(); }));
        rig.window->close();
    }
    ConsoleRig rig;
    EXPECT_TRUE(rig.window->isMaximized());
    EXPECT_EQ(screenUnder(*rig.window), QStringLiteral("large"));
    rig.window->showNormal();
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.window->geometry() == onLarge; }))
        << "back to " << rig.window->geometry().x() << "," << rig.window->geometry().y();
}

TEST_F(ViewSettings, AWindowWhoseScreenIsGoneComesBackOnTheLaptopAndFitsIt) {
    // Kept while a screen to the right of the large one was plugged in.
    userFile().setValue(QStringLiteral("Windows/Main/geometry"), QRect(4200, 300, 2000, 1100));
    ConsoleRig rig;
    const QRect work = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(work.contains(rig.window->frameGeometry()))
        << rig.window->frameGeometry().x() << "," << rig.window->frameGeometry().y() << " "
        << rig.window->frameGeometry().width() << " x " << rig.window->frameGeometry().height();
    EXPECT_EQ(screenUnder(*rig.window), QStringLiteral("laptop"));
}

TEST_F(ViewSettings, AFirstWindowIsAsRoomyAsItsScreenAllows) {
    ConsoleRig rig;
    const QSize work = QGuiApplication::primaryScreen()->availableSize();
    EXPECT_EQ(rig.window->width(), 1180);
    const QMargins frame = WindowPlacement::frameAllowance();
    EXPECT_EQ(rig.window->height(), work.height() - frame.top() - frame.bottom());
}

TEST_F(ViewSettings, DataWatchAndHelpWindowsKeepTheirPlaces) {
    const QRect watchPlace(1700, 300, 700, 260);
    const QRect helpPlace(2500, 400, 600, 700);
    {
        ConsoleRig rig;
        rig.window->dataWatch().show();
        rig.window->dataWatch().setGeometry(watchPlace);
        auto* cameras = rig.window->findChild<CameraFeatures*>();
        cameras->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
        cameras->SerHelpBut_Click();
        ASSERT_NE(cameras->helpBox(), nullptr);
        cameras->helpBox()->setGeometry(helpPlace);
        QTest::mouseClick(cameras->helpBox()->Command1, Qt::LeftButton);  // Close hides it
        // The program ends with the Data Watch still open.
        rig.window->close();
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QApplication::exec();
    }
    ConsoleRig rig;
    EXPECT_EQ(rig.window->dataWatch().geometry(), watchPlace);
    auto* cameras = rig.window->findChild<CameraFeatures*>();
    cameras->setDataFolder(QStringLiteral(HALVEX_DATA_OUT));
    cameras->TourHelpBut_Click();
    ASSERT_NE(cameras->helpBox(), nullptr);
    EXPECT_EQ(cameras->helpBox()->geometry(), helpPlace);
}

TEST_F(ViewSettings, F11TurnsFullScreenOnAndOffAndTheMenuShowsIt) {
    ConsoleRig rig;
    const QRect normal(200, 80, 1100, 690);
    rig.window->setGeometry(normal);
    rig.window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(rig.window.get()));
    auto* entry = rig.find<QAction>(QStringLiteral("MenuFullScreen"));
    EXPECT_EQ(entry->shortcut(), QKeySequence(Qt::Key_F11));
    QTest::keyClick(rig.window.get(), Qt::Key_F11);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.window->isFullScreen(); }));
    EXPECT_TRUE(entry->isChecked());
    QTest::keyClick(rig.window.get(), Qt::Key_F11);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return !rig.window->isFullScreen(); }));
    EXPECT_FALSE(entry->isChecked());
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return rig.window->geometry() == normal; }));

    // Closed full screen, it opens full screen.
    entry->trigger();
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.window->isFullScreen(); }));
    rig.window->close();
    ConsoleRig again;
    EXPECT_TRUE(again.window->isFullScreen());
    EXPECT_TRUE(again.find<QAction>(QStringLiteral("MenuFullScreen"))->isChecked());
}

TEST_F(ViewSettings, ThePaletteChosenIsUsedAndKeptForTheNextStart) {
    const QColor desktopWindow = QApplication::palette().color(QPalette::Window);
    struct Case {
        const char* entry;
        const char* kept;
        QColor window;
        InstrumentLight light;
    };
    const Case cases[] = {
        {"MenuPaletteNight", "night", nightPalette().color(QPalette::Window),
         InstrumentLight::Night},
        {"MenuPaletteDark", "dark", darkPalette().color(QPalette::Window), InstrumentLight::Day},
        {"MenuPaletteDesktop", "desktop", desktopWindow, InstrumentLight::Day},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.entry);
        {
            ConsoleRig rig;
            rig.find<QAction>(QLatin1String(c.entry))->trigger();
            EXPECT_EQ(QApplication::palette().color(QPalette::Window), c.window);
            EXPECT_EQ(instrumentLight(), c.light);
            EXPECT_EQ(userFile().value(QStringLiteral("View/palette")).toString(),
                      QLatin1String(c.kept));
        }
        applyPalette(Palette::Desktop);
        ConsoleRig next;
        EXPECT_EQ(QApplication::palette().color(QPalette::Window), c.window);
        EXPECT_EQ(instrumentLight(), c.light);
        for (const char* entry : {"MenuPaletteDesktop", "MenuPaletteDark", "MenuPaletteNight"}) {
            EXPECT_EQ(next.find<QAction>(QLatin1String(entry))->isChecked(),
                      QLatin1String(entry) == QLatin1String(c.entry))
                << entry;
        }
    }
    // A word the program does not know is the desktop's palette.
    userFile().setValue(QStringLiteral("View/palette"), QStringLiteral("purple"));
    ConsoleRig odd;
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), desktopWindow);
    EXPECT_TRUE(odd.find<QAction>(QStringLiteral("MenuPaletteDesktop"))->isChecked());
}

// Contrast ratio of two colours as the web's accessibility rules reckon it.
double contrast(const QColor& a, const QColor& b) {
    const auto luminance = [](const QColor& c) {
        const auto channel = [](double v) {
            return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) +
               0.0722 * channel(c.blueF());
    };
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

TEST(Palettes, TextStandsOutAndTheNightPaletteIsDimRedOnBlack) {
    using Role = QPalette::ColorRole;
    const std::pair<Role, Role> pairs[] = {{QPalette::WindowText, QPalette::Window},
                                           {QPalette::Text, QPalette::Base},
                                           {QPalette::ButtonText, QPalette::Button},
                                           {QPalette::HighlightedText, QPalette::Highlight}};
    struct Case {
        const char* name;
        QPalette palette;
        double live;  // the least contrast of text that can be used
        double off;   // and of greyed-out text
    };
    // Dim red is dim by design: by night text stands out as large text must
    // by day.
    const Case cases[] = {{"dark", darkPalette(), 4.5, 2.5}, {"night", nightPalette(), 3.0, 1.8}};
    for (const Case& c : cases) {
        for (const auto& [text, ground] : pairs) {
            const double live = contrast(c.palette.color(QPalette::Active, text),
                                         c.palette.color(QPalette::Active, ground));
            const double off = contrast(c.palette.color(QPalette::Disabled, text),
                                        c.palette.color(QPalette::Disabled, ground));
            EXPECT_GE(live, c.live) << c.name << " " << text;
            EXPECT_GE(off, c.off) << c.name << " " << text;
            EXPECT_LT(off, live) << c.name << " " << text;  // and is told from live text
        }
        EXPECT_GE(contrast(c.palette.color(QPalette::ToolTipText),
                           c.palette.color(QPalette::ToolTipBase)),
                  c.live)
            << c.name;
    }
    // By night nothing is brighter than the text, every colour is red, and
    // the ground is black.
    const QPalette night = nightPalette();
    EXPECT_LT(night.color(QPalette::Window).lightness(), 10);
    const int textLightness = night.color(QPalette::Text).lightness();
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        const auto r = static_cast<QPalette::ColorRole>(role);
        if (r == QPalette::NoRole) {
            continue;
        }
        const QColor c = night.color(QPalette::Active, r);
        EXPECT_GE(c.red(), 2 * std::max(c.green(), c.blue())) << role;
        EXPECT_LE(c.lightness(), textLightness + 30) << role;
    }
}

TEST_F(ViewSettings, HelpTextColouredByTheFileStaysReadableInEachPalette) {
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("colours.rtf"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\\rtf1{\\colortbl;\\red0\\green70\\blue127;}\\cf1 Heading\\par\\cf0 Plain}");
    file.close();
    HelpBox help;
    ASSERT_TRUE(help.showHelp(path, QStringLiteral("Colours")));
    const auto headingColour = [&help] {
        const QTextBlock first = help.RichTextBox1->document()->firstBlock();
        return first.begin().fragment().charFormat().foreground().color();
    };
    const QColor fileBlue(0, 70, 127);
    EXPECT_EQ(headingColour(), fileBlue);
    // The window hears of a new palette from the event loop.
    applyPalette(Palette::Dark);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return headingColour() != fileBlue; }));
    EXPECT_GT(headingColour().lightnessF(), 0.7);  // light blue on the dark page
    EXPECT_NEAR(headingColour().hslHueF(), fileBlue.hslHueF(), 0.01);
    applyPalette(Palette::Night);
    EXPECT_TRUE(ConsoleRig::waitFor(
        [&] { return headingColour() == nightPalette().color(QPalette::Text); }));
    applyPalette(Palette::Desktop);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return headingColour() == fileBlue; }));
}
