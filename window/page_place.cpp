#include "window/page_place.h"

#include <QAction>
#include <QEvent>
#include <QGroupBox>
#include <QTabWidget>
#include <QVBoxLayout>

#include "window/window_placement.h"

namespace halvex {

PagePlace::PagePlace(QWidget& panel, QGroupBox& pageSlot, QTabWidget& tabs, QAction& showAction,
                     QWidget& mainWindow, const Window& window)
    : QObject(&mainWindow),
      panel_(panel),
      slot_(pageSlot),
      tabs_(tabs),
      window_(new QWidget(&mainWindow, Qt::Window)),
      roomyPageWidth_(window.roomyPageWidth) {
    window_->setObjectName(window.name + QStringLiteral("Window"));
    window_->setWindowTitle(window.title);
    auto* layout = new QVBoxLayout(window_);
    layout->setContentsMargins(4, 4, 4, 4);
    new WindowPlacement(*window_, window.name, window.firstSize);
    connect(&showAction, &QAction::triggered, this, &PagePlace::show);
    // The page's width decides; it changes with the window, the screen and
    // the font.
    QWidget* page = slot_.parentWidget();
    page->installEventFilter(this);
    fit();
}

bool PagePlace::onPage() const {
    return panel_.parentWidget() == &slot_;
}

void PagePlace::show() {
    if (onPage()) {
        tabs_.setCurrentWidget(slot_.parentWidget());
        return;
    }
    window_->show();
    window_->raise();
    window_->activateWindow();
}

bool PagePlace::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize) {
        fit();
    }
    return QObject::eventFilter(watched, event);
}

void PagePlace::fit() {
    const bool roomy = slot_.parentWidget()->width() >= roomyPageWidth_;
    if (roomy == onPage() && panel_.parentWidget() != nullptr) {
        return;
    }
    if (roomy) {
        window_->hide();
        slot_.layout()->addWidget(&panel_);
        slot_.show();
    } else {
        slot_.hide();
        window_->layout()->addWidget(&panel_);
    }
    panel_.show();
}

}  // namespace halvex
