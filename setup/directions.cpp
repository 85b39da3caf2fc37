#include "setup/directions.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "setup/checked_scroll.h"
#include "views/pages/factory_page.h"

namespace halvex {

namespace {
// RevCheck(0..3).
const std::array<bool MountSettings::*, 4> kReverseSettings = {
    &MountSettings::panMotorReversed, &MountSettings::tiltMotorReversed,
    &MountSettings::panResolverInverted, &MountSettings::tiltResolverInverted};
}  // namespace

Directions::Directions(ConsoleContext& context, FactoryPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
    Session& session = context_.session;
    connect(&session, &Session::mountReported, this, [this](const MountSettings& reported) {
        ControlsFromReply quiet(context_.state);
        // The next Set sends what the unit holds, with the operator's clicks
        // from here on.
        mount_ = reported;
        for (std::size_t i = 0; i < page_.RevCheck.size(); ++i) {
            page_.RevCheck[i]->setChecked(mount_.*kReverseSettings.at(i));
        }
        page_.ConCheck->setChecked(mount_.continuousRotation);
        page_.InvCheck->setChecked(mount_.invertedMount);
    });
    connect(&session, &Session::encodersReported, this, [this](const AxisPair& counts) {
        guarded(context_.state, "SerPort1_OnComm", [this, &counts] {
            ControlsFromReply quiet(context_.state);
            setScrollChecked(page_.PEncScroll, counts.pan);
            setScrollChecked(page_.TEncScroll, counts.tilt);
        });
    });
}

void Directions::connectControls() {
    FormState& state = context_.state;
    const auto bindCheck = [this, &state](QCheckBox* box, const char* name,
                                          bool MountSettings::*setting) {
        onEvent(state, box, &QCheckBox::clicked, this, name,
                [this, setting](bool checked) { mount_.*setting = checked; });
    };
    for (std::size_t i = 0; i < page_.RevCheck.size(); ++i) {
        bindCheck(page_.RevCheck[i], "RevCheck_Click", kReverseSettings.at(i));
    }
    bindCheck(page_.ConCheck, "ConCheck_Click", &MountSettings::continuousRotation);
    bindCheck(page_.InvCheck, "InvCheck_Click", &MountSettings::invertedMount);

    onClick(state, page_.GetRevBut, this, "GetRevBut_Click", &Directions::GetRevBut_Click);
    onClick(state, page_.SetRevBut, this, "SetRevBut_Click", &Directions::SetRevBut_Click);
    onClick(state, page_.GetEncBut, this, "GetEncBut_Click", &Directions::GetEncBut_Click);
    onClick(state, page_.SetEncBut, this, "SetEncBut_Click", &Directions::SetEncBut_Click);
    onClick(state, page_.InitEncBut, this, "InitEncBut_Click", &Directions::InitEncBut_Click);
    onClick(state, page_.EncHomeBut, this, "EncHomeBut_Click", &Directions::EncHomeBut_Click);
}

QCoro::Task<> Directions::GetRevBut_Click() {
    co_await context_.session.readMount(Requester::Operator);
}

QCoro::Task<> Directions::SetRevBut_Click() {
    co_await context_.session.setMount(mount_, Requester::Operator);
}

QCoro::Task<> Directions::GetEncBut_Click() {
    co_await context_.session.readEncoderCounts(Requester::Operator);
}

QCoro::Task<> Directions::SetEncBut_Click() {
    const AxisPair counts{page_.PEncScroll->value(), page_.TEncScroll->value()};
    const Outcome outcome = co_await context_.session.setEncoderCounts(counts, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Directions::InitEncBut_Click() {
    if (context_.session.procedureRunning()) {
        co_return;
    }
    const bool confirmed = co_await context_.messages.confirm(
        QStringLiteral("Critical Initial Alignment Checklist"),
        QStringLiteral(
            "To Prevent Potential Damage To The Unit Confirm Pan & Tilt Is At 0/0 Position, "
            "Normal/Reverse And Con Rotation Are Correct, And Hard Limits Are Properly Set "
            "Before Performing This Alignment! If You Are Not Sure Cancel This Procedure "
            "Now! Host Will Lose Communications During This Alignment!"));
    if (!confirmed) {
        co_return;
    }
    co_await context_.session.alignEncoders(Requester::Operator);
}

QCoro::Task<> Directions::EncHomeBut_Click() {
    if (context_.session.procedureRunning()) {
        co_return;
    }
    const bool confirmed = co_await context_.messages.confirm(
        QStringLiteral("Critical Homing Cycle Checklist"),
        QStringLiteral(
            "To Prevent Potential Damage To The Unit Confirm Normal/Reverse And Con Rotation "
            "Are Correct And That Hard Limits Are Properly Set Before Performing This "
            "Alignment! If You Are Not Sure Cancel This Procedure! Host Will Lose "
            "Communications During This Alignment!"));
    if (!confirmed) {
        co_return;
    }
    co_await context_.session.runHomingCycle(Requester::Operator);
}

}  // namespace halvex
