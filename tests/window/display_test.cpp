// Where the main window comes back, and the palettes. Runs on two
// offscreen screens side by side: a 1366 x 768 laptop (primary) and a
// 2560 x 1440 screen to its right.
#include <gtest/gtest.h>

#include <QFile>
#include <QGuiApplication>
#include <QMetaEnum>
#include <QScreen>
#include <QSettings>
#include <QTextBlock>
#include <QTextBrowser>

#include "tests/support/console_rig.h"
#include "tests/support/kept_text.h"
#include "views/widgets/instrument_light.h"
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
    // Each start shows the palette chosen in the one before.
    auto kept = std::tuple(desktopWindow, InstrumentLight::Day, QString("MenuPaletteDesktop"));
    for (const auto& [name, window, light] : cases) {
        ConsoleRig rig;
        EXPECT_EQ(inUse(rig), kept);
        rig.find<QAction>("MenuPalette" + QLatin1String(name))->trigger();
        kept = std::tuple(window, light, "MenuPalette" + QLatin1String(name));
        EXPECT_EQ(inUse(rig), kept);
        applyPalette(Palette::Desktop);
    }
    // A word the program does not know is the desktop's palette.
    userFile().setValue(QStringLiteral("View/palette"), QStringLiteral("purple"));
    ConsoleRig odd;
    EXPECT_EQ(inUse(odd), std::tuple(desktopWindow, InstrumentLight::Day,
                                     QStringLiteral("MenuPaletteDesktop")));
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

// Every colour of the dark and night palettes in every state, as kept in
// palettes.txt: the pictures show those on the pages, this also the rest,
// which a widget added later would take.
TEST(Palettes, EveryColourInEveryStateIsAsKept) {
    const QMetaEnum roles = QMetaEnum::fromType<QPalette::ColorRole>();
    const QMetaEnum groups = QMetaEnum::fromType<QPalette::ColorGroup>();
    std::string now;
    for (const auto& [name, palette] :
         {std::pair{"dark", darkPalette()}, {"night", nightPalette()}}) {
        for (const QPalette::ColorGroup group :
             {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            for (int role = 0; role < QPalette::NColorRoles; ++role) {
                now += QStringLiteral("%1 %2 %3 %4\n")
                           .arg(QLatin1String(name))
                           .arg(QLatin1String(groups.valueToKey(group)))
                           .arg(QLatin1String(roles.valueToKey(role)))
                           .arg(palette.color(group, static_cast<QPalette::ColorRole>(role)).name())
                           .toStdString();
            }
        }
    }
    expectAsKept(now, HALVEX_WINDOW_TEST_DATA "/palettes.txt", "HALVEX_WRITE_PALETTES");
}
