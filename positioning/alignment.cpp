#include "positioning/alignment.h"

#include <QPushButton>

#include "console/handler_wiring.h"
#include "console/page_lock.h"
#include "console/position_encoding.h"
#include "positioning/angle_steps.h"
#include "protocol/senders.h"
#include "protocol/wait.h"
#include "views/pages/offsets_page.h"
#include "views/widgets/led_display.h"

namespace halvex {

namespace {
const char* const kHeading = "Angle Offsets Adjustment";
const char* const kNoIndex = "No Index";
constexpr int kSoftLimits = 4;

void setCaption(QLabel* label, const char* text) {
    if (label != nullptr) {
        label->setText(QString::fromLatin1(text));
    }
}

// While the console re-reads the tables that depend on the offsets, the page
// tabs are locked and the captions say so. Put back however the change ends.
class TableReloadLock {
  public:
    TableReloadLock(QLabel* heading, const Alignment::Surroundings& around)
        : heading_(heading), lock_(around.pageTabs, around.panCaption, around.tiltCaption) {
        setCaption(heading_, "Reloading Tables");
        letEventsRun();
    }
    ~TableReloadLock() { setCaption(heading_, kHeading); }
    TableReloadLock(const TableReloadLock&) = delete;
    TableReloadLock& operator=(const TableReloadLock&) = delete;

  private:
    QLabel* heading_;
    PageLock lock_;
};

QString unscaled(const ByteTable& rx, int first) {
    return QString::number(getPosition(rx, first));
}
}  // namespace

Alignment::Alignment(ConsoleContext& context, OffsetsPage& page, Surroundings surroundings,
                     QObject* parent)
    : QObject(parent), context_(context), page_(page), surroundings_(std::move(surroundings)) {
    connectControls();
}

void Alignment::connectControls() {
    FormState& state = context_.state;
    const auto bind = [this, &state](QPushButton* button, const char* name,
                                     void (Alignment::*handler)()) {
        onEvent(state, button, &QPushButton::clicked, this, name,
                [this, handler] { (this->*handler)(); });
    };
    bind(page_.SetCorBut, "SetCorBut_Click", &Alignment::SetCorBut_Click);
    bind(page_.AlignCorBut, "AlignCorBut_Click", &Alignment::AlignCorBut_Click);
    bind(page_.AlignCenBut, "AlignCenBut_Click", &Alignment::AlignCenBut_Click);
    bind(page_.ZeroOffBut, "ZeroOffBut_Click", &Alignment::ZeroOffBut_Click);
    bind(page_.GetAlignBut, "GetAlignBut_Click", &Alignment::GetAlignBut_Click);
    bind(page_.GetCenBut, "GetCenBut_Click", &Alignment::GetCenBut_Click);
    bind(page_.SetCenBut, "SetCenBut_Click", &Alignment::SetCenBut_Click);

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
    for (Byte code : {kSetOffsets, kAlignCenter, kAlignCoordinates, kZeroOffsets, kGetOffsets}) {
        receiver.registerDecoder(code, [this] { decodeOffsets(); });
    }
    receiver.registerDecoder(kGetCenter, [this] { decodeCenter(); });
    receiver.registerDecoder(kSetCenter, [this] { decodeCenter(); });
    receiver.registerDecoder(kEncoderAlignment, [this] { decodeEncoderAlignment(); });
    receiver.registerDecoder(kHoming, [this] { decodeHoming(); });
}

void Alignment::SetCorBut_Click() {
    changeOffsets(kSetOffsets, true);
}

void Alignment::AlignCorBut_Click() {
    changeOffsets(kAlignCoordinates, true);
}

void Alignment::AlignCenBut_Click() {
    changeOffsets(kAlignCenter, false);
}

void Alignment::ZeroOffBut_Click() {
    changeOffsets(kZeroOffsets, false);
}

void Alignment::changeOffsets(Byte code, bool withCoordinates) {
    FormState& state = context_.state;
    Link& link = context_.link;
    // Encoded first: a value that cannot be sent stops the change before
    // anything is locked or sent.
    std::int32_t pan = 0;
    std::int32_t tilt = 0;
    if (withCoordinates) {
        pan = encodePosition(page_.PanCorLED->value());
        tilt = encodePosition(page_.TiltCorLED->value());
    }
    TableReloadLock lock(page_.Label2_6, surroundings_);
    FrameTicket change;
    {
        SendInProgressScope sending(state);
        state.TxBuffer[0] = code;
        int count = 1;
        if (withCoordinates) {
            putPosition(state.TxBuffer, 1, pan);
            putPosition(state.TxBuffer, 4, tilt);
            count = 7;
        }
        change = link.SendFrame(count);
    }
    if (!wentOut(change)) {
        return;  // the port is gone
    }
    link.awaitReply(change);

    // The soft limits and presets are held in angle terms, which the new
    // offsets have shifted.
    for (int index = 0; index < kSoftLimits; ++index) {
        sendAndAwaitReply(state, link, {kSoftLimit, static_cast<Byte>(index | 0x80)});
    }
    emit context_.events.presetsReloadRequested();
    context_.status.SyncDesiredPending = true;
}

void Alignment::GetAlignBut_Click() {
    sendMessage(context_.state, context_.link, {kGetOffsets});
}

void Alignment::GetCenBut_Click() {
    sendMessage(context_.state, context_.link, {kGetCenter});
}

void Alignment::SetCenBut_Click() {
    sendMessage(context_.state, context_.link, {kSetCenter});
}

void Alignment::decodeOffsets() {
    const ByteTable& rx = context_.state.RxBuffer;
    const float panAngleOffset = static_cast<float>(getPosition(rx, 1)) / 100.0f;
    const float tiltAngleOffset = static_cast<float>(getPosition(rx, 4)) / 100.0f;
    page_.PanCorLED->setValue(panAngleOffset);
    page_.TiltCorLED->setValue(tiltAngleOffset);
}

void Alignment::decodeCenter() {
    const ByteTable& rx = context_.state.RxBuffer;
    page_.Label1_18->setText(unscaled(rx, 1));
    page_.Label1_19->setText(unscaled(rx, 4));
}

void Alignment::decodeEncoderAlignment() {
    const ByteTable& rx = context_.state.RxBuffer;
    page_.Label39->setText(unscaled(rx, 1));
    page_.Label40->setText(unscaled(rx, 4));
}

void Alignment::decodeHoming() {
    const ByteTable& rx = context_.state.RxBuffer;
    const Byte flags = rx[1];
    page_.Pindex->setText(BitIsSet(flags, 0) ? unscaled(rx, 2) : QString::fromLatin1(kNoIndex));
    page_.Tindex->setText(BitIsSet(flags, 1) ? unscaled(rx, 5) : QString::fromLatin1(kNoIndex));
}

}  // namespace halvex
