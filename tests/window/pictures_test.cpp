// Every page of the main window, online, as it was last looked at: at
// 1024 x 700 and at the roomy 1400 x 900 of a large screen in the desktop
// palette, and the Pan/Tilt page also by night and in the dark palette. The layout tests
// catch a control out of view or lying on another; these catch what they
// cannot, a control moved within its page, a column that takes the room
// another should, a mark drawn elsewhere or in another colour.
//
// After a deliberate change to the look, write the pictures again with
// HALVEX_WRITE_PICTURES=1 and look at every one that changed before keeping
// it. A picture that no longer matches is written beside the test program,
// with a copy that marks the pixels that differ.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <utility>

#include "tests/support/console_rig.h"

using namespace halvex;
using namespace halvex::testing;

namespace {

// Rounding in the toolkit's blending may differ between processors by a
// step or two; a control moved by a pixel changes a whole edge by far more.
constexpr int kChannelSlack = 12;
constexpr int kPixelsAllowed = 24;

bool writing() {
    return qEnvironmentVariableIntValue("HALVEX_WRITE_PICTURES") == 1;
}

int differingPixels(const QImage& kept, const QImage& seen, QImage& marks) {
    marks = seen.convertToFormat(QImage::Format_RGB32);
    int differing = 0;
    for (int y = 0; y < seen.height(); ++y) {
        const auto* a = reinterpret_cast<const QRgb*>(kept.constScanLine(y));
        const auto* b = reinterpret_cast<const QRgb*>(seen.constScanLine(y));
        for (int x = 0; x < seen.width(); ++x) {
            if (std::abs(qRed(a[x]) - qRed(b[x])) > kChannelSlack ||
                std::abs(qGreen(a[x]) - qGreen(b[x])) > kChannelSlack ||
                std::abs(qBlue(a[x]) - qBlue(b[x])) > kChannelSlack) {
                ++differing;
                marks.setPixel(x, y, qRgb(255, 0, 255));
            }
        }
    }
    return differing;
}

void expectLooksAsKept(QWidget& window, const QString& name) {
    const QImage seen = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
    const QString keptPath = QStringLiteral(HALVEX_KEPT_PICTURES "/%1.png").arg(name);
    if (writing()) {
        ASSERT_TRUE(seen.save(keptPath, "PNG", 0)) << keptPath.toStdString();
        return;
    }
    const QImage kept = QImage(keptPath).convertToFormat(QImage::Format_RGB32);
    ASSERT_FALSE(kept.isNull()) << "no kept picture " << keptPath.toStdString();
    QDir().mkpath(QStringLiteral(HALVEX_SEEN_PICTURES));
    const QString seenPath = QStringLiteral(HALVEX_SEEN_PICTURES "/%1.png").arg(name);
    if (kept.size() != seen.size()) {
        seen.save(seenPath);
        FAIL() << name.toStdString() << ": " << seen.width() << " x " << seen.height() << ", kept "
               << kept.width() << " x " << kept.height() << "; see " << seenPath.toStdString();
    }
    QImage marks;
    const int differing = differingPixels(kept, seen, marks);
    if (differing > kPixelsAllowed) {
        seen.save(seenPath);
        marks.save(QStringLiteral(HALVEX_SEEN_PICTURES "/%1-differences.png").arg(name));
        ADD_FAILURE() << name.toStdString() << ": " << differing << " pixels differ from "
                      << keptPath.toStdString() << "; see " << seenPath.toStdString();
    }
}

class Pictures : public ::testing::Test {
  protected:
    static sim::UnitOptions options() {
        sim::UnitOptions options;
        options.clockDate = sim::CalendarDate{2026, 11, 25};  // the Setup page shows it
        return options;
    }
    void SetUp() override {
        ASSERT_TRUE(rig.connect());
        show(QSize(1024, 700));
    }
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
        QTest::qWait(50);
    }

    ConsoleRig rig{options()};
};

}  // namespace

TEST_F(Pictures, EveryPageOnASmallAndOnALargeScreen) {
    QTabWidget& tabs = rig.window->SSTab1();
    ASSERT_EQ(tabs.count(), 8);
    const char* names[] = {"pan-tilt", "presets", "offsets", "tours",
                           "camera",   "video",   "setup",   "factory"};
    for (const auto& [screen, size] :
         {std::pair{"small", QSize(1024, 700)}, std::pair{"large", QSize(1400, 900)}}) {
        show(size);
        for (int page = 0; page < tabs.count(); ++page) {
            showPage(page);
            expectLooksAsKept(*rig.window, QStringLiteral("%1-%2").arg(QLatin1String(screen),
                                                                       QLatin1String(names[page])));
        }
    }
}

TEST_F(Pictures, PanTiltByNightAndInTheDark) {
    for (const char* palette : {"Night", "Dark", "Desktop"}) {
        rig.find<QAction>(QStringLiteral("MenuPalette%1").arg(QLatin1String(palette)))->trigger();
        showPage(0);  // the widgets take a new palette from a posted event
        if (QLatin1String(palette) != QLatin1String("Desktop")) {
            expectLooksAsKept(
                *rig.window,
                QStringLiteral("small-pan-tilt-%1").arg(QLatin1String(palette)).toLower());
        }
    }
}
