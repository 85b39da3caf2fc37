#include "views/pages/page_parts.h"

#include <QPushButton>
#include <QScrollArea>

#include "views/widgets/led_display.h"

namespace halvex {

QFont fixedPitchFont() {
    QFont font(QStringLiteral("Courier New"));
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    return font;
}

LedDisplay* angleLed(const QString& name, QWidget* parent) {
    auto* led = new LedDisplay(parent);
    led->setObjectName(name);
    led->setDecimals(2);
    led->setFieldWidth(6);
    return led;
}

QWidget* scrollingWhenSqueezed(QWidget* page) {
    auto* area = new QScrollArea;
    area->setObjectName(page->objectName() + QStringLiteral("Scroll"));
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    // The page's own background, not a text field's.
    area->viewport()->setAutoFillBackground(false);
    area->setWidget(page);
    page->setAutoFillBackground(false);
    return area;
}

QPushButton* namedButton(const QString& name, const QString& caption, const QString& tip,
                         QWidget* parent) {
    auto* button = new QPushButton(caption, parent);
    button->setObjectName(name);
    if (!tip.isEmpty()) {
        button->setToolTip(tip);
    }
    return button;
}

}  // namespace halvex
