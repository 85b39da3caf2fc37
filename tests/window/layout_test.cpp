// Every page of the main window at 1024 x 700 (a field laptop's screen less
// the window frame), in each palette: every control in view inside the
// window, none lying on another, none too small for its text, the tabs and
// the status bar in view. The suite runs it at 100 % and again at 150 %.
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStatusBar>
#include <QStyleOptionButton>
#include <QTabBar>
#include <QToolButton>

#include "tests/support/console_rig.h"
#include "tests/support/online_suite.h"
#include "views/widgets/led_display.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/pointer_pad.h"
#include "views/widgets/spin_button.h"
#include "views/widgets/status_lamp.h"

using namespace halvex;
using namespace halvex::testing;

namespace {
const QSize kSmallScreen(1024, 700);

bool isControl(const QWidget* w) {
    return qobject_cast<const QAbstractButton*>(w) || qobject_cast<const QAbstractSlider*>(w) ||
           qobject_cast<const QLineEdit*>(w) || qobject_cast<const QComboBox*>(w) ||
           qobject_cast<const QAbstractItemView*>(w) || qobject_cast<const QLabel*>(w) ||
           qobject_cast<const LedDisplay*>(w) || qobject_cast<const StatusLamp*>(w) ||
           qobject_cast<const PanGauge*>(w) || qobject_cast<const PointerPad*>(w) ||
           qobject_cast<const SpinButton*>(w);
}

QString nameOf(const QWidget* w) {
    return !w->objectName().isEmpty() ? w->objectName()
                                      : QStringLiteral("%1 \"%2\"")
                                            .arg(QLatin1String(w->metaObject()->className()),
                                                 w->property("text").toString());
}

// The controls an operator sees in the window: shown, and not a part of
// another control (the arrows of a spin button, the scroll bars of a list).
std::vector<QWidget*> visibleControls(QWidget& window) {
    std::vector<QWidget*> controls;
    for (QWidget* w : window.findChildren<QWidget*>()) {
        bool part = false;
        for (QWidget* up = w->parentWidget(); up != &window; up = up->parentWidget()) {
            part = part || isControl(up);
        }
        if (!w->isWindow() && w->isVisibleTo(&window) && isControl(w) && !part) {
            controls.push_back(w);
        }
    }
    return controls;
}

QRect inWindow(const QWidget* w, const QWidget& window) {
    return {w->mapTo(&window, QPoint(0, 0)), w->size()};
}

// What of a widget its parents, and the window, leave in view.
QRect inView(const QWidget* w, const QWidget& window) {
    QRect shown = inWindow(w, window) & window.rect();
    for (const QWidget* up = w->parentWidget(); up != &window; up = up->parentWidget()) {
        shown &= inWindow(up, window);
    }
    return shown;
}

// The room a control gives its caption: the contents of a label, the part of
// a button, check box or option button beside its picture or indicator.
QRect captionRoom(const QWidget* w) {
    if (const auto* label = qobject_cast<const QLabel*>(w)) {
        const int m = label->margin();
        return label->contentsRect().marginsRemoved(QMargins(m, m, m, m));
    }
    const auto* button = qobject_cast<const QAbstractButton*>(w);
    QStyleOptionButton option;
    option.initFrom(w);
    option.text = button->text();
    option.icon = button->icon();
    option.iconSize = button->iconSize();
    const QStyle::SubElement contents =
        qobject_cast<const QCheckBox*>(w) != nullptr      ? QStyle::SE_CheckBoxContents
        : qobject_cast<const QRadioButton*>(w) != nullptr ? QStyle::SE_RadioButtonContents
                                                          : QStyle::SE_PushButtonContents;
    QRect room = w->style()->subElementRect(contents, &option, w);
    if (contents == QStyle::SE_PushButtonContents && !button->icon().isNull()) {
        room.setLeft(room.left() + button->iconSize().width() + 4);
    }
    return room;
}

// A caption wider or taller than the room its control gives it is cut. A
// label that wraps its text takes the height it needs; an LED read-out is
// cut when squeezed below its least width, where its digits are too small.
bool captionCut(const QWidget* w) {
    if (qobject_cast<const LedDisplay*>(w) != nullptr) {
        return w->width() < w->minimumSizeHint().width() ||
               w->height() < w->minimumSizeHint().height();
    }
    const auto* label = qobject_cast<const QLabel*>(w);
    const auto* button = qobject_cast<const QAbstractButton*>(w);
    const QString caption = w->property("text").toString().remove(QLatin1Char('&'));
    const bool exempt = (label == nullptr || label->wordWrap()) &&
                        (button == nullptr || qobject_cast<const QToolButton*>(w) != nullptr);
    if (caption.isEmpty() || exempt) {
        return false;
    }
    const QFontMetrics metrics(w->font());
    const QRect room = captionRoom(w);
    return metrics.horizontalAdvance(caption) > room.width() || metrics.height() > room.height();
}

void checkInView(VornixU& window, const QString& where) {
    SCOPED_TRACE(where.toStdString());
    const std::vector<QWidget*> controls = visibleControls(window);
    ASSERT_GT(controls.size(), 10u);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const QWidget* a = controls[i];
        const QRect place = inWindow(a, window);
        EXPECT_EQ(inView(a, window), place) << nameOf(a).toStdString() << " is cut off";
        EXPECT_FALSE(captionCut(a)) << nameOf(a).toStdString() << " cuts its caption";
        for (std::size_t j = i + 1; j < controls.size(); ++j) {
            EXPECT_FALSE(place.intersects(inWindow(controls[j], window)))
                << nameOf(a).toStdString() << " lies on " << nameOf(controls[j]).toStdString();
        }
    }
    const QStatusBar* bar = window.statusBar();
    EXPECT_TRUE(bar->isVisible());
    EXPECT_EQ(inView(bar, window), inWindow(bar, window));
    EXPECT_GE(bar->height(), bar->sizeHint().height());
}

// One console online at 1024 x 700 for the tests below; each test starts
// there in the desktop palette.
class SmallScreen : public OnlineSuite<ConsoleRig> {
  protected:
    void SetUp() override {
        rig.window->resize(kSmallScreen);
        ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.window->size() == kSmallScreen; }))
            << "the window stays at " << rig.window->width() << " x " << rig.window->height()
            << "; it needs " << rig.window->minimumSizeHint().width() << " x "
            << rig.window->minimumSizeHint().height();
    }
    void TearDown() override { rig.find<QAction>(QStringLiteral("MenuPaletteDesktop"))->trigger(); }

    ConsoleRig& rig = *shared_;
};
}  // namespace

TEST_F(SmallScreen, EveryPageShowsEveryControlWholeInEachPalette) {
    QTabWidget& tabs = rig.window->SSTab1();
    const QTabBar* bar = tabs.tabBar();
    for (const char* palette : {"MenuPaletteDesktop", "MenuPaletteDark", "MenuPaletteNight"}) {
        rig.find<QAction>(QLatin1String(palette))->trigger();
        for (int page = 0; page < tabs.count(); ++page) {
            tabs.setCurrentIndex(page);
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
            const QString where =
                QStringLiteral("%1, page %2").arg(QLatin1String(palette), tabs.tabText(page));
            // Every tab can be picked without scrolling the tab bar.
            EXPECT_LE(bar->tabRect(tabs.count() - 1).right(), bar->width()) << where.toStdString();
            checkInView(*rig.window, where);
        }
    }
}

TEST_F(SmallScreen, FactoryControlsFitOnceTheAccessCodeUncoversThem) {
    QTabWidget& tabs = rig.window->SSTab1();
    tabs.setCurrentIndex(tabs.count() - 1);
    // The cover itself is a page like the others above, and its look is kept
    // in the pictures.
    auto* cover = rig.find<QWidget>(QStringLiteral("PassFrame"));
    rig.find<QLineEdit>(QStringLiteral("PassText"))->setText(QStringLiteral("7214"));
    rig.click(QStringLiteral("PassEntBut"));
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return !cover->isVisible(); }));
    checkInView(*rig.window, QStringLiteral("Factory, uncovered"));
    EXPECT_TRUE(rig.find<QWidget>(QStringLiteral("EncHomeBut"))->isVisible());
}

TEST_F(SmallScreen, APageThatOutgrowsTheWindowScrollsThePanTiltPageNeverDoes) {
    const QSize least = rig.window->minimumSizeHint();
    // At its smallest the window still shows the whole Pan/Tilt page: the jog
    // box and the status lamps never scroll away.
    rig.window->resize(least);
    ASSERT_TRUE(ConsoleRig::waitFor([&] { return rig.window->size() == least; }));
    checkInView(*rig.window, QStringLiteral("Pan/Tilt at the window's smallest"));

    // A page grown past the window (a desktop with large type) scrolls
    // instead of making the window taller than the screen.
    rig.window->resize(kSmallScreen);
    auto* setup = rig.find<QWidget>(QStringLiteral("SetupPage"));
    QFont large = setup->font();
    large.setPointSizeF(large.pointSizeF() * 2);
    setup->setFont(large);
    rig.window->SSTab1().setCurrentIndex(6);
    auto* scroller = rig.find<QScrollArea>(QStringLiteral("SetupPageScroll"));
    ASSERT_NE(scroller, nullptr);
    EXPECT_TRUE(ConsoleRig::waitFor([&] { return scroller->verticalScrollBar()->maximum() > 0; }));
    EXPECT_EQ(rig.window->minimumSizeHint(), least);
    EXPECT_EQ(rig.window->size(), kSmallScreen);
    EXPECT_TRUE(rig.window->statusBar()->isVisible());
    setup->setFont(QFont());
}
