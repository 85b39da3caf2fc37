#include "positioning/tours.h"

#include <QTimer>
#include <string>

#include "console/handler_wiring.h"
#include "positioning/tour_step_line.h"
#include "protocol/senders.h"
#include "protocol/vocabulary.h"
#include "views/pages/tours_page.h"

namespace halvex {

namespace {
// A message that names one tour.
template <class M>
std::vector<Byte> tourMessage(vocab::Field<M> tourField, Byte tour) {
    auto message = vocab::blank<M>();
    vocab::put(message, tourField, tour);
    return message;
}
}  // namespace

// A step message of M: the tour and the chosen step. The caller adds the
// step position where M has one.
template <class M, int At>
std::vector<Byte> Tours::stepMessage(vocab::Field<M> tourField, Byte tour,
                                     vocab::StepRecord<M, At> record, const StepChoice& choice) {
    using Step = decltype(record);
    auto message = tourMessage(tourField, tour);
    vocab::put(message, Step::kPresetByte, choice.presetByte);
    vocab::put(message, Step::kDwellByte, choice.dwellByte);
    return message;
}

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
                "TourSel_Click", [this, i] { return TourSel_Click(i); });
    }
    onEvent(state, page_.ScriptPreList, &QListWidget::itemDoubleClicked, this,
            "ScriptPreList_DblClick", [this] { return ScriptPreList_DblClick(); });
    onEvent(state, page_.ScriptList, &QListWidget::itemDoubleClicked, this, "ScriptList_DblClick",
            [this] { return ScriptList_DblClick(); });
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
    receiver.registerDecoder(vocab::TourStepCount::kCode, [this] { decodeCount(); });
    // Inserting and deleting reload the tour instead.
    for (Byte code : {vocab::TourStepRequest::kCode, vocab::AppendTourStep::kCode,
                      vocab::ReplaceTourStep::kCode}) {
        receiver.registerDecoder(code, [this] { decodeStep(); });
    }
    receiver.registerDecoder(vocab::TourStarted::kCode, [this] { decodeExecute(); });
    receiver.registerDecoder(vocab::TourCleared::kCode, [this] { decodeClear(); });
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

QCoro::Task<> Tours::TourSel_Click(int index) {
    // The latest selection wins: a click while a tour loads makes the load
    // start over with it.
    selectedTour_ = index;
    return loading_.run([this] { return loadTour(selectedTour_); });
}

QCoro::Task<> Tours::loadTour(int index) {
    FormState& state = context_.state;
    page_.ScriptList->clear();
    showTourCaptions();
    const Byte tour = checkedByte(index);
    const bool counted = co_await sendAndAwaitReply(
        state, context_.link, tourMessage(vocab::tour_step_count_request::kTour, tour));
    if (!counted || tourStepCount_ == 0) {
        co_return;
    }
    const SendInProgressScope sending(state);
    // The count may be 255 for a corrupt tour: the unit is still asked for
    // every step it claims to have.
    const int count = tourStepCount_;
    for (int step = 0; step < count && !loading_.superseded(); ++step) {
        auto message = tourMessage(vocab::tour_step_request::kTour, tour);
        vocab::put(message, vocab::tour_step_request::kStep, static_cast<Byte>(step));
        const FrameTicket request = co_await sendHeld(state, context_.link, message);
        if (!wentOut(request)) {
            co_return;  // the port is gone
        }
        const bool answered = co_await context_.link.awaitReply(request);
        if (!answered) {
            co_return;  // the unit has stopped answering
        }
    }
}

QCoro::Task<> Tours::ScriptPreList_DblClick() {
    // Every step record has the same bits; the camera selectors are in the
    // order of the step's camera numbers.
    using Step = vocab::append_tour_step::Step;
    std::uint32_t camera = 0;
    for (std::size_t selector = 1; selector < page_.CamSel.size(); ++selector) {
        if (page_.CamSel[selector]->isChecked()) {
            camera = static_cast<std::uint32_t>(selector);
            break;
        }
    }
    const bool blank = videoBlank_ && videoBlank_();
    // Added up as whole bytes, so a row of -1 (nothing chosen) with camera 2
    // goes out as the sum it makes and with the default camera is a range
    // fault, as ever.
    StepChoice choice;
    choice.presetByte = checkedByte(page_.ScriptPreList->currentRow() +
                                    static_cast<int>(vocab::inPlace(Step::kCamera, camera)));
    choice.dwellByte = checkedByte(page_.WaitScroll->value() +
                                   static_cast<int>(vocab::inPlace(Step::kBlank, blank ? 1 : 0)));
    const Byte tour = checkedByte(selectedTour_);

    if (page_.Option1[1]->isChecked()) {
        namespace m = vocab::insert_tour_step;
        co_await editAtSelection(
            m::kTour, m::kStep, m::Step{}, QStringLiteral("Could Not Insert Into Tour"),
            QStringLiteral("You must select a position in the tour list to insert."), choice);
    } else if (page_.Option1[2]->isChecked()) {
        namespace m = vocab::replace_tour_step;
        co_await editAtSelection(
            m::kTour, m::kStep, m::Step{}, QStringLiteral("Could Not Replace In The Tour"),
            QStringLiteral("You must select a position in the tour list to replace."), choice);
    } else {
        // The unit's step reply adds the line.
        namespace m = vocab::append_tour_step;
        sendMessage(context_.state, context_.link, stepMessage(m::kTour, tour, m::Step{}, choice));
    }
}

template <class M, int At>
QCoro::Task<> Tours::editAtSelection(vocab::Field<M> tourField, vocab::Field<M> stepField,
                                     vocab::StepRecord<M, At> record, QString title, QString text,
                                     StepChoice choice) {
    const int selected = page_.ScriptList->currentRow();
    if (selected < 0) {
        context_.messages.exclamation(title, text);
        co_return;
    }
    auto message = stepMessage(tourField, checkedByte(selectedTour_), record, choice);
    vocab::put(message, stepField, checkedByte(selected));
    co_await sendAndAwaitReply(context_.state, context_.link, message);
    co_await TourSel_Click(selectedTour_);
}

QCoro::Task<> Tours::ScriptList_DblClick() {
    const Byte step = checkedByte(page_.ScriptList->currentRow());
    namespace m = vocab::delete_tour_step;
    auto message = tourMessage(m::kTour, checkedByte(selectedTour_));
    vocab::put(message, m::kStep, step);
    co_await sendAndAwaitReply(context_.state, context_.link, message);
    co_await TourSel_Click(selectedTour_);
}

void Tours::ExecScriptBut_Click() {
    sendMessage(context_.state, context_.link,
                tourMessage(vocab::execute_tour::kTour, checkedByte(selectedTour_)));
}

void Tours::ClearScriptBut_Click() {
    sendMessage(context_.state, context_.link,
                tourMessage(vocab::clear_tour::kTour, checkedByte(selectedTour_)));
}

void Tours::Command3_Click() {
    sendMessage(context_.state, context_.link,
                tourMessage(vocab::tour_step_count_request::kTour, checkedByte(selectedTour_)));
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
    selectedTour_ = static_cast<int>(vocab::get(rx, vocab::tour_step_count::kTour));
    tourStepCount_ = static_cast<int>(vocab::get(rx, vocab::tour_step_count::kSteps));
    page_.Label23->setText(QString::number(tourStepCount_));
}

void Tours::decodeStep() {
    const ByteTable& rx = context_.state.RxBuffer;
    const auto step = static_cast<int>(vocab::get(rx, vocab::tour_step::kStep));
    if (step == vocab::tour_step::kNoStep) {
        return;
    }
    const QString line = tourStepLine(rx, context_.status.UnitVariant());
    QListWidget* list = page_.ScriptList;
    if (rx[0] == vocab::ReplaceTourStep::kCode && step < list->count()) {
        list->item(step)->setText(line);
    } else if (list->count() < vocab::tour_step::kNoStep) {
        // A tour has at most 255 steps; a line that keeps sending step
        // replies must not grow the list without end.
        list->addItem(line);
    }
}

void Tours::decodeExecute() {
    const auto tour =
        static_cast<int>(vocab::get(context_.state.RxBuffer, vocab::tour_started::kTour));
    if (tour == vocab::tour_started::kEmpty) {
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
    const int tour = checkedTour(
        static_cast<int>(vocab::get(context_.state.RxBuffer, vocab::tour_cleared::kTour)));
    selectedTour_ = tour;
    page_.TourSel[static_cast<std::size_t>(tour)]->setChecked(true);
    page_.ScriptList->clear();
    // Selecting the tour reloads it; that waits for replies of its own, so it
    // runs after this receive event rather than inside it.
    QTimer::singleShot(0, this, [this, tour] {
        guarded(context_.state, "TourSel_Click", [&] { return TourSel_Click(tour); });
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
