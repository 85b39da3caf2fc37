#include "views/widgets/clickable.h"

#include <QMouseEvent>

namespace halvex {

ClickLabel::ClickLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
    setCursor(Qt::PointingHandCursor);
    setFrameShape(QFrame::StyledPanel);
    setAlignment(Qt::AlignCenter);
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* event) {
    // A click is a left press released over the label.
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) {
        emit clicked();
    }
    QLabel::mouseReleaseEvent(event);
}

void DoubleClickLineEdit::mouseDoubleClickEvent(QMouseEvent* event) {
    QLineEdit::mouseDoubleClickEvent(event);
    emit doubleClicked();
}

}  // namespace halvex
