#include "views/widgets/spin_button.h"

#include <QVBoxLayout>

namespace halvex {

SpinButton::SpinButton(QWidget* parent)
    : QWidget(parent), up_(new QToolButton(this)), down_(new QToolButton(this)) {
    up_->setObjectName(QStringLiteral("up"));
    down_->setObjectName(QStringLiteral("down"));
    up_->setArrowType(Qt::UpArrow);
    down_->setArrowType(Qt::DownArrow);
    // Holding an arrow keeps stepping, as a spin control does.
    for (QToolButton* button : {up_, down_}) {
        button->setAutoRepeat(true);
        button->setAutoRepeatDelay(400);
        button->setAutoRepeatInterval(80);
        button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    }
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(up_);
    layout->addWidget(down_);
    connect(up_, &QToolButton::clicked, this, &SpinButton::SpinUp);
    connect(down_, &QToolButton::clicked, this, &SpinButton::SpinDown);
}

}  // namespace halvex
