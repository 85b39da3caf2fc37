#include "window/window_placement.h"

#include <QAction>
#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QWidget>
#include <algorithm>

#include "window/user_settings.h"

namespace halvex {

namespace {
// The work areas of the screens there are, the primary screen's first.
QList<QRect> workAreas() {
    QList<QRect> areas;
    if (QScreen* primary = QGuiApplication::primaryScreen()) {
        areas.append(primary->availableGeometry());
    }
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen != QGuiApplication::primaryScreen()) {
            areas.append(screen->availableGeometry());
        }
    }
    return areas;
}

// Moves `rect` by as little as it takes to lie inside `area`; one too large
// for it sits at its top left, so that the title bar stays in reach.
QRect keptInside(QRect rect, const QRect& area) {
    rect.moveRight(std::min(rect.right(), area.right()));
    rect.moveBottom(std::min(rect.bottom(), area.bottom()));
    rect.moveLeft(std::max(rect.left(), area.left()));
    rect.moveTop(std::max(rect.top(), area.top()));
    return rect;
}

QString settingsGroup(const QString& key) {
    return QStringLiteral("Windows/") + key;
}

// Keeps the Full Screen entry's check mark on the window's state, however
// the state changed (F11, the window manager, a restored place).
class FullScreenMark : public QObject {
  public:
    FullScreenMark(QWidget& window, QAction& entry)
        : QObject(&entry), window_(window), entry_(entry) {
        window.installEventFilter(this);
        entry.setChecked(window.isFullScreen());
    }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == &window_ && event->type() == QEvent::WindowStateChange) {
            entry_.setChecked(window_.isFullScreen());
        }
        return false;
    }

  private:
    QWidget& window_;
    QAction& entry_;
};
}  // namespace

QRect placeOnScreens(const QRect& saved, const QList<QRect>& workAreas, const QSize& minimum,
                     const QMargins& frame) {
    if (workAreas.isEmpty()) {
        return saved;
    }
    const auto holder = std::find_if(workAreas.cbegin(), workAreas.cend(), [&](const QRect& area) {
        return area.contains(saved.center());
    });
    const bool screenGone = holder == workAreas.cend();
    const QRect area = screenGone ? workAreas.front() : *holder;
    // Where the inside of the window may go, its frame still on the screen.
    const QRect inside = area - frame;
    const QSize size = saved.size().boundedTo(inside.size()).expandedTo(minimum);
    QRect placed(saved.topLeft(), size);
    if (screenGone) {
        placed.moveCenter(inside.center());
    }
    return keptInside(placed, inside);
}

WindowPlacement::WindowPlacement(QWidget& window, const QString& key, const QSize& firstSize)
    : QObject(&window), window_(window), key_(key) {
    restore(firstSize);
    window.installEventFilter(this);
    // A window still open when the program ends is never hidden before it goes.
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        if (window_.isVisible()) {
            save();
        }
    });
}

QMargins WindowPlacement::frameAllowance() {
    return {8, 40, 8, 8};
}

void WindowPlacement::restore(const QSize& firstSize) {
    const auto settings = userSettings();
    settings->beginGroup(settingsGroup(key_));
    const QRect saved = settings->value(QStringLiteral("geometry")).toRect();
    const QRect framed = settings->value(QStringLiteral("frame")).toRect();
    // The frame the window manager drew around it last time, when it looks
    // like one: a window near the top of the screen then stays there.
    QMargins frame(saved.left() - framed.left(), saved.top() - framed.top(),
                   framed.right() - saved.right(), framed.bottom() - saved.bottom());
    constexpr int kWidestFrame = 100;
    if (!framed.contains(saved) ||
        std::max({frame.left(), frame.top(), frame.right(), frame.bottom()}) > kWidestFrame) {
        frame = frameAllowance();
    }
    const QSize minimum = window_.minimumSizeHint().expandedTo(window_.minimumSize());
    const QList<QRect> areas = workAreas();
    if (!saved.isValid()) {
        QSize size = firstSize;
        if (!areas.isEmpty()) {
            size = size.boundedTo((areas.front() - frame).size());
        }
        window_.resize(size.expandedTo(minimum));
        return;
    }
    window_.setGeometry(placeOnScreens(saved, areas, minimum, frame));
    if (settings->value(QStringLiteral("fullScreen")).toBool()) {
        window_.setWindowState(Qt::WindowFullScreen);
    } else if (settings->value(QStringLiteral("maximized")).toBool()) {
        window_.setWindowState(Qt::WindowMaximized);
    }
}

void WindowPlacement::save() const {
    const auto settings = userSettings();
    settings->beginGroup(settingsGroup(key_));
    // The normal geometry: where the window goes back to from maximised.
    settings->setValue(QStringLiteral("geometry"), window_.normalGeometry());
    settings->setValue(QStringLiteral("maximized"), window_.isMaximized());
    settings->setValue(QStringLiteral("fullScreen"), window_.isFullScreen());
    if (window_.windowState() == Qt::WindowNoState) {
        settings->setValue(QStringLiteral("frame"), window_.frameGeometry());
    }
}

bool WindowPlacement::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window_ && event->type() == QEvent::Hide) {
        save();
    }
    return false;
}

QAction* addFullScreenEntry(QMenu& viewMenu, QWidget& window) {
    QAction* entry = viewMenu.addAction(QStringLiteral("&Full Screen"));
    entry->setObjectName(QStringLiteral("MenuFullScreen"));
    entry->setCheckable(true);
    entry->setShortcut(QKeySequence(Qt::Key_F11));
    // The shortcut works with the menus closed, anywhere in the window.
    entry->setShortcutContext(Qt::WindowShortcut);
    window.addAction(entry);
    QObject::connect(entry, &QAction::triggered, &window, [&window] {
        window.setWindowState(window.windowState() ^ Qt::WindowFullScreen);
    });
    new FullScreenMark(window, *entry);
    return entry;
}

}  // namespace halvex
