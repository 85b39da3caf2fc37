#include <gtest/gtest.h>

#include <QAccessible>
#include <QAccessibleValueInterface>
#include <array>

#include "views/widgets/jog_box.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/status_lamp.h"
#include "views/widgets/widget_accessibility.h"

using namespace halvex;

namespace {
// A widget's name and value as a screen reader hears them.
std::string heard(QWidget& widget) {
    QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(&widget);
    return accessible == nullptr
               ? "nothing"
               : (accessible->text(QAccessible::Name) + ": " + accessible->text(QAccessible::Value))
                     .toStdString();
}
}  // namespace

TEST(WidgetAccessibility, ReadOutsLampsAndPadsTellTheirNameAndValue) {
    installWidgetAccessibility();  // before the first widget, as the main window does
    LedDisplay led;
    led.setObjectName(QStringLiteral("PanPosLED"));
    led.setAccessibleName(QStringLiteral("Current pan"));
    led.setDecimals(2);
    led.setValue(-12.5);
    EXPECT_EQ(heard(led), "Current pan: -12.50");

    PanGauge gauge;
    gauge.setObjectName(QStringLiteral("Gauge"));  // no other name
    gauge.setRange(-170, 170);
    gauge.setValue(45.25);
    EXPECT_EQ(heard(gauge), "Gauge: pan 45.25 degrees");
    // Its least, greatest and current number.
    QAccessibleValueInterface* numbers =
        QAccessible::queryAccessibleInterface(&gauge)->valueInterface();
    ASSERT_NE(numbers, nullptr);
    EXPECT_EQ((std::array{numbers->minimumValue().toDouble(), numbers->maximumValue().toDouble(),
                          numbers->currentValue().toDouble()}),
              (std::array{-170.0, 170.0, 45.25}));

    StatusLamp lamp;
    lamp.setToolTip(QStringLiteral("Pan fault"));
    const std::pair<QColor, const char*> lamps[] = {{QColor(0x60, 0x00, 0x00), "Pan fault: off"},
                                                    {Qt::red, "Pan fault: on, red"},
                                                    {Qt::green, "Pan fault: on, green"}};
    for (const auto& [colour, said] : lamps) {
        lamp.setColor(colour);
        EXPECT_EQ(heard(lamp), said);
    }

    JogBox jog;
    EXPECT_EQ(heard(jog), ": pan 0, tilt 0");
    jog.setJogVector(QPointF(-1.0, 96.0 / 255.0));
    EXPECT_EQ(heard(jog), ": pan 255 left, tilt 96 up");
    LensJogBox lens;
    lens.setAccessibleName(QStringLiteral("Zoom 1"));
    EXPECT_EQ(heard(lens), "Zoom 1: at rest");
}
