#include "setup/identity.h"

#include <QDate>
#include <QLocale>
#include <string>

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "setup/checked_scroll.h"
#include "views/pages/factory_page.h"
#include "views/pages/setup_page.h"

namespace halvex {

namespace {
namespace v = vocab;

// A one-field message with its value.
template <class M>
std::vector<Byte> messageWith(v::Field<M> field, std::uint32_t value) {
    std::vector<Byte> message = v::blank<M>();
    v::put(message, field, value);
    return message;
}
const char* const kFactoryAccessCode = "7214";

// HeaterEcho is the other way round from a plain flag: true except while a
// reply is shown.
class HeaterEchoOff {
  public:
    explicit HeaterEchoOff(bool& echo) : echo_(echo) { echo_ = false; }
    ~HeaterEchoOff() { echo_ = true; }
    HeaterEchoOff(const HeaterEchoOff&) = delete;
    HeaterEchoOff& operator=(const HeaterEchoOff&) = delete;

  private:
    bool& echo_;
};
}  // namespace

Identity::Identity(ConsoleContext& context, SetupPage& page, FactoryPage& factory, QObject* parent)
    : QObject(parent), context_(context), page_(page), factory_(factory) {
    connectControls();
}

void Identity::connectControls() {
    FormState& state = context_.state;
    onClick(state, page_.SetIDBut, this, "SetIDBut_Click", &Identity::SetIDBut_Click);
    onClick(state, page_.BSetIDBut, this, "BSetIDBut_Click", &Identity::BSetIDBut_Click);
    onClick(state, page_.GetIDBut, this, "GetIDBut_Click", &Identity::GetIDBut_Click);
    onClick(state, page_.SetTOBut, this, "SetTOBut_Click", &Identity::SetTOBut_Click);
    onClick(state, page_.GetTOBut, this, "GetTOBut_Click", &Identity::GetTOBut_Click);
    onClick(state, page_.GetHeatBut, this, "GetHeatBut_Click", &Identity::GetHeatBut_Click);
    onClick(state, page_.RevBut, this, "RevBut_Click", &Identity::RevBut_Click);
    onClick(state, factory_.PassEntBut, this, "PassEntBut_Click", &Identity::PassEntBut_Click);
    // The address changes when the bar has come to rest, as a scroll bar's
    // change event does: a dragged thumb passes over other units' addresses,
    // and on a shared line each of them would get jog messages.
    onEvent(state, page_.CurrIDScroll, &QScrollBar::valueChanged, this, "CurrIDScroll_Change",
            [this](int value) {
                if (!page_.CurrIDScroll->isSliderDown()) {
                    CurrIDScroll_Change(value);
                }
            });
    onEvent(state, page_.CurrIDScroll, &QScrollBar::sliderReleased, this, "CurrIDScroll_Change",
            [this] { CurrIDScroll_Change(page_.CurrIDScroll->value()); });
    for (int i = 0; i < static_cast<int>(page_.HeatOp.size()); ++i) {
        onEvent(state, page_.HeatOp[i], &QRadioButton::toggled, this, "HeatOp_Click",
                [this, i](bool on) {
                    if (on) {
                        HeatOp_Click(i);
                    }
                });
    }
}

void Identity::registerDecoders() {
    Receiver& receiver = context_.receiver;
    receiver.registerDecoder(v::UnitAddress::kCode, [this] { decodeAddress(); });
    receiver.registerDecoder(v::CommTimeout::kCode, [this] { decodeCommTimeout(); });
    receiver.registerDecoder(v::Heater::kCode, [this] { decodeHeater(); });
    receiver.registerDecoder(v::Firmware::kCode, [this] { decodeFirmware(); });
}

void Identity::registerReads(ReadHandlers& reads) {
    reads["GetTOBut"] = [this] { GetTOBut_Click(); };
    reads["GetHeatBut"] = [this] { GetHeatBut_Click(); };
    reads["RevBut"] = [this] { RevBut_Click(); };
}

void Identity::send(const std::vector<Byte>& message) {
    sendMessage(context_.state, context_.link, message);
}

void Identity::CurrIDScroll_Change(int value) {
    // The next frame goes to this unit, and both checks start from it.
    context_.state.UnitId = checkedByte(value);
}

void Identity::SetIDBut_Click() {
    send(messageWith(v::unit_address::kId, byteOf(page_.IDScroll)));
}

void Identity::BSetIDBut_Click() {
    const Byte id = byteOf(page_.IDScroll);
    context_.state.AddressOverride = kBroadcast;
    send(messageWith(v::unit_address::kId, id));
}

void Identity::GetIDBut_Click() {
    context_.state.AddressOverride = kBroadcast;
    send(v::readRequest<v::UnitAddress>());
}

void Identity::SetTOBut_Click() {
    send(messageWith(v::comm_timeout::kSeconds, byteOf(page_.TOScroll)));
}

void Identity::GetTOBut_Click() {
    send(v::readRequest<v::CommTimeout>());
}

void Identity::HeatOp_Click(int index) {
    if (!HeaterEcho) {
        return;
    }
    send(messageWith(v::heater::kModeByte, checkedByte(index)));
}

void Identity::GetHeatBut_Click() {
    send(v::readRequest<v::Heater>());
}

void Identity::RevBut_Click() {
    send(v::blank<v::FirmwareRequest>());
}

void Identity::PassEntBut_Click() {
    // Anything else: no message, no count, the text stays.
    if (factory_.PassText->text().compare(QString::fromLatin1(kFactoryAccessCode),
                                          Qt::CaseInsensitive) == 0) {
        factory_.PassFrame->hide();
    }
}

void Identity::decodeAddress() {
    ControlsFromReply quiet(context_.state);
    setScrollChecked(page_.IDScroll, v::get(context_.state.RxBuffer, v::unit_address::kId));
}

void Identity::decodeCommTimeout() {
    ControlsFromReply quiet(context_.state);
    const auto seconds =
        static_cast<int>(v::get(context_.state.RxBuffer, v::comm_timeout::kSeconds));
    page_.TOScroll->setValue(seconds > page_.TOScroll->maximum() ? page_.TOScroll->maximum()
                                                                 : seconds);
    page_.TOLabel->setText(QString::number(page_.TOScroll->value()));
}

void Identity::decodeHeater() {
    ControlsFromReply quiet(context_.state);
    HeaterEchoOff quietHeater(HeaterEcho);
    page_.HeatOp[v::get(context_.state.RxBuffer, v::heater::kMode)]->setChecked(true);
}

void Identity::decodeFirmware() {
    const ByteTable& rx = context_.state.RxBuffer;
    const auto byte = [&rx](v::Field<v::Firmware> field) {
        return static_cast<Byte>(v::get(rx, field));
    };
    page_.RevLabel->setText(revisionCaption(byte(v::firmware::kMajor), byte(v::firmware::kMinor),
                                            byte(v::firmware::kDay), byte(v::firmware::kMonth),
                                            byte(v::firmware::kYear)));
}

QString Identity::revisionCaption(Byte major, Byte minor, Byte day, Byte month, Byte year) {
    const QDate date(v::firmware::kYearBias + year, month, day);
    if (!date.isValid()) {
        throw RangeFault(RangeFault::Overflow, "invalid date " + std::to_string(day) + "/" +
                                                   std::to_string(month) + "/" +
                                                   std::to_string(v::firmware::kYearBias + year));
    }
    return QStringLiteral("Rev %1.%2  %3")
        .arg(major)
        .arg(minor, 2, 10, QLatin1Char('0'))
        .arg(QLocale::system().toString(date, QLocale::ShortFormat));
}

}  // namespace halvex
