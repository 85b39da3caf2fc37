#include <gtest/gtest.h>

#include <QAccessible>
#include <QAccessibleValueInterface>

#include "views/pages/camera_page.h"
#include "views/pages/pan_tilt_page.h"
#include "views/widgets/jog_box.h"
#include "views/widgets/led_display.h"
#include "views/widgets/lens_jog_box.h"
#include "views/widgets/pan_gauge.h"
#include "views/widgets/status_lamp.h"
#include "views/widgets/widget_accessibility.h"

using namespace halvex;

namespace {
QAccessibleInterface* accessibleOf(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget);
}
}  // namespace

TEST(WidgetAccessibility, ReadOutsTellTheirNameAndTheirNumber) {
    installWidgetAccessibility();  // before the first widget, as the main window does
    LedDisplay led;
    led.setObjectName(QStringLiteral("PanPosLED"));
    led.setAccessibleName(QStringLiteral("Current pan"));
    led.setDecimals(2);
    led.setValue(-12.5);
    QAccessibleInterface* accessible = accessibleOf(led);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Current pan"));
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("-12.50"));
    ASSERT_NE(accessible->valueInterface(), nullptr);
    EXPECT_EQ(accessible->valueInterface()->currentValue().toDouble(), -12.5);

    PanGauge gauge;
    gauge.setObjectName(QStringLiteral("Gauge"));
    gauge.setMinimum(-170);
    gauge.setMaximum(170);
    gauge.setValue(45.25);
    accessible = accessibleOf(gauge);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Gauge"));  // no other name
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("pan 45.25 degrees"));
    ASSERT_NE(accessible->valueInterface(), nullptr);
    EXPECT_EQ(accessible->valueInterface()->minimumValue().toDouble(), -170.0);
    EXPECT_EQ(accessible->valueInterface()->maximumValue().toDouble(), 170.0);
    EXPECT_EQ(accessible->valueInterface()->currentValue().toDouble(), 45.25);
}

TEST(WidgetAccessibility, LampsTellLitOrOffAndJogBoxesTheSpeedsSent) {
    installWidgetAccessibility();
    StatusLamp lamp;
    lamp.setToolTip(QStringLiteral("Pan fault"));
    QAccessibleInterface* accessible = accessibleOf(lamp);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Pan fault"));
    EXPECT_EQ(accessible->role(), QAccessible::Indicator);
    lamp.setColor(QColor(0x60, 0x00, 0x00));
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("off"));
    lamp.setColor(Qt::red);
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("on, red"));
    lamp.setColor(Qt::green);
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("on, green"));
    EXPECT_EQ(accessible->valueInterface(), nullptr);  // a lamp has no number

    JogBox jog;
    accessible = accessibleOf(jog);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("pan 0, tilt 0"));
    jog.setJogVector(QPointF(-1.0, 96.0 / 255.0));
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("pan 255 left, tilt 96 up"));
    EXPECT_TRUE(jog.focusPolicy() & Qt::TabFocus);

    LensJogBox lens;
    lens.setAccessibleName(QStringLiteral("Zoom 1"));
    accessible = accessibleOf(lens);
    ASSERT_NE(accessible, nullptr);
    EXPECT_EQ(accessible->text(QAccessible::Name), QStringLiteral("Zoom 1"));
    EXPECT_EQ(accessible->text(QAccessible::Value), QStringLiteral("at rest"));
    EXPECT_TRUE(lens.focusPolicy() & Qt::TabFocus);
}

TEST(WidgetAccessibility, EveryReadOutLampAndPadOfThePagesHasASpokenName) {
    installWidgetAccessibility();
    PanTiltPage panTilt;
    CameraPage camera;
    panTilt.PanPosLED->setValue(12.34);
    QAccessibleInterface* current = QAccessible::queryAccessibleInterface(panTilt.PanPosLED);
    ASSERT_NE(current, nullptr);
    EXPECT_EQ(current->text(QAccessible::Name), QStringLiteral("Current pan"));
    EXPECT_EQ(current->text(QAccessible::Value), panTilt.PanPosLED->text().trimmed());
    for (QWidget* page : std::initializer_list<QWidget*>{&panTilt, &camera}) {
        for (QWidget* widget : page->findChildren<QWidget*>()) {
            if (qobject_cast<LedDisplay*>(widget) == nullptr &&
                qobject_cast<StatusLamp*>(widget) == nullptr &&
                qobject_cast<PanGauge*>(widget) == nullptr &&
                qobject_cast<PointerPad*>(widget) == nullptr) {
                continue;
            }
            QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(widget);
            ASSERT_NE(accessible, nullptr);
            const QString name = accessible->text(QAccessible::Name);
            EXPECT_FALSE(name.isEmpty() || name == widget->objectName())
                << widget->objectName().toStdString() << " has no spoken name";
        }
    }
}
