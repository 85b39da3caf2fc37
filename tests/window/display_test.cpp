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
        QRect saved;
        QList<QRect> screens;
        QRect placed;
    };
    // clang-format off
    const Case cases[] = {
        {{100, 41, 1000, 690}, {laptop, large}, {100, 41, 1000, 690}},       // inside the laptop
        {{1500, 100, 1800, 1000}, {laptop, large}, {1500, 100, 1800, 1000}}, // on the second screen
        {{500, 41, 1000, 690}, {laptop, large}, {358, 41, 1000, 690}},  // its middle still on it
        {{100, 0, 1000, 690}, {laptop}, {100, 40, 1000, 690}},          // title bar above the top
        {{3000, 200, 1000, 690}, {laptop}, {183, 41, 1000, 690}},  // screen gone: the primary's middle
        {{3000, 200, 1800, 1000}, {laptop}, {8, 40, 1350, 692}},   // cut down to the work area
        // Never below the least size the pages need, title bar in reach.
        {{3000, 200, 1800, 1000}, {QRect(0, 0, 800, 600)}, {8, 40, 968, 684}},
        {{3000, 200, 1000, 600}, {}, {3000, 200, 1000, 600}},  // no screens at all
    };
    // clang-format on
    for (const Case& c : cases) {
        EXPECT_EQ(placeOnScreens(c.saved, c.screens, minimum, frame), c.placed)
            << "case " << &c - cases;
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

TEST_F(ViewSettings, AFirstWindowIsAsRoomyAsItsScreenAllowsAndOneWhoseScreenIsGoneFitsTheLaptop) {
    {
        ConsoleRig rig;
        const QSize work = QGuiApplication::primaryScreen()->availableSize();
        EXPECT_EQ(rig.window->width(), 1180);
        const QMargins frame = WindowPlacement::frameAllowance();
        EXPECT_EQ(rig.window->height(), work.height() - frame.top() - frame.bottom());
    }
    // Kept while a screen to the right of the large one was plugged in.
    userFile().setValue(QStringLiteral("Windows/Main/geometry"), QRect(4200, 300, 2000, 1100));
    ConsoleRig rig;
    EXPECT_TRUE(QGuiApplication::primaryScreen()->availableGeometry().contains(
        rig.window->frameGeometry()));
    EXPECT_EQ(screenUnder(*rig.window), QStringLiteral("laptop"));
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
    // The palette in use, the instruments' light, and which entry is checked.
    const auto inUse = [](ConsoleRig& rig) {
        QString checked;
        for (const char* entry : {"MenuPaletteDesktop", "MenuPaletteDark", "MenuPaletteNight"}) {
            checked += rig.find<QAction>(QLatin1String(entry))->isChecked() ? entry : "";
        }
        return std::tuple(QApplication::palette().color(QPalette::Window), instrumentLight(),
                          checked);
    };
    const std::tuple<const char*, QColor, InstrumentLight> cases[] = {
        {"Night", nightPalette().color(QPalette::Window), InstrumentLight::Night},
        {"Dark", darkPalette().color(QPalette::Window), InstrumentLight::Day},
        {"Desktop", desktopWindow, InstrumentLight::Day},
    };
    for (const auto& [name, window, light] : cases) {
        const auto expected = std::tuple(window, light, "MenuPalette" + QLatin1String(name));
        {
            ConsoleRig rig;
            rig.find<QAction>("MenuPalette" + QLatin1String(name))->trigger();
            EXPECT_EQ(inUse(rig), expected);
            EXPECT_EQ(userFile().value(QStringLiteral("View/palette")).toString(),
                      QLatin1String(name).toString().toLower());
        }
        applyPalette(Palette::Desktop);
        ConsoleRig next;
        EXPECT_EQ(inUse(next), expected);
    }
    // A word the program does not know is the desktop's palette.
    userFile().setValue(QStringLiteral("View/palette"), QStringLiteral("purple"));
    ConsoleRig odd;
    EXPECT_EQ(inUse(odd), std::tuple(desktopWindow, InstrumentLight::Day,
                                     QStringLiteral("MenuPaletteDesktop")));
}

// By night every colour is red, none is brighter than the text, and the
// ground is black. In the dark and night palettes each text role contrasts
// with the ground it is drawn on at least 3 to 1 (the night palette is dim on
// purpose), every colour a real one. (The dark palette's colours are held by
// its picture.)
TEST(Palettes, TheNightPaletteIsDimRedOnBlackAndEveryTextContrastsWithItsGround) {
    const QPalette night = nightPalette();
    EXPECT_LT(night.color(QPalette::Window).lightness(), 10);
    const int textLightness = night.color(QPalette::Text).lightness();
    for (const auto group : {QPalette::Active, QPalette::Disabled}) {
        for (int role = 0; role < QPalette::NColorRoles; ++role) {
            if (role != QPalette::NoRole) {
                const QColor c = night.color(group, static_cast<QPalette::ColorRole>(role));
                EXPECT_GE(c.red(), 2 * std::max(c.green(), c.blue())) << group << " " << role;
                EXPECT_LE(c.lightness(), textLightness + 30) << group << " " << role;
            }
        }
    }
    const auto luminance = [](const QColor& c) {
        const auto channel = [](double v) {
            return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) +
               0.0722 * channel(c.blueF());
    };
    using R = QPalette::ColorRole;
    const std::pair<R, R> pairs[] = {{R::Text, R::Base},         {R::WindowText, R::Window},
                                     {R::ButtonText, R::Button}, {R::HighlightedText, R::Highlight},
                                     {R::BrightText, R::Window}, {R::ToolTipText, R::ToolTipBase}};
    for (const QPalette& palette : {darkPalette(), night}) {
        for (const auto& [text, ground] : pairs) {
            const QColor ink = palette.color(QPalette::Active, text);
            const QColor paper = palette.color(QPalette::Active, ground);
            ASSERT_TRUE(ink.isValid() && paper.isValid()) << text;
            const double a = luminance(ink) + 0.05;
            const double b = luminance(paper) + 0.05;
            EXPECT_GE(std::max(a, b) / std::min(a, b), 3.0) << text << " on " << ground;
        }
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
