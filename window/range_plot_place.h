#pragma once

#include <QObject>

class QAction;
class QGroupBox;
class QTabWidget;
class QWidget;

namespace halvex {

class RangePlot;

// Puts the range plot on the Pan/Tilt page when the page is wide enough
// for it beside the other controls, and otherwise in a window of its own,
// so that a small screen loses none of the page's controls. The View menu's
// entry shows the plot wherever it is.
class RangePlotPlace : public QObject {
    Q_OBJECT
  public:
    // The page's width from which the plot joins it: a 1600-pixel screen.
    static constexpr int kRoomyPageWidth = 1560;

    RangePlotPlace(RangePlot& plot, QGroupBox& pageSlot, QTabWidget& tabs, QAction& showAction,
                   QWidget& mainWindow);

    bool onPage() const;
    QWidget& ownWindow() { return *window_; }
    void show();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fit();

    RangePlot& plot_;
    QGroupBox& slot_;
    QTabWidget& tabs_;
    QWidget* window_;
};

}  // namespace halvex
