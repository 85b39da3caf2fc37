#include "input/input_settings_dialog.h"

#include <SDL_gamecontroller.h>

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QVBoxLayout>
#include <cmath>

#include "input/controller_jog.h"

namespace halvex {

namespace {
constexpr int kAxisChoices = 8;     // a flight stick has up to six or so
constexpr int kButtonChoices = 32;  // SDL's controller buttons fit, joysticks mostly too

const char* const kTargetNames[InputSettingsDialog::kTargetCount] = {
    "Pan", "Tilt", "Zoom 1", "Focus 1", "Zoom 2", "Focus 2"};

struct ActionName {
    ButtonAction action;
    QString name;
    int preset = 0;  // for GoToPreset only
};

std::vector<ActionName> actionNames() {
    std::vector<ActionName> names = {
        {ButtonAction::Stop, QStringLiteral("Stop")},
        {ButtonAction::Reset, QStringLiteral("Reset")},
        {ButtonAction::MoveHome, QStringLiteral("Move To Home (Preset 31)")},
        {ButtonAction::MoveCenter, QStringLiteral("Move To Physical Center")},
        {ButtonAction::SoftLimitOverride, QStringLiteral("SL Override")},
        {ButtonAction::PanLowSpeed, QStringLiteral("Pan Low Speed Jog")},
        {ButtonAction::TiltLowSpeed, QStringLiteral("Tilt Low Speed Jog")},
    };
    for (int preset = 0; preset < 10; ++preset) {
        names.push_back(
            {ButtonAction::GoToPreset, QStringLiteral("Go To Preset %1").arg(preset), preset});
    }
    return names;
}

// Axis and button names as the device's kind knows them.
QString axisName(int axis, bool gameController) {
    const char* name =
        gameController
            ? SDL_GameControllerGetStringForAxis(static_cast<SDL_GameControllerAxis>(axis))
            : nullptr;
    return name != nullptr ? QStringLiteral("%1 (%2)").arg(axis).arg(QString::fromLatin1(name))
                           : QStringLiteral("Axis %1").arg(axis);
}

QString buttonName(int button, bool gameController) {
    const char* name =
        gameController
            ? SDL_GameControllerGetStringForButton(static_cast<SDL_GameControllerButton>(button))
            : nullptr;
    return name != nullptr ? QStringLiteral("%1 (%2)").arg(button).arg(QString::fromLatin1(name))
                           : QStringLiteral("Button %1").arg(button);
}

QSpinBox* speedBox(const QString& name, int value, int maximum) {
    auto* box = new QSpinBox;
    box->setObjectName(name);
    box->setRange(1, maximum);
    box->setValue(value);
    return box;
}
}  // namespace

InputSettingsDialog::InputSettingsDialog(ControllerJog& controller, KeyboardJog& keyboard,
                                         QWidget* parent)
    : QDialog(parent), controller_(controller) {
    setObjectName(QStringLiteral("InputSettings"));
    setWindowTitle(QStringLiteral("Input Settings"));
    auto* layout = new QVBoxLayout(this);

    auto* devices = new QGroupBox(QStringLiteral("Game controller or joystick"), this);
    auto* deviceForm = new QFormLayout(devices);
    device_ = new QComboBox(devices);
    device_->setObjectName(QStringLiteral("DeviceCombo"));
    inUse_ = new QLabel(devices);
    inUse_->setObjectName(QStringLiteral("DeviceInUse"));
    deviceForm->addRow(QStringLiteral("&Device:"), device_);
    deviceForm->addRow(QStringLiteral("In use:"), inUse_);
    layout->addWidget(devices);

    // Two columns, so that the dialog fits a 1024 x 700 screen.
    auto* columns = new QHBoxLayout;
    auto* left = new QVBoxLayout;
    left->addWidget(buildSticks());
    left->addWidget(buildKeyboard(keyboard.speeds()));
    left->addStretch();
    columns->addLayout(left, 3);
    columns->addWidget(buildButtons(), 2, Qt::AlignTop);
    layout->addLayout(columns);

    auto* buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, Qt::Horizontal, this);
    buttons->setObjectName(QStringLiteral("InputButtons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    fillDevices();
    showMapping(controller_.mapping());
    connect(&controller_, &ControllerJog::devicesChanged, this, &InputSettingsDialog::fillDevices);
    // The preview reads the device itself; the dialog is modal, so nothing jogs meanwhile.
    connect(&preview_, &QTimer::timeout, this, &InputSettingsDialog::refreshPreview);
    preview_.start(ControllerJog::kReadMs);
}

QWidget* InputSettingsDialog::buildSticks() {
    auto* box = new QGroupBox(QStringLiteral("Sticks"), this);
    auto* grid = new QGridLayout(box);
    const QStringList headers = {QStringLiteral("Moves"),  QStringLiteral("Axis"),
                                 QStringLiteral("Invert"), QStringLiteral("Dead zone"),
                                 QStringLiteral("Curve"),  QStringLiteral("Now")};
    for (int column = 0; column < headers.size(); ++column) {
        grid->addWidget(new QLabel(headers[column], box), 0, column);
    }
    for (int i = 0; i < kTargetCount; ++i) {
        AxisRow& row = axes_[static_cast<std::size_t>(i)];
        const QString suffix = QStringLiteral("_%1").arg(i);
        auto* label = new QLabel(QString::fromLatin1(kTargetNames[i]), box);
        row.axis = new QComboBox(box);
        row.axis->setObjectName(QStringLiteral("AxisCombo") + suffix);
        label->setBuddy(row.axis);
        row.invert = new QCheckBox(box);
        row.invert->setObjectName(QStringLiteral("InvertCheck") + suffix);
        row.invert->setAccessibleName(QStringLiteral("Invert %1").arg(kTargetNames[i]));
        row.deadZone = new QSpinBox(box);
        row.deadZone->setObjectName(QStringLiteral("DeadZoneSpin") + suffix);
        row.deadZone->setRange(0, 95);
        row.deadZone->setSuffix(QStringLiteral(" %"));
        row.curve = new QDoubleSpinBox(box);
        row.curve->setObjectName(QStringLiteral("CurveSpin") + suffix);
        row.curve->setRange(1.0, 4.0);
        row.curve->setSingleStep(0.5);
        row.curve->setDecimals(1);
        row.curve->setToolTip(
            QStringLiteral("1: speed grows evenly; 2 or more: finer near the centre"));
        row.preview = new QLabel(box);
        row.preview->setObjectName(QStringLiteral("AxisPreview") + suffix);
        row.preview->setMinimumWidth(
            row.preview->fontMetrics().horizontalAdvance(QStringLiteral("-100 %  ")));
        grid->addWidget(label, i + 1, 0);
        grid->addWidget(row.axis, i + 1, 1);
        grid->addWidget(row.invert, i + 1, 2, Qt::AlignCenter);
        grid->addWidget(row.deadZone, i + 1, 3);
        grid->addWidget(row.curve, i + 1, 4);
        grid->addWidget(row.preview, i + 1, 5);
    }
    grid->setRowStretch(kTargetCount + 1, 1);
    return box;
}

QWidget* InputSettingsDialog::buildButtons() {
    auto* box = new QGroupBox(QStringLiteral("Buttons"), this);
    auto* grid = new QGridLayout(box);
    const std::vector<ActionName> names = actionNames();
    int row = 0;
    for (std::size_t i = 0; i < names.size() && i < buttons_.size(); ++i) {
        auto* combo = new QComboBox(box);
        combo->setObjectName(QStringLiteral("ButtonCombo_%1").arg(i));
        combo->setAccessibleName(names[i].name);
        buttons_[i] = combo;
        if (names[i].action != ButtonAction::GoToPreset) {
            auto* label = new QLabel(names[i].name + QLatin1Char(':'), box);
            label->setBuddy(combo);
            grid->addWidget(label, row, 0);
            grid->addWidget(combo, row++, 1, 1, 3);
            continue;
        }
        // Presets two to a row, under one heading.
        if (names[i].preset == 0) {
            grid->addWidget(new QLabel(QStringLiteral("Go To Preset:"), box), row++, 0, 1, 4);
        }
        const int column = (names[i].preset % 2) * 2;
        auto* label = new QLabel(QString::number(names[i].preset) + QLatin1Char(':'), box);
        label->setBuddy(combo);
        grid->addWidget(label, row, column, Qt::AlignRight);
        grid->addWidget(combo, row, column + 1);
        if (column != 0) {
            ++row;
        }
    }
    return box;
}

QWidget* InputSettingsDialog::buildKeyboard(const KeyboardJog::Speeds& speeds) {
    auto* box =
        new QGroupBox(QStringLiteral("Keyboard (Pan/Tilt page, no text field in use)"), this);
    auto* row = new QHBoxLayout(box);
    auto* form = new QFormLayout;
    using Speeds = KeyboardJog::Speeds;
    normal_ = speedBox(QStringLiteral("KeySpeedSpin"), speeds.normal, Speeds::kFastestJog);
    fast_ = speedBox(QStringLiteral("KeyFastSpin"), speeds.fast, Speeds::kFastestJog);
    slow_ = speedBox(QStringLiteral("KeySlowSpin"), speeds.slow, Speeds::kFastestJog);
    zoom_ = speedBox(QStringLiteral("KeyZoomSpin"), speeds.zoom, Speeds::kFastestZoom);
    form->addRow(QStringLiteral("Arrow speed:"), normal_);
    form->addRow(QStringLiteral("With Shift:"), fast_);
    form->addRow(QStringLiteral("With Ctrl:"), slow_);
    form->addRow(QStringLiteral("Zoom speed:"), zoom_);
    row->addLayout(form);
    auto* keys = new QLabel(KeyboardJog::keyList().join(QLatin1Char('\n')), box);
    keys->setObjectName(QStringLiteral("KeyList"));
    row->addWidget(keys, 1);
    return box;
}

void InputSettingsDialog::fillDevices() {
    const QString before = device_->count() > 0 ? chosenDevice() : controller_.preferredDevice();
    device_->clear();
    device_->addItem(QStringLiteral("First one present"), QString());
    for (const InputDevice& device : controller_.devices()) {
        device_->addItem(QStringLiteral("%1 (%2)").arg(
                             device.name, device.gameController ? QStringLiteral("game controller")
                                                                : QStringLiteral("joystick")),
                         device.guid);
    }
    const int index = device_->findData(before);
    device_->setCurrentIndex(std::max(0, index));

    const std::optional<InputDevice> inUse = controller_.deviceInUse();
    inUse_->setText(inUse ? inUse->name : QStringLiteral("none"));
    const bool gameController = inUse && inUse->gameController;
    for (AxisRow& row : axes_) {
        const QVariant kept = row.axis->currentData();
        row.axis->clear();
        row.axis->addItem(QStringLiteral("None"), -1);
        for (int axis = 0; axis < kAxisChoices; ++axis) {
            row.axis->addItem(axisName(axis, gameController), axis);
        }
        row.axis->setCurrentIndex(std::max(0, row.axis->findData(kept)));
    }
    for (QComboBox* combo : buttons_) {
        const QVariant kept = combo->currentData();
        combo->clear();
        combo->addItem(QStringLiteral("None"), -1);
        for (int button = 0; button < kButtonChoices; ++button) {
            combo->addItem(buttonName(button, gameController), button);
        }
        combo->setCurrentIndex(std::max(0, combo->findData(kept)));
    }
}

void InputSettingsDialog::showMapping(const ControllerMapping& mapping) {
    for (AxisRow& row : axes_) {
        row.axis->setCurrentIndex(0);
        row.invert->setChecked(false);
        row.deadZone->setValue(15);
        row.curve->setValue(2.0);
    }
    for (const AxisBinding& binding : mapping.axes) {
        AxisRow& row = axes_[static_cast<std::size_t>(binding.target)];
        row.axis->setCurrentIndex(std::max(0, row.axis->findData(binding.axis)));
        row.invert->setChecked(binding.response.invert);
        row.deadZone->setValue(static_cast<int>(std::lround(binding.response.deadZone * 100.0)));
        row.curve->setValue(binding.response.curve);
    }
    const std::vector<ActionName> names = actionNames();
    for (QComboBox* combo : buttons_) {
        combo->setCurrentIndex(0);
    }
    for (const ButtonBinding& binding : mapping.buttons) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (names[i].action == binding.action &&
                (binding.action != ButtonAction::GoToPreset || names[i].preset == binding.preset)) {
                buttons_[i]->setCurrentIndex(std::max(0, buttons_[i]->findData(binding.button)));
            }
        }
    }
}

ControllerMapping InputSettingsDialog::chosenMapping() const {
    ControllerMapping mapping;
    for (int i = 0; i < kTargetCount; ++i) {
        const AxisRow& row = axes_[static_cast<std::size_t>(i)];
        const int axis = row.axis->currentData().toInt();
        if (axis < 0) {
            continue;
        }
        AxisResponse response;
        response.deadZone = row.deadZone->value() / 100.0;
        response.curve = row.curve->value();
        response.invert = row.invert->isChecked();
        mapping.axes.push_back({axis, static_cast<JogAxis>(i), response});
    }
    const std::vector<ActionName> names = actionNames();
    for (std::size_t i = 0; i < names.size(); ++i) {
        const int button = buttons_[i]->currentData().toInt();
        if (button >= 0) {
            mapping.buttons.push_back({button, names[i].action, names[i].preset});
        }
    }
    return mapping;
}

QString InputSettingsDialog::chosenDevice() const {
    return device_->currentData().toString();
}

KeyboardJog::Speeds InputSettingsDialog::chosenSpeeds() const {
    return {normal_->value(), fast_->value(), slow_->value(), zoom_->value()};
}

void InputSettingsDialog::refreshPreview() {
    controller_.read();
    for (AxisRow& row : axes_) {
        const int axis = row.axis->currentData().toInt();
        if (axis < 0 || !controller_.deviceInUse()) {
            row.preview->clear();
            continue;
        }
        AxisResponse response;
        response.deadZone = row.deadZone->value() / 100.0;
        response.curve = row.curve->value();
        response.invert = row.invert->isChecked();
        const double value = shapedAxis(controller_.axis(axis), response);
        row.preview->setText(QStringLiteral("%1 %").arg(std::lround(value * 100.0)));
    }
}

}  // namespace halvex
