#include "camera/lens_control.h"

#include <cmath>
#include <cstdlib>

#include "camera/click_scope.h"
#include "console/handler_wiring.h"
#include "protocol/vocabulary.h"
#include "protocol/vocabulary_lens_jog.h"
#include "views/pages/camera_page.h"

namespace halvex {

namespace {
constexpr int kLeftOnly = 1;

// The motor setting of each box, Lens1Check(1) first.
bool& settingOf(LensSetup& lens, int check) {
    switch (check) {
        case 1:
            return lens.focus.inverted;
        case 2:
            return lens.focus.reversed;
        case 3:
            return lens.focus.enabled;
        case 4:
            return lens.zoom.inverted;
        case 5:
            return lens.zoom.reversed;
        default:
            return lens.zoom.enabled;
    }
}

// 256 steps over the box's 120 rows: the top row drives at almost full speed
// one way, the bottom row at full speed the other.
constexpr double kRowsPerStep = 0.46875;
constexpr int kFastestMinimum = 255;

void stepUp(int& value) {
    if (value != kFastestMinimum) {
        ++value;
    }
}

void stepDown(int& value) {
    if (value != 0) {
        --value;
    }
}
}  // namespace

int lensButtonValue(Qt::MouseButtons buttons) {
    return ((buttons & Qt::LeftButton) ? 1 : 0) | ((buttons & Qt::RightButton) ? 2 : 0) |
           ((buttons & Qt::MiddleButton) ? 4 : 0);
}

Byte lensJogByte(int button, double x, double y) {
    if (button != kLeftOnly || !std::isfinite(x) || !std::isfinite(y)) {
        return 0;
    }
    const double column = std::floor(x);
    const double row = std::floor(y);
    if (column < 1 || column > 38 || row < 1 || row > 120) {
        return 0;
    }
    int speed = 128 - static_cast<int>(std::floor(y / kRowsPerStep));
    if (speed >= 128) {
        speed = 127;
    } else if (speed < -127) {
        speed = -127;
    }
    return vocab::lens_jog::byteOf(speed);
}

LensControl::LensControl(ConsoleContext& context, JogState& jog, CameraPage& page, QObject* parent)
    : QObject(parent), context_(context), jog_(jog), page_(page) {
    FormState& state = context_.state;
    for (int camera = 0; camera < 2; ++camera) {
        const auto c = static_cast<std::size_t>(camera);
        const char* checkName = camera == 0 ? "Lens1Check_Click" : "Lens2Check_Click";
        for (int bit = 1; bit <= CameraPage::kLensBits; ++bit) {
            // Toggles, as a click handler sees a box set from code too.
            onEvent(state, page_.LensCheck[c][static_cast<std::size_t>(bit - 1)],
                    &QCheckBox::toggled, this, checkName,
                    [this, camera, bit](bool checked) { LensCheck_Click(camera, bit, checked); });
        }
        onEvent(state, page_.ZoomMinSpin[c], &SpinButton::SpinUp, this, "ZoomMinSpin_SpinUp",
                [this, camera] { ZoomMinSpin_SpinUp(camera); });
        onEvent(state, page_.ZoomMinSpin[c], &SpinButton::SpinDown, this, "ZoomMinSpin_SpinDown",
                [this, camera] { ZoomMinSpin_SpinDown(camera); });
        onEvent(state, page_.FocusMinSpin[c], &SpinButton::SpinUp, this, "FocusMinSpin_SpinUp",
                [this, camera] { FocusMinSpin_SpinUp(camera); });
        onEvent(state, page_.FocusMinSpin[c], &SpinButton::SpinDown, this, "FocusMinSpin_SpinDown",
                [this, camera] { FocusMinSpin_SpinDown(camera); });
    }
    onEvent(state, page_.SetLensBut, &QPushButton::clicked, this, "SetLensBut_Click",
            [this] { return SetLensBut_Click(); });
    onEvent(state, page_.GetLensBut, &QPushButton::clicked, this, "GetLensBut_Click",
            [this] { return GetLensBut_Click(); });
    // Handler names for fault reports: down, move and up of each box.
    static const char* const kBoxHandlers[4][3] = {
        {"ZoomBox1_MouseDown", "ZoomBox1_MouseMove", "ZoomBox1_MouseUp"},
        {"FocusBox1_MouseDown", "FocusBox1_MouseMove", "FocusBox1_MouseUp"},
        {"ZoomBox2_MouseDown", "ZoomBox2_MouseMove", "ZoomBox2_MouseUp"},
        {"FocusBox2_MouseDown", "FocusBox2_MouseMove", "FocusBox2_MouseUp"}};
    for (int box = 0; box < 4; ++box) {
        LensJogBox* jogBox = page_.LensBox[static_cast<std::size_t>(box)];
        const char* const* names = kBoxHandlers[box];
        // Pressing and moving both count the buttons held, so a left press
        // with another button already down drives nothing.
        const auto follow = [this, box](Qt::MouseButton, Qt::MouseButtons held, double x,
                                        double y) {
            LensBox_Mouse(box, lensButtonValue(held), x, y);
        };
        onEvent(state, jogBox, &LensJogBox::mousePressed, this, names[0], follow);
        onEvent(state, jogBox, &LensJogBox::mouseMoved, this, names[1], follow);
        onEvent(state, jogBox, &LensJogBox::mouseReleased, this, names[2],
                [this, box] { LensBox_MouseUp(box); });
    }
    connect(&context_.session, &Session::lensSetupReported, this, &LensControl::showLenses);
}

void LensControl::LensCheck_Click(int camera, int check, bool checked) {
    if (!context_.state.UserClickEnabled) {
        return;
    }
    settingOf(lenses_[static_cast<std::size_t>(camera)], check) = checked;
}

void LensControl::ZoomMinSpin_SpinUp(int camera) {
    stepUp(lenses_[static_cast<std::size_t>(camera)].zoom.minimumSpeed);
    showSpeeds();
}

void LensControl::ZoomMinSpin_SpinDown(int camera) {
    stepDown(lenses_[static_cast<std::size_t>(camera)].zoom.minimumSpeed);
    showSpeeds();
}

void LensControl::FocusMinSpin_SpinUp(int camera) {
    stepUp(lenses_[static_cast<std::size_t>(camera)].focus.minimumSpeed);
    showSpeeds();
}

void LensControl::FocusMinSpin_SpinDown(int camera) {
    stepDown(lenses_[static_cast<std::size_t>(camera)].focus.minimumSpeed);
    showSpeeds();
}

void LensControl::showSpeeds() {
    for (std::size_t c = 0; c < 2; ++c) {
        page_.ZoomMinLabel[c]->setText(QString::number(lenses_[c].zoom.minimumSpeed));
        page_.FocusMinLabel[c]->setText(QString::number(lenses_[c].focus.minimumSpeed));
    }
}

QCoro::Task<> LensControl::SetLensBut_Click() {
    const Outcome outcome = co_await context_.session.setLensSetup(lenses_, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> LensControl::GetLensBut_Click() {
    // The request carries the page's own values, as the unit's read does.
    const Outcome outcome = co_await context_.session.readLensSetup(lenses_, Requester::Operator);
    outcome.raiseRangeFault();
}

void LensControl::showLenses(const LensSetupPair& lenses) {
    lenses_ = lenses;
    {
        UserClicksOff quiet(context_.state);
        for (std::size_t c = 0; c < 2; ++c) {
            for (int check = 1; check <= CameraPage::kLensBits; ++check) {
                page_.LensCheck[c][static_cast<std::size_t>(check - 1)]->setChecked(
                    settingOf(lenses_[c], check));
            }
        }
    }
    showSpeeds();
}

void LensControl::LensBox_Mouse(int box, int button, double x, double y) {
    jog_.LensJogSpeeds[static_cast<std::size_t>(box)] = lensJogByte(button, x, y);
}

void LensControl::LensBox_MouseUp(int box) {
    jog_.LensJogSpeeds[static_cast<std::size_t>(box)] = 0;
}

}  // namespace halvex
