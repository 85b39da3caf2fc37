#include "positioning/alignment.h"

#include <QPushButton>

#include "console/handler_wiring.h"
#include "console/page_lock.h"
#include "positioning/angle_steps.h"
#include "views/pages/offsets_page.h"
#include "views/widgets/led_display.h"

namespace halvex {

namespace {
const char* const kHeading = "Angle Offsets Adjustment";
const char* const kNoIndex = "No Index";
const char* const kLooking = "Looking...";

void setCaption(QLabel* label, const char* text) {
    if (label != nullptr) {
        label->setText(QString::fromLatin1(text));
    }
}

QString unscaled(int value) {
    return QString::number(value);
}
}  // namespace

Alignment::Alignment(ConsoleContext& context, OffsetsPage& page, Surroundings surroundings,
                     QObject* parent)
    : QObject(parent), context_(context), page_(page), surroundings_(std::move(surroundings)) {
    connectControls();
    Session& session = context_.session;
    // While the tables that depend on the offsets are read again, the page
    // tabs are locked and the captions say so.
    connect(&session, &Session::tableReloadStarted, this, [this] {
        setCaption(page_.Label2_6, "Reloading Tables");
        tabsLocked_.emplace(surroundings_.pageTabs, surroundings_.panCaption,
                            surroundings_.tiltCaption);
    });
    connect(&session, &Session::tableReloadEnded, this, [this] {
        tabsLocked_.reset();
        setCaption(page_.Label2_6, kHeading);
    });
    connect(&session, &Session::angleOffsetsReported, this, [this](float pan, float tilt) {
        page_.PanCorLED->setValue(pan);
        page_.TiltCorLED->setValue(tilt);
    });
    connect(&session, &Session::centreReported, this, [this](int pan, int tilt) {
        page_.Label1_18->setText(unscaled(pan));
        page_.Label1_19->setText(unscaled(tilt));
    });
    connect(&session, &Session::encoderAlignmentReported, this, [this](int pan, int tilt) {
        page_.Label39->setText(unscaled(pan));
        page_.Label40->setText(unscaled(tilt));
    });
    connect(&session, &Session::homingStarted, this, [this] {
        page_.Pindex->setText(QString::fromLatin1(kLooking));
        page_.Tindex->setText(QString::fromLatin1(kLooking));
    });
    connect(&session, &Session::homingReported, this,
            [this](bool panFound, int pan, bool tiltFound, int tilt) {
                page_.Pindex->setText(panFound ? unscaled(pan) : QString::fromLatin1(kNoIndex));
                page_.Tindex->setText(tiltFound ? unscaled(tilt) : QString::fromLatin1(kNoIndex));
            });
}

void Alignment::connectControls() {
    FormState& state = context_.state;
    onClick(state, page_.SetCorBut, this, "SetCorBut_Click", &Alignment::SetCorBut_Click);
    onClick(state, page_.AlignCorBut, this, "AlignCorBut_Click", &Alignment::AlignCorBut_Click);
    onClick(state, page_.AlignCenBut, this, "AlignCenBut_Click", &Alignment::AlignCenBut_Click);
    onClick(state, page_.ZeroOffBut, this, "ZeroOffBut_Click", &Alignment::ZeroOffBut_Click);
    onClick(state, page_.GetAlignBut, this, "GetAlignBut_Click", &Alignment::GetAlignBut_Click);
    onClick(state, page_.GetCenBut, this, "GetCenBut_Click", &Alignment::GetCenBut_Click);
    onClick(state, page_.SetCenBut, this, "SetCenBut_Click", &Alignment::SetCenBut_Click);

    // "CL" clears a correction LED; nothing is sent.
    connect(page_.ClrLEDBut_2, &QPushButton::clicked, page_.PanCorLED,
            [this] { page_.PanCorLED->setValue(0.0); });
    connect(page_.ClrLEDBut_3, &QPushButton::clicked, page_.TiltCorLED,
            [this] { page_.TiltCorLED->setValue(0.0); });

    connectAngleSteps(state, page_.PanCorBut, page_.PanCorLED, fixedBound(-180.0f),
                      fixedBound(180.0f));
    connectAngleSteps(state, page_.TiltCorBut, page_.TiltCorLED, fixedBound(-90.0f),
                      fixedBound(90.0f));
}

QCoro::Task<> Alignment::SetCorBut_Click() {
    const Outcome outcome = co_await context_.session.setAngleOffsets(
        page_.PanCorLED->value(), page_.TiltCorLED->value(), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Alignment::AlignCorBut_Click() {
    const Outcome outcome = co_await context_.session.alignToCoordinates(
        page_.PanCorLED->value(), page_.TiltCorLED->value(), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Alignment::AlignCenBut_Click() {
    co_await context_.session.alignToCentre(Requester::Operator);
}

QCoro::Task<> Alignment::ZeroOffBut_Click() {
    co_await context_.session.zeroOffsets(Requester::Operator);
}

QCoro::Task<> Alignment::GetAlignBut_Click() {
    co_await context_.session.readAngleOffsets(Requester::Operator);
}

QCoro::Task<> Alignment::GetCenBut_Click() {
    co_await context_.session.readCentre(Requester::Operator);
}

QCoro::Task<> Alignment::SetCenBut_Click() {
    co_await context_.session.setCentre(Requester::Operator);
}

}  // namespace halvex
