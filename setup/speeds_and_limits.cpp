#include "setup/speeds_and_limits.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "setup/checked_scroll.h"
#include "views/pages/setup_page.h"

namespace halvex {

namespace {
constexpr int kMaxDecel = 63;

// A ramp or maximum of 0 is shown as 1.
int atLeastOne(int value) {
    return value == 0 ? 1 : value;
}
}  // namespace

SpeedsAndLimits::SpeedsAndLimits(ConsoleContext& context, SetupPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
    watchReplies();
}

void SpeedsAndLimits::connectControls() {
    FormState& state = context_.state;
    onClick(state, page_.GetRateBut, this, "GetRateBut_Click", &SpeedsAndLimits::GetRateBut_Click);
    onClick(state, page_.SetRateBut, this, "SetRateBut_Click", &SpeedsAndLimits::SetRateBut_Click);
    onClick(state, page_.GetCMaxBut, this, "GetCMaxBut_Click", &SpeedsAndLimits::GetCMaxBut_Click);
    onClick(state, page_.SetCMaxBut, this, "SetCMaxBut_Click", &SpeedsAndLimits::SetCMaxBut_Click);
    onClick(state, page_.GetIMaxBut, this, "GetIMaxBut_Click", &SpeedsAndLimits::GetIMaxBut_Click);
    onClick(state, page_.SetIMaxBut, this, "SetIMaxBut_Click", &SpeedsAndLimits::SetIMaxBut_Click);
    onClick(state, page_.GetPStepBut, this, "GetPStepBut_Click",
            &SpeedsAndLimits::GetPStepBut_Click);
    onClick(state, page_.SetPStepBut, this, "SetPStepBut_Click",
            &SpeedsAndLimits::SetPStepBut_Click);
    onClick(state, page_.GetTStepBut, this, "GetTStepBut_Click",
            &SpeedsAndLimits::GetTStepBut_Click);
    onClick(state, page_.SetTStepBut, this, "SetTStepBut_Click",
            &SpeedsAndLimits::SetTStepBut_Click);
    onClick(state, page_.SetMaxPairBut, this, "SetMaxPairBut_Click",
            &SpeedsAndLimits::SetMaxPairBut_Click);
    onClick(state, page_.SetMinPairBut, this, "SetMinPairBut_Click",
            &SpeedsAndLimits::SetMinPairBut_Click);
    onClick(state, page_.SetTiltBut, this, "SetTiltBut_Click", &SpeedsAndLimits::SetTiltBut_Click);
}

QCoro::Task<> SpeedsAndLimits::GetRateBut_Click() {
    co_await context_.session.readDriveRates(Requester::Operator);
}

QCoro::Task<> SpeedsAndLimits::SetRateBut_Click() {
    const DriveRates rates{
        {page_.PSafeScroll->value(), page_.PRampScroll->value(), page_.PDecelScroll->value()},
        {page_.TSafeScroll->value(), page_.TRampScroll->value(), page_.TDecelScroll->value()}};
    const Outcome outcome = co_await context_.session.setDriveRates(rates, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::GetCMaxBut_Click() {
    co_await context_.session.readTopSpeeds(TopSpeedSet::First, Requester::Operator);
}

QCoro::Task<> SpeedsAndLimits::SetCMaxBut_Click() {
    const AxisPair speeds{page_.PTopScroll->value(), page_.TTopScroll->value()};
    const Outcome outcome =
        co_await context_.session.setTopSpeeds(TopSpeedSet::First, speeds, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::GetIMaxBut_Click() {
    co_await context_.session.readTopSpeeds(TopSpeedSet::Second, Requester::Operator);
}

QCoro::Task<> SpeedsAndLimits::SetIMaxBut_Click() {
    const AxisPair speeds{page_.PITopScroll->value(), page_.TITopScroll->value()};
    const Outcome outcome =
        co_await context_.session.setTopSpeeds(TopSpeedSet::Second, speeds, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::GetPStepBut_Click() {
    co_await context_.session.readPanSteps(Requester::Operator);
}

QCoro::Task<> SpeedsAndLimits::SetPStepBut_Click() {
    const StepRange range{page_.PMinScroll->value(), page_.PMaxScroll->value()};
    const Outcome outcome = co_await context_.session.setPanSteps(range, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::GetTStepBut_Click() {
    co_await context_.session.readTiltSteps(Requester::Operator);
}

QCoro::Task<> SpeedsAndLimits::SetTStepBut_Click() {
    const StepRange range{page_.TMinScroll->value(), page_.TMaxScroll->value()};
    const Outcome outcome = co_await context_.session.setTiltSteps(range, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::SetMaxPairBut_Click() {
    const AxisPair maxima{page_.PMaxScroll->value(), page_.TMaxScroll->value()};
    const Outcome outcome = co_await context_.session.setMaxima(maxima, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::SetMinPairBut_Click() {
    const AxisPair minima{page_.PMinScroll->value(), page_.TMinScroll->value()};
    const Outcome outcome = co_await context_.session.setMinima(minima, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> SpeedsAndLimits::SetTiltBut_Click() {
    const StepRange range{page_.TMinScroll->value(), page_.TMaxScroll->value()};
    const Outcome outcome = co_await context_.session.setTiltDrive(
        page_.TSafeScroll->value(), page_.TRampScroll->value(), range, Requester::Operator);
    outcome.raiseRangeFault();
}

// A value outside a bar's range stops the rest of the reply's display, as
// the receiver reports a fault of its own.
template <class Show>
void SpeedsAndLimits::showReply(Show show) {
    guarded(context_.state, "SerPort1_OnComm", [this, &show] {
        ControlsFromReply quiet(context_.state);
        show();
    });
}

void SpeedsAndLimits::watchReplies() {
    Session& session = context_.session;
    connect(&session, &Session::driveRatesReported, this, [this](const DriveRates& rates) {
        showReply([this, &rates] {
            const auto decel = [](int value) { return value > kMaxDecel ? 1 : value; };
            setScrollChecked(page_.PSafeScroll, rates.pan.safeSpeed);
            setScrollChecked(page_.PRampScroll, rates.pan.ramp);
            setScrollChecked(page_.PDecelScroll, decel(rates.pan.deceleration));
            setScrollChecked(page_.TSafeScroll, rates.tilt.safeSpeed);
            setScrollChecked(page_.TRampScroll, rates.tilt.ramp);
            setScrollChecked(page_.TDecelScroll, decel(rates.tilt.deceleration));
        });
    });
    connect(&session, &Session::rampsReported, this, [this](const AxisPair& ramps) {
        showReply([this, &ramps] {
            setScrollChecked(page_.PRampScroll, atLeastOne(ramps.pan));
            setScrollChecked(page_.TRampScroll, atLeastOne(ramps.tilt));
        });
    });
    connect(&session, &Session::topSpeedsReported, this,
            [this](TopSpeedSet set, const AxisPair& speeds) {
                const bool second = set == TopSpeedSet::Second;
                showReply([this, second, &speeds] {
                    setScrollChecked(second ? page_.PITopScroll : page_.PTopScroll, speeds.pan);
                    setScrollChecked(second ? page_.TITopScroll : page_.TTopScroll, speeds.tilt);
                });
            });
    connect(&session, &Session::panStepsReported, this, [this](const StepRange& range) {
        showReply([this, &range] { showSteps(page_.PMinScroll, page_.PMaxScroll, range); });
    });
    connect(&session, &Session::tiltStepsReported, this, [this](const StepRange& range) {
        showReply([this, &range] { showSteps(page_.TMinScroll, page_.TMaxScroll, range); });
    });
    connect(&session, &Session::maximaReported, this, [this](const AxisPair& maxima) {
        showReply([this, &maxima] {
            // A value below 16 is a range fault of the bar, which keeps its
            // value: the read-outs follow their bars, so they show what Set
            // would send.
            setScrollChecked(page_.PMaxScroll, atLeastOne(maxima.pan));
            setScrollChecked(page_.TMaxScroll, atLeastOne(maxima.tilt));
        });
    });
}

void SpeedsAndLimits::showSteps(QScrollBar* minimum, QScrollBar* maximum, const StepRange& range) {
    setScrollChecked(minimum, range.minimum);
    setScrollChecked(maximum, range.maximum);
}

}  // namespace halvex
