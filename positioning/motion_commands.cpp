#include "positioning/motion_commands.h"

#include "console/handler_wiring.h"
#include "console/position_encoding.h"
#include "positioning/angle_steps.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
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

template <class M>
void MotionCommands::putDesiredPosition(vocab::Field<M> pan, vocab::Field<M> tilt,
                                        bool honourHoldBoxes) {
    // Encode both before touching the buffer, so a bad value sends nothing.
    const std::int32_t panValue = honourHoldBoxes && page_.HoldPanCheck->isChecked()
                                      ? kHoldAxis
                                      : encodePosition(page_.PanDesLED->value());
    const std::int32_t tiltValue = honourHoldBoxes && page_.HoldTiltCheck->isChecked()
                                       ? kHoldAxis
                                       : encodePosition(page_.TiltDesLED->value());
    putPosition(context_.state.TxBuffer, pan, panValue);
    putPosition(context_.state.TxBuffer, tilt, tiltValue);
}

void MotionCommands::AbsoBut_Click() {
    using vocab::AbsoluteMove;
    namespace m = vocab::absolute_move;
    SendInProgressScope sending(context_.state);
    vocab::begin<AbsoluteMove>(context_.state.TxBuffer);
    putDesiredPosition(m::kPan, m::kTilt, true);
    context_.link.SendFrame(AbsoluteMove::kLength);
}

void MotionCommands::AbsoZFBut_Click() {
    using vocab::AbsoluteMoveWithLenses;
    namespace m = vocab::absolute_move_with_lenses;
    SendInProgressScope sending(context_.state);
    ByteTable& tx = context_.state.TxBuffer;
    vocab::begin<AbsoluteMoveWithLenses>(tx);
    putDesiredPosition(m::kPan, m::kTilt, true);
    for (std::size_t i = 0; i < page_.ZFScroll.size(); ++i) {
        vocab::put(tx, m::kLens.at(i), checkedByte(page_.ZFScroll[i]->value()));
    }
    context_.link.SendFrame(AbsoluteMoveWithLenses::kLength);
}

void MotionCommands::DeltaBut_Click() {
    using vocab::DeltaMove;
    namespace m = vocab::delta_move;
    SendInProgressScope sending(context_.state);
    vocab::begin<DeltaMove>(context_.state.TxBuffer);
    // A relative move always sends the entered values; the hold boxes only
    // mean something for an absolute move.
    putDesiredPosition(m::kPan, m::kTilt, false);
    context_.link.SendFrame(DeltaMove::kLength);
}

void MotionCommands::CenterBut_Click() {
    sendMessage(context_.state, context_.link, vocab::blank<vocab::MoveToCentre>());
}

void MotionCommands::HomeBut_Click() {
    sendMessage(context_.state, context_.link, vocab::blank<vocab::MoveToHome>());
}

void MotionCommands::SetSLBut_Click(int index) {
    auto message = vocab::blank<vocab::SoftLimit>();
    vocab::put(message, vocab::soft_limit::kLimitByte, checkedByte(index));
    sendMessage(context_.state, context_.link, message);
}

void MotionCommands::ClrLEDBut_Click(int index) {
    (index == 0 ? page_.PanDesLED : page_.TiltDesLED)->setValue(0.0);
}

void MotionCommands::ZFScroll_Change(int index) {
    const auto i = static_cast<std::size_t>(index);
    page_.ZFLabel[i]->setText(QString::number(page_.ZFScroll[i]->value()));
}

}  // namespace halvex
