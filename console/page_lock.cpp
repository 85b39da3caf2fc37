#include "console/page_lock.h"

#include <QApplication>
#include <QLabel>

namespace halvex {

namespace {
void setCaption(QLabel* label, const QString& text) {
    if (label != nullptr) {
        label->setText(text);
    }
}
}  // namespace

HourglassScope::HourglassScope() {
    QApplication::setOverrideCursor(Qt::WaitCursor);
}
HourglassScope::~HourglassScope() {
    QApplication::restoreOverrideCursor();
}

PageLock::PageLock(QWidget* pageTabs, QLabel* panCaption, QLabel* tiltCaption)
    : pageTabs_(pageTabs), panCaption_(panCaption), tiltCaption_(tiltCaption) {
    if (pageTabs_ != nullptr) {
        pageTabs_->setEnabled(false);
    }
    setCaption(panCaption_, QStringLiteral("Reinitializing"));
    setCaption(tiltCaption_, QStringLiteral("Reinitializing"));
}

PageLock::~PageLock() {
    if (pageTabs_ != nullptr) {
        pageTabs_->setEnabled(true);
    }
    setCaption(panCaption_, QStringLiteral("Pan"));
    setCaption(tiltCaption_, QStringLiteral("Tilt"));
}

}  // namespace halvex
