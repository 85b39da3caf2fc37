#pragma once

class QLabel;
class QWidget;

namespace halvex {

// The hourglass pointer for the life of a scope; the arrow comes back however
// the scope ends.
class HourglassScope {
  public:
    HourglassScope();
    ~HourglassScope();
    HourglassScope(const HourglassScope&) = delete;
    HourglassScope& operator=(const HourglassScope&) = delete;
};

// While tables are read again from the unit: the page tabs are disabled, the
// pointer is the hourglass and the "Pan" / "Tilt" captions both read
// "Reinitializing". Everything is put back however the reload ends.
class PageLock {
  public:
    PageLock(QWidget* pageTabs, QLabel* panCaption, QLabel* tiltCaption);
    ~PageLock();
    PageLock(const PageLock&) = delete;
    PageLock& operator=(const PageLock&) = delete;

  private:
    QWidget* pageTabs_;
    QLabel* panCaption_;
    QLabel* tiltCaption_;
    HourglassScope hourglass_;
};

}  // namespace halvex
