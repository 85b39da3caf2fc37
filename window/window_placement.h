#pragma once

#include <QList>
#include <QMargins>
#include <QObject>
#include <QRect>
#include <QString>

class QAction;
class QMenu;
class QWidget;

namespace halvex {

// Where a window whose normal (not maximised) geometry was `saved` goes,
// given the work areas of the screens there are now, the primary screen's
// first. A window whose middle still lies on one of them stays where it was;
// one whose screen is gone comes back in the middle of the primary screen.
// Either way it is made to fit its screen's work area with its `frame` (the
// window manager's title bar and borders) around it, but is never made
// smaller than `minimum`. With no screens at all, `saved` is returned as it is.
QRect placeOnScreens(const QRect& saved, const QList<QRect>& workAreas, const QSize& minimum,
                     const QMargins& frame);

// Remembers a top-level window's size, position, and maximised and full
// screen states for the user under "Windows/<key>", and puts the window back
// there when attached (before it is first shown), moved onto a screen that
// is there. A window never placed before gets `firstSize`, cut down to fit
// its screen. The place is kept whenever the window is hidden (closing hides
// it) and when the program ends with the window open.
class WindowPlacement : public QObject {
    Q_OBJECT
  public:
    WindowPlacement(QWidget& window, const QString& key, const QSize& firstSize);

    // Writes the window's place to the user's settings.
    void save() const;

    // Room left around a window's inside for the title bar and borders, where
    // the window manager has not shown how much it takes.
    static QMargins frameAllowance();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void restore(const QSize& firstSize);

    QWidget& window_;
    QString key_;
};

// View > Full Screen (F11): toggles `window` between full screen and the
// state it had before; the check mark follows the window.
QAction* addFullScreenEntry(QMenu& viewMenu, QWidget& window);

}  // namespace halvex
