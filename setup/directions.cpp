#include "setup/directions.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/flag_scope.h"
#include "protocol/senders.h"
#include "setup/checked_scroll.h"
#include "views/pages/factory_page.h"

namespace halvex {

namespace {
constexpr Byte kRead = 0x80;
constexpr int kConRotationBit = 4;
constexpr int kInvertMountBit = 5;
const char* const kLooking = "Looking...";
}  // namespace

Directions::Directions(ConsoleContext& context, FactoryPage& page, IndexReadouts index,
                       QObject* parent)
    : QObject(parent), context_(context), page_(page), index_(index) {
    connectControls();
}

void Directions::connectControls() {
    FormState& state = context_.state;
    const auto bindCheck = [this, &state](QCheckBox* box, const char* name, int bit) {
        onEvent(state, box, &QCheckBox::clicked, this, name,
                [this, bit](bool checked) { DirectionCheck_Click(bit, checked); });
    };
    for (std::size_t i = 0; i < page_.RevCheck.size(); ++i) {
        bindCheck(page_.RevCheck[i], "RevCheck_Click", static_cast<int>(i));
    }
    bindCheck(page_.ConCheck, "ConCheck_Click", kConRotationBit);
    bindCheck(page_.InvCheck, "InvCheck_Click", kInvertMountBit);

    const auto bind = [this, &state](QPushButton* button, const char* name,
                                     void (Directions::*handler)()) {
        onEvent(state, button, &QPushButton::clicked, this, name,
                [this, handler] { (this->*handler)(); });
    };
    bind(page_.GetRevBut, "GetRevBut_Click", &Directions::GetRevBut_Click);
    bind(page_.SetRevBut, "SetRevBut_Click", &Directions::SetRevBut_Click);
    bind(page_.GetEncBut, "GetEncBut_Click", &Directions::GetEncBut_Click);
    bind(page_.SetEncBut, "SetEncBut_Click", &Directions::SetEncBut_Click);
    bind(page_.InitEncBut, "InitEncBut_Click", &Directions::InitEncBut_Click);
    bind(page_.EncHomeBut, "EncHomeBut_Click", &Directions::EncHomeBut_Click);
}

void Directions::registerDecoders() {
    context_.receiver.registerDecoder(kDirections, [this] { decodeDirections(); });
    context_.receiver.registerDecoder(kEncoders, [this] { decodeEncoders(); });
}

void Directions::registerReads(ReadHandlers& reads) {
    reads["GetRevBut"] = [this] { GetRevBut_Click(); };
    reads["GetEncBut"] = [this] { GetEncBut_Click(); };
}

void Directions::send(const std::vector<Byte>& message) {
    sendMessage(context_.state, context_.link, message);
}

void Directions::DirectionCheck_Click(int bit, bool checked) {
    directionFlags_ = checked ? SetBit(directionFlags_, bit) : ClearBit(directionFlags_, bit);
}

void Directions::GetRevBut_Click() {
    send({kDirections, kRead});
}

void Directions::SetRevBut_Click() {
    send({kDirections, directionFlags_});
}

void Directions::GetEncBut_Click() {
    send({kEncoders, kRead, 0, 0, 0, 0});
}

void Directions::SetEncBut_Click() {
    std::vector<Byte> message{kEncoders, 0x00};
    appendLowHigh(message, page_.PEncScroll);
    appendLowHigh(message, page_.TEncScroll);
    send(message);
}

void Directions::InitEncBut_Click() {
    if (procedureRunning_) {
        return;
    }
    if (!context_.messages.confirm(
            QStringLiteral("Critical Initial Alignment Checklist"),
            QStringLiteral(
                "To Prevent Potential Damage To The Unit Confirm Pan & Tilt Is At 0/0 Position, "
                "Normal/Reverse And Con Rotation Are Correct, And Hard Limits Are Properly Set "
                "Before Performing This Alignment! If You Are Not Sure Cancel This Procedure "
                "Now! Host Will Lose Communications During This Alignment!"))) {
        return;
    }
    runProcedure(kEncoderAlignment);
    context_.link.Timer4().setInterval(kAfterAlignmentWatchdogMs);
}

void Directions::EncHomeBut_Click() {
    if (procedureRunning_) {
        return;
    }
    if (!context_.messages.confirm(
            QStringLiteral("Critical Homing Cycle Checklist"),
            QStringLiteral(
                "To Prevent Potential Damage To The Unit Confirm Normal/Reverse And Con Rotation "
                "Are Correct And That Hard Limits Are Properly Set Before Performing This "
                "Alignment! If You Are Not Sure Cancel This Procedure! Host Will Lose "
                "Communications During This Alignment!"))) {
        return;
    }
    for (QLabel* readout : {index_.Pindex, index_.Tindex}) {
        if (readout != nullptr) {
            readout->setText(QString::fromLatin1(kLooking));
        }
    }
    // Unlike the initial alignment, the homing cycle leaves the long
    // watchdog interval in place afterwards.
    runProcedure(kHoming);
}

void Directions::runProcedure(Byte code) {
    FlagScope running(procedureRunning_);
    context_.link.Timer4().setInterval(kProcedureWatchdogMs);
    // The unit answers when the procedure ends. The line is held until
    // then: the unit hears nothing meanwhile, and jog messages piling up
    // unanswered would crowd the procedure's frame out of the replies the
    // link waits for.
    SendInProgressScope holding(context_.state);
    context_.link.awaitReply(sendHeld(context_.state, context_.link, {code}));
}

void Directions::decodeDirections() {
    ControlsFromReply quiet(context_.state);
    directionFlags_ = context_.state.RxBuffer[1];
    for (std::size_t i = 0; i < page_.RevCheck.size(); ++i) {
        page_.RevCheck[i]->setChecked(BitIsSet(directionFlags_, static_cast<int>(i)));
    }
    page_.ConCheck->setChecked(BitIsSet(directionFlags_, kConRotationBit));
    page_.InvCheck->setChecked(BitIsSet(directionFlags_, kInvertMountBit));
}

void Directions::decodeEncoders() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    // Low byte first on the line; Build16 takes the high byte first.
    setScrollChecked(page_.PEncScroll, Build16(rx[2], rx[1]));
    setScrollChecked(page_.TEncScroll, Build16(rx[4], rx[3]));
}

}  // namespace halvex
