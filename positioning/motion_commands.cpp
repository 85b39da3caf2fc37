#include "positioning/motion_commands.h"

#include "console/handler_wiring.h"
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
    onClick(context_.state, page_.AbsoBut, this, "AbsoBut_Click", &MotionCommands::AbsoBut_Click);
    onClick(context_.state, page_.AbsoZFBut, this, "AbsoZFBut_Click",
            &MotionCommands::AbsoZFBut_Click);
    onClick(context_.state, page_.DeltaBut, this, "DeltaBut_Click",
            &MotionCommands::DeltaBut_Click);
    onClick(context_.state, page_.CenterBut, this, "CenterBut_Click",
            &MotionCommands::CenterBut_Click);
    onClick(context_.state, page_.HomeBut, this, "HomeBut_Click", &MotionCommands::HomeBut_Click);
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

PanTiltTarget MotionCommands::desiredPosition(bool honourHoldBoxes) const {
    return {page_.PanDesLED->value(), page_.TiltDesLED->value(),
            honourHoldBoxes && page_.HoldPanCheck->isChecked(),
            honourHoldBoxes && page_.HoldTiltCheck->isChecked()};
}

QCoro::Task<> MotionCommands::AbsoBut_Click() {
    const Outcome outcome =
        co_await context_.session.moveTo(desiredPosition(true), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> MotionCommands::AbsoZFBut_Click() {
    std::array<int, 4> lenses{};
    for (std::size_t i = 0; i < page_.ZFScroll.size(); ++i) {
        lenses.at(i) = page_.ZFScroll[i]->value();
    }
    const Outcome outcome = co_await context_.session.moveToWithLenses(desiredPosition(true),
                                                                       lenses, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> MotionCommands::DeltaBut_Click() {
    // A relative move always sends the entered values; the hold boxes only
    // mean something for an absolute move.
    const PanTiltTarget by = desiredPosition(false);
    const Outcome outcome = co_await context_.session.moveBy(by.pan, by.tilt, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> MotionCommands::CenterBut_Click() {
    co_await context_.session.moveToCentre(Requester::Operator);
}

QCoro::Task<> MotionCommands::HomeBut_Click() {
    co_await context_.session.moveHome(Requester::Operator);
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
