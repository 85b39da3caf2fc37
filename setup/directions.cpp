#include "setup/directions.h"

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/flag_scope.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "setup/checked_scroll.h"
#include "views/pages/factory_page.h"

namespace halvex {

namespace {
namespace v = vocab;
namespace directions = vocab::directions;
// RevCheck(0..3).
const std::array<v::Bit<v::Directions>, 4> kReverseBits = {
    directions::kPanMotorReverse, directions::kTiltMotorReverse, directions::kPanResolverInvert,
    directions::kTiltResolverInvert};
const char* const kLooking = "Looking...";
}  // namespace

Directions::Directions(ConsoleContext& context, FactoryPage& page, IndexReadouts index,
                       QObject* parent)
    : QObject(parent), context_(context), page_(page), index_(index) {
    connectControls();
}

void Directions::connectControls() {
    FormState& state = context_.state;
    const auto bindCheck = [this, &state](QCheckBox* box, const char* name,
                                          v::Bit<v::Directions> bit) {
        onEvent(state, box, &QCheckBox::clicked, this, name,
                [this, bit](bool checked) { DirectionCheck_Click(bit.bit, checked); });
    };
    for (std::size_t i = 0; i < page_.RevCheck.size(); ++i) {
        bindCheck(page_.RevCheck[i], "RevCheck_Click", kReverseBits.at(i));
    }
    bindCheck(page_.ConCheck, "ConCheck_Click", directions::kContinuousRotation);
    bindCheck(page_.InvCheck, "InvCheck_Click", directions::kInvertedMount);

    onClick(state, page_.GetRevBut, this, "GetRevBut_Click", &Directions::GetRevBut_Click);
    onClick(state, page_.SetRevBut, this, "SetRevBut_Click", &Directions::SetRevBut_Click);
    onClick(state, page_.GetEncBut, this, "GetEncBut_Click", &Directions::GetEncBut_Click);
    onClick(state, page_.SetEncBut, this, "SetEncBut_Click", &Directions::SetEncBut_Click);
    onClick(state, page_.InitEncBut, this, "InitEncBut_Click", &Directions::InitEncBut_Click);
    onClick(state, page_.EncHomeBut, this, "EncHomeBut_Click", &Directions::EncHomeBut_Click);
}

void Directions::registerDecoders() {
    context_.receiver.registerDecoder(v::Directions::kCode, [this] { decodeDirections(); });
    context_.receiver.registerDecoder(v::EncodersReply::kCode, [this] { decodeEncoders(); });
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
    send(v::readRequest<v::Directions>());
}

void Directions::SetRevBut_Click() {
    std::vector<Byte> message = v::blank<v::Directions>();
    v::put(message, directions::kBits, directionFlags_);
    send(message);
}

void Directions::GetEncBut_Click() {
    send(v::readRequest<v::Encoders>());
}

void Directions::SetEncBut_Click() {
    std::vector<Byte> message = v::blank<v::Encoders>();
    putWord(message, v::encoders::kPan, page_.PEncScroll);
    putWord(message, v::encoders::kTilt, page_.TEncScroll);
    send(message);
}

QCoro::Task<> Directions::InitEncBut_Click() {
    if (procedureRunning_) {
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
    co_await runProcedure(v::blank<v::EncoderAlignment>());
    context_.link.Timer4().setInterval(kAfterAlignmentWatchdogMs);
}

QCoro::Task<> Directions::EncHomeBut_Click() {
    if (procedureRunning_) {
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
    for (QLabel* readout : {index_.Pindex, index_.Tindex}) {
        if (readout != nullptr) {
            readout->setText(QString::fromLatin1(kLooking));
        }
    }
    // Unlike the initial alignment, the homing cycle leaves the long
    // watchdog interval in place afterwards.
    co_await runProcedure(v::blank<v::HomingCycle>());
}

QCoro::Task<> Directions::runProcedure(std::vector<Byte> command) {
    const FlagScope running(procedureRunning_);
    context_.link.Timer4().setInterval(kProcedureWatchdogMs);
    // The unit answers when the procedure ends. The line is held until
    // then: the unit hears nothing meanwhile, and jog messages piling up
    // unanswered would crowd the procedure's frame out of the replies the
    // link waits for.
    const SendInProgressScope holding(context_.state);
    const FrameTicket procedure = co_await sendHeld(context_.state, context_.link, command);
    co_await context_.link.awaitReply(procedure);
}

void Directions::decodeDirections() {
    ControlsFromReply quiet(context_.state);
    directionFlags_ = static_cast<Byte>(v::get(context_.state.RxBuffer, directions::kBits));
    for (std::size_t i = 0; i < page_.RevCheck.size(); ++i) {
        page_.RevCheck[i]->setChecked(v::isSet(directionFlags_, kReverseBits.at(i)));
    }
    page_.ConCheck->setChecked(v::isSet(directionFlags_, directions::kContinuousRotation));
    page_.InvCheck->setChecked(v::isSet(directionFlags_, directions::kInvertedMount));
}

void Directions::decodeEncoders() {
    ControlsFromReply quiet(context_.state);
    const ByteTable& rx = context_.state.RxBuffer;
    // The console's own reading of a count: Build16, high byte first.
    const auto count = [&rx](v::Field<v::EncodersReply> field) {
        const std::uint32_t word = v::get(rx, field);
        return Build16(static_cast<Byte>(word >> 8), static_cast<Byte>(word));
    };
    setScrollChecked(page_.PEncScroll, count(v::encoders_reply::kPan));
    setScrollChecked(page_.TEncScroll, count(v::encoders_reply::kTilt));
}

}  // namespace halvex
