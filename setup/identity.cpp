#include "setup/identity.h"

#include <QDate>
#include <QLocale>
#include <algorithm>
#include <string>

#include "console/controls_from_reply.h"
#include "console/handler_wiring.h"
#include "setup/checked_scroll.h"
#include "views/pages/factory_page.h"
#include "views/pages/setup_page.h"

namespace halvex {

namespace {
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
    Session& session = context_.session;
    connect(&session, &Session::unitAddressReported, this, &Identity::showAddress);
    connect(&session, &Session::commTimeoutReported, this, &Identity::showCommTimeout);
    connect(&session, &Session::heaterModeReported, this, &Identity::showHeaterMode);
    connect(&session, &Session::firmwareReported, this, &Identity::showFirmware);
    // Another part of the console (Find Units) chose the unit: the bar
    // follows, and its change asks for what is already so.
    connect(&session, &Session::talkingTo, this, [this](int unitId) {
        if (unitId <= page_.CurrIDScroll->maximum()) {
            page_.CurrIDScroll->setValue(unitId);
        }
    });
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
                [this, i](bool on) { return HeatOp_Click(i, on); });
    }
}

void Identity::CurrIDScroll_Change(int value) {
    context_.session.talkTo(value);
}

QCoro::Task<> Identity::SetIDBut_Click() {
    const Outcome outcome = co_await context_.session.setUnitAddress(page_.IDScroll->value(), false,
                                                                     Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Identity::BSetIDBut_Click() {
    const Outcome outcome = co_await context_.session.setUnitAddress(page_.IDScroll->value(), true,
                                                                     Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Identity::GetIDBut_Click() {
    co_await context_.session.readUnitAddress(Requester::Operator);
}

QCoro::Task<> Identity::SetTOBut_Click() {
    const Outcome outcome =
        co_await context_.session.setCommTimeout(page_.TOScroll->value(), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Identity::GetTOBut_Click() {
    co_await context_.session.readCommTimeout(Requester::Operator);
}

QCoro::Task<> Identity::HeatOp_Click(int index, bool on) {
    if (!on || !HeaterEcho) {
        co_return;
    }
    const Outcome outcome = co_await context_.session.setHeaterMode(index, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Identity::GetHeatBut_Click() {
    co_await context_.session.readHeaterMode(Requester::Operator);
}

QCoro::Task<> Identity::RevBut_Click() {
    co_await context_.session.readFirmware(Requester::Operator);
}

void Identity::PassEntBut_Click() {
    // Anything else: no message, no count, the text stays.
    if (factory_.PassText->text().compare(QString::fromLatin1(kFactoryAccessCode),
                                          Qt::CaseInsensitive) == 0) {
        factory_.PassFrame->hide();
    }
}

// Each reply is shown as it comes in, so a value the page cannot show is a
// fault of the receive handler.
void Identity::showAddress(int address) {
    guarded(context_.state, "SerPort1_OnComm", [&] {
        ControlsFromReply quiet(context_.state);
        setScrollChecked(page_.IDScroll, address);
    });
}

void Identity::showCommTimeout(int seconds) {
    guarded(context_.state, "SerPort1_OnComm", [&] {
        ControlsFromReply quiet(context_.state);
        page_.TOScroll->setValue(std::min(seconds, page_.TOScroll->maximum()));
        page_.TOLabel->setText(QString::number(page_.TOScroll->value()));
    });
}

void Identity::showHeaterMode(int mode) {
    guarded(context_.state, "SerPort1_OnComm", [&] {
        ControlsFromReply quiet(context_.state);
        HeaterEchoOff quietHeater(HeaterEcho);
        page_.HeatOp.at(static_cast<std::size_t>(mode))->setChecked(true);
    });
}

void Identity::showFirmware(const FirmwareRevision& revision) {
    guarded(context_.state, "SerPort1_OnComm",
            [&] { page_.RevLabel->setText(revisionCaption(revision)); });
}

QString Identity::revisionCaption(const FirmwareRevision& revision) {
    const QDate date(revision.year, revision.month, revision.day);
    if (!date.isValid()) {
        throw RangeFault(RangeFault::Overflow, "invalid date " + std::to_string(revision.day) +
                                                   "/" + std::to_string(revision.month) + "/" +
                                                   std::to_string(revision.year));
    }
    return QStringLiteral("Rev %1.%2  %3")
        .arg(revision.major)
        .arg(revision.minor, 2, 10, QLatin1Char('0'))
        .arg(QLocale::system().toString(date, QLocale::ShortFormat));
}

}  // namespace halvex
