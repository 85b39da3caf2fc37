#include "window/range_plot_place.h"

#include <QAction>
#include <QEvent>
#include <QGroupBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "views/widgets/range_plot.h"
#include "window/window_placement.h"

namespace halvex {

RangePlotPlace::RangePlotPlace(RangePlot& plot, QGroupBox& pageSlot, QTabWidget& tabs,
                               QAction& showAction, QWidget& mainWindow)
    : QObject(&mainWindow),
      plot_(plot),
      slot_(pageSlot),
      tabs_(tabs),
      window_(new QWidget(&mainWindow, Qt::Window)) {
    window_->setObjectName(QStringLiteral("RangePlotWindow"));
    window_->setWindowTitle(QStringLiteral("Range Plot"));
    auto* layout = new QVBoxLayout(window_);
    layout->setContentsMargins(4, 4, 4, 4);
    new WindowPlacement(*window_, QStringLiteral("RangePlot"), QSize(640, 400));
    connect(&showAction, &QAction::triggered, this, &RangePlotPlace::show);
    // The page's width decides; it changes with the window, the screen and
    // the font.
    QWidget* page = slot_.parentWidget();
    page->installEventFilter(this);
    fit();
}

bool RangePlotPlace::onPage() const {
    return plot_.parentWidget() == &slot_;
}

void RangePlotPlace::show() {
    if (onPage()) {
        tabs_.setCurrentWidget(slot_.parentWidget());
        return;
    }
    window_->show();
    window_->raise();
    window_->activateWindow();
}

bool RangePlotPlace::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        fit();
    }
    return QObject::eventFilter(watched, event);
}

void RangePlotPlace::fit() {
    const bool roomy = slot_.parentWidget()->width() >= kRoomyPageWidth;
    if (roomy == onPage() && plot_.parentWidget() != nullptr) {
        return;
    }
    if (roomy) {
        window_->hide();
        slot_.layout()->addWidget(&plot_);
        slot_.show();
    } else {
        slot_.hide();
        window_->layout()->addWidget(&plot_);
    }
    plot_.show();
}

}  // namespace halvex
