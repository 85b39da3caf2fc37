#pragma once

#include <QObject>
#include <QSize>
#include <QString>

class QAction;
class QGroupBox;
class QTabWidget;
class QWidget;

namespace halvex {

// Puts a panel (the range plot, the video) on the Pan/Tilt page when the
// page is wide enough for it beside the other controls, and otherwise in a
// window of its own, so that a small screen loses none of the page's
// controls. The View menu's entry shows the panel wherever it is.
class PagePlace : public QObject {
    Q_OBJECT
  public:
    struct Window {
        QString name;  // the window's object name, and its kept place's
        QString title;
        QSize firstSize;
        // The page's width from which the panel joins it.
        int roomyPageWidth = 0;
    };

    PagePlace(QWidget& panel, QGroupBox& pageSlot, QTabWidget& tabs, QAction& showAction,
              QWidget& mainWindow, const Window& window);

    bool onPage() const;
    QWidget& ownWindow() { return *window_; }
    void show();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void fit();

    QWidget& panel_;
    QGroupBox& slot_;
    QTabWidget& tabs_;
    QWidget* window_;
    int roomyPageWidth_;
};

}  // namespace halvex
