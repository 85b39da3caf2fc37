#include "views/widgets/widget_accessibility.h"

#include <QAccessible>
#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <cmath>

#include "views/widgets/jog_box.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/range_plot.h"
#include "views/widgets/status_lamp.h"

namespace halvex {

namespace {

QString nameOf(const QWidget* widget) {
    if (!widget->accessibleName().isEmpty()) {
        return widget->accessibleName();
    }
    if (!widget->toolTip().isEmpty()) {
        return widget->toolTip();
    }
    return widget->objectName();
}

// A lamp's colour as words: dark lamps are off.
QString lampState(const QColor& colour) {
    if (!colour.isValid() || colour.lightness() < 60 || colour.value() < 110) {
        return QStringLiteral("off");
    }
    const int hue = colour.hslHue();
    if (hue < 0) {
        return QStringLiteral("on, white");
    }
    if (hue < 20 || hue >= 330) {
        return QStringLiteral("on, red");
    }
    if (hue < 70) {
        return QStringLiteral("on, yellow");
    }
    if (hue < 170) {
        return QStringLiteral("on, green");
    }
    return QStringLiteral("on, blue");
}

QString speedWords(double fraction, const char* positive, const char* negative) {
    const auto speed = static_cast<int>(std::lround(std::abs(fraction) * 255.0));
    if (speed == 0) {
        return QStringLiteral("0");
    }
    return QStringLiteral("%1 %2").arg(speed).arg(
        QString::fromLatin1(fraction > 0 ? positive : negative));
}

// Name and a text value for any of the custom widgets; a number value too
// for the LED displays and the gauge.
class CustomWidgetAccessible : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    CustomWidgetAccessible(QWidget* widget, QAccessible::Role role)
        : QAccessibleWidget(widget, role) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name) {
            return nameOf(widget());
        }
        if (kind == QAccessible::Value) {
            return valueText();
        }
        return QAccessibleWidget::text(kind);
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface && hasNumber()) {
            return static_cast<QAccessibleValueInterface*>(this);
        }
        return QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override {
        if (const auto* led = qobject_cast<const LedDisplay*>(widget())) {
            return led->value();
        }
        if (const auto* gauge = qobject_cast<const PanGauge*>(widget())) {
            return gauge->value();
        }
        return {};
    }
    void setCurrentValue(const QVariant&) override {}  // read-outs: nothing to set
    QVariant maximumValue() const override {
        const auto* gauge = qobject_cast<const PanGauge*>(widget());
        return gauge != nullptr ? QVariant(gauge->maximum()) : QVariant();
    }
    QVariant minimumValue() const override {
        const auto* gauge = qobject_cast<const PanGauge*>(widget());
        return gauge != nullptr ? QVariant(gauge->minimum()) : QVariant();
    }
    QVariant minimumStepSize() const override { return {}; }

  private:
    bool hasNumber() const {
        return qobject_cast<const LedDisplay*>(widget()) != nullptr ||
               qobject_cast<const PanGauge*>(widget()) != nullptr;
    }

    QString valueText() const {
        if (const auto* led = qobject_cast<const LedDisplay*>(widget())) {
            return led->text().trimmed();
        }
        if (const auto* gauge = qobject_cast<const PanGauge*>(widget())) {
            return QStringLiteral("pan %1 degrees").arg(gauge->readout());
        }
        if (const auto* lamp = qobject_cast<const StatusLamp*>(widget())) {
            return lampState(lamp->color());
        }
        if (const auto* jog = qobject_cast<const JogBox*>(widget())) {
            const QPointF vector = jog->jogVector();
            return QStringLiteral("pan %1, tilt %2")
                .arg(speedWords(vector.x(), "right", "left"), speedWords(vector.y(), "up", "down"));
        }
        if (const auto* lens = qobject_cast<const LensJogBox*>(widget())) {
            return lens->pointerHeld() ? QStringLiteral("held") : QStringLiteral("at rest");
        }
        if (const auto* plot = qobject_cast<const RangePlot*>(widget())) {
            return plot->summary();
        }
        return {};
    }
};

QAccessibleInterface* customWidgetFactory(const QString&, QObject* object) {
    auto* widget = qobject_cast<QWidget*>(object);
    if (widget == nullptr) {
        return nullptr;
    }
    if (qobject_cast<LedDisplay*>(widget) != nullptr) {
        return new CustomWidgetAccessible(widget, QAccessible::StaticText);
    }
    if (qobject_cast<PanGauge*>(widget) != nullptr) {
        return new CustomWidgetAccessible(widget, QAccessible::Dial);
    }
    if (qobject_cast<StatusLamp*>(widget) != nullptr) {
        return new CustomWidgetAccessible(widget, QAccessible::Indicator);
    }
    if (qobject_cast<JogBox*>(widget) != nullptr || qobject_cast<LensJogBox*>(widget) != nullptr) {
        return new CustomWidgetAccessible(widget, QAccessible::Canvas);
    }
    if (qobject_cast<RangePlot*>(widget) != nullptr) {
        return new CustomWidgetAccessible(widget, QAccessible::Chart);
    }
    return nullptr;
}

}  // namespace

void installWidgetAccessibility() {
    static bool installed = false;
    if (!installed) {
        QAccessible::installFactory(customWidgetFactory);
        installed = true;
    }
}

void announceValueChange(QObject* widget) {
    if (!QAccessible::isActive()) {
        return;
    }
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
    if (accessible == nullptr) {
        return;
    }
    QAccessibleValueChangeEvent event(widget, accessible->text(QAccessible::Value));
    QAccessible::updateAccessibility(&event);
}

}  // namespace halvex
