#include "positioning/motion_commands.h"

#include "console/handler_wiring.h"
#include "console/position_encoding.h"
#include "positioning/angle_steps.h"
#include "protocol/senders.h"
#include "views/pages/pan_tilt_page.h"

namespace halvex {

MotionCommands::MotionCommands(ConsoleContext& context, PanTiltPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    auto on = [this](QPushButton* button, const char* name, auto handler) {
        onEvent(context_.state, button, &QPushButton::clicked, this, name, handler);
    };
    on(page_.AbsoBut, "AbsoBut_Click", [this] { AbsoBut_Click(); });
    on(page_.AbsoZFBut, "AbsoZFBut_Click", [this] { AbsoZFBut_Click(); });
    on(page_.DeltaBut, "DeltaBut_Click", [this] { DeltaBut_Click(); });
    on(page_.CenterBut, "CenterBut_Click", [this] { CenterBut_Click(); });
    on(page_.HomeBut, "HomeBut_Click", [this] { HomeBut_Click(); });
    for (std::size_t i = 0; i < page_.SetSLBut.size(); ++i) {
        on(page_.SetSLBut[i], "SetSLBut_Click", [this, i] { SetSLBut_Click(static_cast<int>(i)); });
    }
    for (std::size_t i = 0; i < page_.ZFScroll.size(); ++i) {
        connect(page_.ZFScroll[i], &QScrollBar::valueChanged, this,
                [this, i] { ZFScroll_Change(static_cast<int>(i)); });
    }
    // The desired angles step within the soft limits; a unit that pans for
    // ever has no pan limits to stop at.
    UnitStatus& status = context_.status;
    connectAngleSteps(
        context_.state, page_.PanDesBut, page_.PanDesLED,
        [&status]() -> std::optional<float> {
            return status.PanContinuous ? std::nullopt : std::optional<float>(status.PanMinLimit);
        },
        [&status]() -> std::optional<float> {
            return status.PanContinuous ? std::nullopt : std::optional<float>(status.PanMaxLimit);
        });
    connectAngleSteps(
        context_.state, page_.TiltDesBut, page_.TiltDesLED,
        [&status]() -> std::optional<float> { return status.TiltMinLimit; },
        [&status]() -> std::optional<float> { return status.TiltMaxLimit; });
    for (std::size_t i = 0; i < page_.ClrLEDBut.size(); ++i) {
        on(page_.ClrLEDBut[i], "ClrLEDBut_Click",
           [this, i] { ClrLEDBut_Click(static_cast<int>(i)); });
    }
}

void MotionCommands::putDesiredPosition(bool honourHoldBoxes) {
    // Encode both before touching the buffer, so a bad value sends nothing.
    const std::int32_t pan = honourHoldBoxes && page_.HoldPanCheck->isChecked()
                                 ? kHoldAxis
                                 : encodePosition(page_.PanDesLED->value());
    const std::int32_t tilt = honourHoldBoxes && page_.HoldTiltCheck->isChecked()
                                  ? kHoldAxis
                                  : encodePosition(page_.TiltDesLED->value());
    putPosition(context_.state.TxBuffer, 1, pan);
    putPosition(context_.state.TxBuffer, 4, tilt);
}

void MotionCommands::AbsoBut_Click() {
    SendInProgressScope sending(context_.state);
    context_.state.TxBuffer[0] = 0x33;
    putDesiredPosition(true);
    context_.link.SendFrame(7);
}

void MotionCommands::AbsoZFBut_Click() {
    SendInProgressScope sending(context_.state);
    context_.state.TxBuffer[0] = 0x3A;
    putDesiredPosition(true);
    for (std::size_t i = 0; i < page_.ZFScroll.size(); ++i) {
        context_.state.TxBuffer[7 + i] = checkedByte(page_.ZFScroll[i]->value());
    }
    context_.link.SendFrame(11);
}

void MotionCommands::DeltaBut_Click() {
    SendInProgressScope sending(context_.state);
    context_.state.TxBuffer[0] = 0x34;
    // A relative move always sends the entered values; the hold boxes only
    // mean something for an absolute move.
    putDesiredPosition(false);
    context_.link.SendFrame(7);
}

void MotionCommands::CenterBut_Click() {
    sendMessage(context_.state, context_.link, {0x35});
}

void MotionCommands::HomeBut_Click() {
    sendMessage(context_.state, context_.link, {0x36});
}

void MotionCommands::SetSLBut_Click(int index) {
    sendMessage(context_.state, context_.link, {0x81, checkedByte(index)});
}

void MotionCommands::ClrLEDBut_Click(int index) {
    (index == 0 ? page_.PanDesLED : page_.TiltDesLED)->setValue(0.0);
}

void MotionCommands::ZFScroll_Change(int index) {
    const auto i = static_cast<std::size_t>(index);
    page_.ZFLabel[i]->setText(QString::number(page_.ZFScroll[i]->value()));
}

}  // namespace halvex
