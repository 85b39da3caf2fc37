#include "input/mapping_settings.h"

#include <algorithm>

namespace halvex {

namespace {
constexpr int kMaxIndex = 255;  // SDL's axis and button indices are far below
// The dialog writes at most one binding per target and action; a longer list
// is a damaged or hand-edited file, and its size must not decide how much
// memory the console takes.
constexpr int kMaxBindings = 64;

int boundedSize(int size) {
    return std::clamp(size, 0, kMaxBindings);
}

using Speeds = KeyboardJog::Speeds;
struct SpeedKey {
    const char* key;
    int Speeds::*speed;
};
constexpr SpeedKey kSpeedKeys[] = {{"Input/KeySpeed", &Speeds::normal},
                                   {"Input/KeyFast", &Speeds::fast},
                                   {"Input/KeySlow", &Speeds::slow},
                                   {"Input/KeyZoom", &Speeds::zoom}};

QString group(const QString& guid) {
    return QStringLiteral("Input/Mapping-") + guid;
}
}  // namespace

void saveMapping(QSettings& settings, const QString& guid, const ControllerMapping& mapping) {
    settings.remove(group(guid));
    settings.beginGroup(group(guid));
    settings.beginWriteArray(QStringLiteral("Axes"), static_cast<int>(mapping.axes.size()));
    for (std::size_t i = 0; i < mapping.axes.size(); ++i) {
        const AxisBinding& axis = mapping.axes[i];
        settings.setArrayIndex(static_cast<int>(i));
        settings.setValue(QStringLiteral("Axis"), axis.axis);
        settings.setValue(QStringLiteral("Target"), static_cast<int>(axis.target));
        settings.setValue(QStringLiteral("DeadZone"), axis.response.deadZone);
        settings.setValue(QStringLiteral("Curve"), axis.response.curve);
        settings.setValue(QStringLiteral("Invert"), axis.response.invert);
    }
    settings.endArray();
    settings.beginWriteArray(QStringLiteral("Buttons"), static_cast<int>(mapping.buttons.size()));
    for (std::size_t i = 0; i < mapping.buttons.size(); ++i) {
        const ButtonBinding& button = mapping.buttons[i];
        settings.setArrayIndex(static_cast<int>(i));
        settings.setValue(QStringLiteral("Button"), button.button);
        settings.setValue(QStringLiteral("Action"), static_cast<int>(button.action));
        settings.setValue(QStringLiteral("Preset"), button.preset);
    }
    settings.endArray();
    settings.endGroup();
}

std::optional<ControllerMapping> loadMapping(QSettings& settings, const QString& guid) {
    settings.beginGroup(group(guid));
    if (!settings.contains(QStringLiteral("Axes/size")) &&
        !settings.contains(QStringLiteral("Buttons/size"))) {
        settings.endGroup();
        return std::nullopt;
    }
    ControllerMapping mapping;
    const int axes = boundedSize(settings.beginReadArray(QStringLiteral("Axes")));
    for (int i = 0; i < axes; ++i) {
        settings.setArrayIndex(i);
        AxisBinding axis;
        axis.axis = std::clamp(settings.value(QStringLiteral("Axis")).toInt(), 0, kMaxIndex);
        axis.target =
            static_cast<JogAxis>(std::clamp(settings.value(QStringLiteral("Target")).toInt(), 0,
                                            static_cast<int>(JogAxis::Focus2)));
        axis.response.deadZone =
            std::clamp(settings.value(QStringLiteral("DeadZone"), 0.15).toDouble(), 0.0, 0.95);
        axis.response.curve =
            std::clamp(settings.value(QStringLiteral("Curve"), 2.0).toDouble(), 0.2, 5.0);
        axis.response.invert = settings.value(QStringLiteral("Invert")).toBool();
        mapping.axes.push_back(axis);
    }
    settings.endArray();
    const int buttons = boundedSize(settings.beginReadArray(QStringLiteral("Buttons")));
    for (int i = 0; i < buttons; ++i) {
        settings.setArrayIndex(i);
        ButtonBinding button;
        button.button = std::clamp(settings.value(QStringLiteral("Button")).toInt(), 0, kMaxIndex);
        button.action =
            static_cast<ButtonAction>(std::clamp(settings.value(QStringLiteral("Action")).toInt(),
                                                 0, static_cast<int>(ButtonAction::GoToPreset)));
        button.preset = std::clamp(settings.value(QStringLiteral("Preset")).toInt(), 0, 9);
        mapping.buttons.push_back(button);
    }
    settings.endArray();
    settings.endGroup();
    return mapping;
}

void saveKeySpeeds(QSettings& settings, const KeyboardJog::Speeds& speeds) {
    for (const auto& [key, speed] : kSpeedKeys) {
        settings.setValue(QLatin1String(key), speeds.*speed);
    }
}

KeyboardJog::Speeds loadKeySpeeds(QSettings& settings) {
    KeyboardJog::Speeds speeds;
    for (const auto& [key, speed] : kSpeedKeys) {
        speeds.*speed = settings.value(QLatin1String(key), speeds.*speed).toInt();
    }
    return speeds;
}

}  // namespace halvex
