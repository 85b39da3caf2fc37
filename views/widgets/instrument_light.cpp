#include "views/widgets/instrument_light.h"

#include <QApplication>
#include <QWidget>

namespace halvex {

namespace {
InstrumentLight currentLight = InstrumentLight::Day;

// By night a saturated colour keeps 60 % of its brightness and a grey 35 %.
constexpr double kNightSaturated = 0.60;
constexpr double kNightGrey = 0.35;
// Night markings: the hue and depth of the night palette's red, as bright as
// 55 % of the day colour.
constexpr int kMarkingHue = 4;
constexpr int kMarkingSaturation = 220;
constexpr double kNightMarking = 0.55;
}  // namespace

InstrumentLight instrumentLight() {
    return currentLight;
}

void setInstrumentLight(InstrumentLight light) {
    currentLight = light;
    for (QWidget* widget : QApplication::allWidgets()) {
        widget->update();
    }
}

QColor signalColour(const QColor& day) {
    if (currentLight == InstrumentLight::Day) {
        return day;
    }
    const QColor hsv = day.toHsv();
    const double saturation = hsv.hsvSaturationF();
    const double dimming = kNightGrey + (kNightSaturated - kNightGrey) * saturation;
    return QColor::fromHsvF(hsv.hsvHueF(), saturation, hsv.valueF() * dimming, hsv.alphaF());
}

QColor markingColour(const QColor& day) {
    if (currentLight == InstrumentLight::Day) {
        return day;
    }
    const int value = static_cast<int>(day.value() * kNightMarking + 0.5);
    return QColor::fromHsv(kMarkingHue, kMarkingSaturation, value, day.alpha());
}

}  // namespace halvex
