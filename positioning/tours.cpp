#include "positioning/tours.h"

#include <QTimer>
#include <string>

#include "console/handler_wiring.h"
#include "positioning/tour_step_line.h"
#include "protocol/senders.h"
#include "views/pages/tours_page.h"

namespace halvex {

namespace {
constexpr Byte kCamera2Bit = 64;
constexpr Byte kCamera3Bit = 128;
}  // namespace

Tours::Tours(ConsoleContext& context, ToursPage& page, std::function<bool()> videoBlank,
             QObject* parent)
    : QObject(parent), context_(context), page_(page), videoBlank_(std::move(videoBlank)) {
    connectControls();
    WaitScroll_Change();
}

void Tours::connectControls() {
    FormState& state = context_.state;
    for (int i = 0; i < ToursPage::kTours; ++i) {
        onEvent(state, page_.TourSel[static_cast<std::size_t>(i)], &QRadioButton::clicked, this,
                "TourSel_Click", [this, i] { TourSel_Click(i); });
    }
    onEvent(state, page_.ScriptPreList, &QListWidget::itemDoubleClicked, this,
            "ScriptPreList_DblClick", [this] { ScriptPreList_DblClick(); });
    onEvent(state, page_.ScriptList, &QListWidget::itemDoubleClicked, this, "ScriptList_DblClick",
            [this] { ScriptList_DblClick(); });
    onEvent(state, page_.ExecScriptBut, &QPushButton::clicked, this, "ExecScriptBut_Click",
            [this] { ExecScriptBut_Click(); });
    onEvent(state, page_.ClearScriptBut, &QPushButton::clicked, this, "ClearScriptBut_Click",
            [this] { ClearScriptBut_Click(); });
    onEvent(state, page_.Command3, &QPushButton::clicked, this, "Command3_Click",
            [this] { Command3_Click(); });
    onEvent(state, page_.WaitScroll, &QScrollBar::valueChanged, this, "WaitScroll_Change",
            [this] { WaitScroll_Change(); });
}

void Tours::registerDecoders() {
    Receiver& receiver = context_.receiver;
    receiver.registerDecoder(kSelect, [this] { decodeCount(); });
    for (Byte code : {kGetStep, kAppend, kReplace}) {
        receiver.registerDecoder(code, [this] { decodeStep(); });
    }
    receiver.registerDecoder(kExecute, [this] { decodeExecute(); });
    receiver.registerDecoder(kClear, [this] { decodeClear(); });
    // Runs after the status lamps have worked out LimitFault for this reply.
    receiver.addRefreshHook([this] { checkTourEnd(); });
}

int Tours::checkedTour(int tour) {
    if (tour < 0 || tour >= ToursPage::kTours) {
        throw RangeFault(RangeFault::SubscriptOutOfRange,
                         "tour " + std::to_string(tour) + " has no selector");
    }
    return tour;
}

void Tours::showTourCaptions() {
    page_.ExecScriptBut->setText(QStringLiteral("Execute Tour %1").arg(selectedTour_ + 1));
    page_.ClearScriptBut->setText(QStringLiteral("Clear Tour %1").arg(selectedTour_ + 1));
}

void Tours::TourSel_Click(int index) {
    // The latest selection wins: a click while a tour loads makes the load
    // start over with it.
    selectedTour_ = index;
    loading_.run([this] { loadTour(selectedTour_); });
}

void Tours::loadTour(int index) {
    FormState& state = context_.state;
    page_.ScriptList->clear();
    showTourCaptions();
    const Byte tour = checkedByte(index);
    if (!sendAndAwaitReply(state, context_.link, {kSelect, tour}) || tourStepCount_ == 0) {
        return;
    }
    SendInProgressScope sending(state);
    // The count may be 255 for a corrupt tour: the unit is still asked for
    // every step it claims to have.
    const int count = tourStepCount_;
    for (int step = 0; step < count && !loading_.superseded(); ++step) {
        const FrameTicket request =
            sendHeld(state, context_.link, {kGetStep, tour, static_cast<Byte>(step)});
        if (!wentOut(request)) {
            return;  // the port is gone
        }
        if (!context_.link.awaitReply(request)) {
            return;  // the unit has stopped answering
        }
    }
}

void Tours::ScriptPreList_DblClick() {
    int cameraBits = 0;
    if (page_.CamSel[1]->isChecked()) {
        cameraBits = kCamera2Bit;
    } else if (page_.CamSel[2]->isChecked()) {
        cameraBits = kCamera3Bit;
    }
    const bool blank = videoBlank_ && videoBlank_();
    const Byte preset = checkedByte(page_.ScriptPreList->currentRow() + cameraBits);
    const Byte dwell = checkedByte(page_.WaitScroll->value() + (blank ? 128 : 0));
    const Byte tour = checkedByte(selectedTour_);

    if (page_.Option1[1]->isChecked()) {
        editAtSelection(kInsert, QStringLiteral("Could Not Insert Into Tour"),
                        QStringLiteral("You must select a position in the tour list to insert."),
                        preset, dwell);
    } else if (page_.Option1[2]->isChecked()) {
        editAtSelection(kReplace, QStringLiteral("Could Not Replace In The Tour"),
                        QStringLiteral("You must select a position in the tour list to replace."),
                        preset, dwell);
    } else {
        // The unit's step reply adds the line.
        sendMessage(context_.state, context_.link, {kAppend, tour, preset, dwell});
    }
}

void Tours::editAtSelection(Byte code, const QString& title, const QString& text, Byte preset,
                            Byte dwell) {
    const int selected = page_.ScriptList->currentRow();
    if (selected < 0) {
        context_.messages.exclamation(title, text);
        return;
    }
    const Byte tour = checkedByte(selectedTour_);
    sendAndAwaitReply(context_.state, context_.link,
                      {code, tour, checkedByte(selected), preset, dwell});
    TourSel_Click(selectedTour_);
}

void Tours::ScriptList_DblClick() {
    const Byte step = checkedByte(page_.ScriptList->currentRow());
    sendAndAwaitReply(context_.state, context_.link, {kDelete, checkedByte(selectedTour_), step});
    TourSel_Click(selectedTour_);
}

void Tours::ExecScriptBut_Click() {
    sendMessage(context_.state, context_.link, {kExecute, checkedByte(selectedTour_)});
}

void Tours::ClearScriptBut_Click() {
    sendMessage(context_.state, context_.link, {kClear, checkedByte(selectedTour_)});
}

void Tours::Command3_Click() {
    sendMessage(context_.state, context_.link, {kSelect, checkedByte(selectedTour_)});
}

void Tours::WaitScroll_Change() {
    const int seconds = page_.WaitScroll->value();
    page_.WaitLabel->setText(
        QStringLiteral("Dwell %1 %2")
            .arg(seconds)
            .arg(seconds == 1 ? QStringLiteral("Sec") : QStringLiteral("Secs")));
}

void Tours::decodeCount() {
    const ByteTable& rx = context_.state.RxBuffer;
    selectedTour_ = rx[1];
    tourStepCount_ = rx[2];
    page_.Label23->setText(QString::number(tourStepCount_));
}

void Tours::decodeStep() {
    const ByteTable& rx = context_.state.RxBuffer;
    const int step = rx[2];
    if (step == kNoStep) {
        return;
    }
    const QString line = tourStepLine(step, rx[3], rx[4], context_.status.UnitVariant());
    QListWidget* list = page_.ScriptList;
    if (rx[0] == kReplace && step < list->count()) {
        list->item(step)->setText(line);
    } else if (list->count() < kNoStep) {
        // A tour has at most 255 steps; a line that keeps sending step
        // replies must not grow the list without end.
        list->addItem(line);
    }
}

void Tours::decodeExecute() {
    const int tour = context_.state.RxBuffer[1];
    if (tour == 255) {
        context_.messages.exclamation(QStringLiteral("Execute Tour"),
                                      QStringLiteral("The tour is empty."));
        return;
    }
    selectedTour_ = tour;
    page_.ExecScriptBut->setText(QStringLiteral("Executing Tour %1").arg(tour + 1));
    tourExecuting_ = true;
    setEditingEnabled(false);
}

void Tours::decodeClear() {
    const int tour = checkedTour(context_.state.RxBuffer[1]);
    selectedTour_ = tour;
    page_.TourSel[static_cast<std::size_t>(tour)]->setChecked(true);
    page_.ScriptList->clear();
    // Selecting the tour reloads it; that waits for replies of its own, so it
    // runs after this receive event rather than inside it.
    QTimer::singleShot(0, this, [this, tour] {
        guarded(context_.state, "TourSel_Click", [&] { TourSel_Click(tour); });
    });
}

void Tours::setEditingEnabled(bool enabled) {
    page_.ScriptPreList->setEnabled(enabled);
    page_.ScriptList->setEnabled(enabled);
    page_.ClearScriptBut->setEnabled(enabled);
    for (QRadioButton* selector : page_.TourSel) {
        selector->setEnabled(enabled);
    }
}

void Tours::checkTourEnd() {
    if (tourExecuting_ && context_.status.LimitFault) {
        endTourDisplay();
    }
}

void Tours::endTourDisplay() {
    if (!tourExecuting_) {
        return;
    }
    page_.ExecScriptBut->setText(QStringLiteral("Execute Tour %1").arg(selectedTour_ + 1));
    tourExecuting_ = false;
    setEditingEnabled(true);
}

void Tours::prepareSelector() {
    page_.TourSel[static_cast<std::size_t>(checkedTour(selectedTour_))]->setChecked(true);
}

void Tours::refillPresetChoices() {
    QListWidget* choices = page_.ScriptPreList;
    const int previous = choices->currentRow();
    choices->clear();
    choices->addItems(context_.presets.listEntries());
    if (previous >= 0 && previous < choices->count()) {
        choices->setCurrentRow(previous);
    }
}

}  // namespace halvex
