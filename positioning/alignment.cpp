#include "positioning/alignment.h"

#include <QPushButton>

#include "console/handler_wiring.h"
#include "console/page_lock.h"
#include "positioning/angle_steps.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "protocol/wait.h"
#include "session/position_encoding.h"
#include "views/pages/offsets_page.h"
#include "views/widgets/led_display.h"

namespace halvex {

namespace {
const char* const kHeading = "Angle Offsets Adjustment";
const char* const kNoIndex = "No Index";

void setCaption(QLabel* label, const char* text) {
    if (label != nullptr) {
        label->setText(QString::fromLatin1(text));
    }
}

// While the console re-reads the tables that depend on the offsets, the page
// tabs are locked and the captions say so, and programs' moves are refused.
// Put back however the change ends.
class TableReloadLock {
  public:
    TableReloadLock(Session& session, QLabel* heading, const Alignment::Surroundings& around)
        : heading_(heading),
          sessionLock_(session),
          lock_(around.pageTabs, around.panCaption, around.tiltCaption) {
        setCaption(heading_, "Reloading Tables");
    }
    ~TableReloadLock() { setCaption(heading_, kHeading); }
    TableReloadLock(const TableReloadLock&) = delete;
    TableReloadLock& operator=(const TableReloadLock&) = delete;

  private:
    QLabel* heading_;
    Session::PagesLock sessionLock_;
    PageLock lock_;
};

template <class M>
QString unscaled(const ByteTable& rx, vocab::Field<M> field) {
    return QString::number(getPosition(rx, field));
}

// An offset command that carries the page's pan and tilt. Encoded first: a
// value that cannot be sent stops the change before anything is locked or
// sent.
template <class M, int At>
std::vector<Byte> withCoordinates(vocab::PanTilt<M, At> fields, const OffsetsPage& page) {
    using Fields = decltype(fields);
    const std::int32_t pan = encodePosition(page.PanCorLED->value());
    const std::int32_t tilt = encodePosition(page.TiltCorLED->value());
    auto command = vocab::blank<M>();
    vocab::put(command, Fields::kPan, static_cast<std::uint32_t>(pan));
    vocab::put(command, Fields::kTilt, static_cast<std::uint32_t>(tilt));
    return command;
}
}  // namespace

Alignment::Alignment(ConsoleContext& context, OffsetsPage& page, Surroundings surroundings,
                     QObject* parent)
    : QObject(parent), context_(context), page_(page), surroundings_(std::move(surroundings)) {
    connectControls();
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

void Alignment::registerDecoders() {
    Receiver& receiver = context_.receiver;
    // The five offset commands are all answered with the angle offsets.
    for (Byte code : {vocab::SetAngleOffsets::kCode, vocab::AlignToCentre::kCode,
                      vocab::AlignToCoordinates::kCode, vocab::ZeroOffsets::kCode,
                      vocab::OffsetsRequest::kCode}) {
        receiver.registerDecoder(code, [this] { decodeOffsets(); });
    }
    receiver.registerDecoder(vocab::CentreRequest::kCode, [this] { decodeCenter(); });
    receiver.registerDecoder(vocab::SetCentre::kCode, [this] { decodeCenter(); });
    receiver.registerDecoder(vocab::EncoderAlignmentFinished::kCode,
                             [this] { decodeEncoderAlignment(); });
    receiver.registerDecoder(vocab::HomingCycleFinished::kCode, [this] { decodeHoming(); });
}

QCoro::Task<> Alignment::SetCorBut_Click() {
    return changeOffsets(withCoordinates(vocab::set_angle_offsets{}, page_));
}

QCoro::Task<> Alignment::AlignCorBut_Click() {
    return changeOffsets(withCoordinates(vocab::align_to_coordinates{}, page_));
}

QCoro::Task<> Alignment::AlignCenBut_Click() {
    return changeOffsets(vocab::blank<vocab::AlignToCentre>());
}

QCoro::Task<> Alignment::ZeroOffBut_Click() {
    return changeOffsets(vocab::blank<vocab::ZeroOffsets>());
}

QCoro::Task<> Alignment::changeOffsets(std::vector<Byte> command) {
    FormState& state = context_.state;
    Link& link = context_.link;
    const TableReloadLock lock(context_.session, page_.Label2_6, surroundings_);
    co_await letEventsRun(state);
    const FrameTicket change = co_await sendMessage(state, link, command);
    if (!wentOut(change)) {
        co_return;  // the port is gone
    }
    co_await link.awaitReply(change);

    // The soft limits and presets are held in angle terms, which the new
    // offsets have shifted.
    for (int index = 0; index < vocab::soft_limit::kLimits; ++index) {
        auto request = vocab::readRequest<vocab::SoftLimit>();
        vocab::put(request, vocab::soft_limit::kLimit, static_cast<Byte>(index));
        co_await sendAndAwaitReply(state, link, request);
    }
    co_await context_.events.presetsReload();
    context_.status.SyncDesiredPending = true;
}

void Alignment::GetAlignBut_Click() {
    sendMessage(context_.state, context_.link, vocab::blank<vocab::OffsetsRequest>());
}

void Alignment::GetCenBut_Click() {
    sendMessage(context_.state, context_.link, vocab::blank<vocab::CentreRequest>());
}

void Alignment::SetCenBut_Click() {
    sendMessage(context_.state, context_.link, vocab::blank<vocab::SetCentre>());
}

void Alignment::decodeOffsets() {
    const ByteTable& rx = context_.state.RxBuffer;
    using Offsets = vocab::angle_offsets;
    const float panAngleOffset = static_cast<float>(getPosition(rx, Offsets::kPan)) / 100.0f;
    const float tiltAngleOffset = static_cast<float>(getPosition(rx, Offsets::kTilt)) / 100.0f;
    page_.PanCorLED->setValue(panAngleOffset);
    page_.TiltCorLED->setValue(tiltAngleOffset);
}

void Alignment::decodeCenter() {
    const ByteTable& rx = context_.state.RxBuffer;
    page_.Label1_18->setText(unscaled(rx, vocab::centre_position::kPan));
    page_.Label1_19->setText(unscaled(rx, vocab::centre_position::kTilt));
}

void Alignment::decodeEncoderAlignment() {
    const ByteTable& rx = context_.state.RxBuffer;
    page_.Label39->setText(unscaled(rx, vocab::encoder_alignment_finished::kPan));
    page_.Label40->setText(unscaled(rx, vocab::encoder_alignment_finished::kTilt));
}

void Alignment::decodeHoming() {
    const ByteTable& rx = context_.state.RxBuffer;
    namespace h = vocab::homing_cycle_finished;
    const auto flags = static_cast<Byte>(vocab::get(rx, h::kIndex));
    page_.Pindex->setText(vocab::isSet(flags, h::kPanIndexFound) ? unscaled(rx, h::kPan)
                                                                 : QString::fromLatin1(kNoIndex));
    page_.Tindex->setText(vocab::isSet(flags, h::kTiltIndexFound) ? unscaled(rx, h::kTilt)
                                                                  : QString::fromLatin1(kNoIndex));
}

}  // namespace halvex
