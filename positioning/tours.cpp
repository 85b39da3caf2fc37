#include "positioning/tours.h"

#include <string>

#include "console/handler_wiring.h"
#include "positioning/tour_step_line.h"
#include "views/pages/tours_page.h"

namespace halvex {

Tours::Tours(ConsoleContext& context, ToursPage& page, std::function<bool()> videoBlank,
             QObject* parent)
    : QObject(parent), context_(context), page_(page), videoBlank_(std::move(videoBlank)) {
    connectControls();
    WaitScroll_Change();
    Session& session = context_.session;
    connect(&session, &Session::tourLoadStarted, this, [this] {
        page_.ScriptList->clear();
        showTourCaptions();
    });
    connect(&session, &Session::tourStepCountReported, this,
            [this](int, int count) { page_.Label23->setText(QString::number(count)); });
    connect(&session, &Session::tourStepReported, this, &Tours::showStep);
    connect(&session, &Session::tourStarted, this, &Tours::showExecuting);
    connect(&session, &Session::tourFoundEmpty, this, [this] {
        context_.messages.exclamation(QStringLiteral("Execute Tour"),
                                      QStringLiteral("The tour is empty."));
    });
    connect(&session, &Session::tourCleared, this, &Tours::showCleared);
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
            [this] { return ExecScriptBut_Click(); });
    onEvent(state, page_.ClearScriptBut, &QPushButton::clicked, this, "ClearScriptBut_Click",
            [this] { return ClearScriptBut_Click(); });
    onEvent(state, page_.Command3, &QPushButton::clicked, this, "Command3_Click",
            [this] { return Command3_Click(); });
    onEvent(state, page_.WaitScroll, &QScrollBar::valueChanged, this, "WaitScroll_Change",
            [this] { WaitScroll_Change(); });
}

void Tours::registerTourEndCheck() {
    // Runs after the status lamps have worked out LimitFault for this reply.
    context_.receiver.addRefreshHook([this] { checkTourEnd(); });
}

int Tours::SelectedTour() const {
    return context_.session.tours().selected;
}

int Tours::checkedTour(int tour) {
    if (tour < 0 || tour >= ToursPage::kTours) {
        throw RangeFault(RangeFault::SubscriptOutOfRange,
                         "tour " + std::to_string(tour) + " has no selector");
    }
    return tour;
}

void Tours::showTourCaptions() {
    const int tour = SelectedTour();
    page_.ExecScriptBut->setText(QStringLiteral("Execute Tour %1").arg(tour + 1));
    page_.ClearScriptBut->setText(QStringLiteral("Clear Tour %1").arg(tour + 1));
}

QCoro::Task<> Tours::TourSel_Click(int index) {
    const Outcome outcome = co_await context_.session.loadTour(index, Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Tours::ScriptPreList_DblClick() {
    // The camera selectors are in the order of the step's camera numbers.
    TourStep choice;
    for (std::size_t selector = 1; selector < page_.CamSel.size(); ++selector) {
        if (page_.CamSel[selector]->isChecked()) {
            choice.camera = static_cast<int>(selector);
            break;
        }
    }
    choice.preset = page_.ScriptPreList->currentRow();
    choice.dwellSeconds = page_.WaitScroll->value();
    choice.blank = videoBlank_ && videoBlank_();
    // A step that cannot be stored is a fault of the click, whatever the
    // edit would have been.
    static_cast<void>(encodeTourStep(choice));
    const int tour = SelectedTour();

    if (page_.Option1[1]->isChecked()) {
        // Started apart from the co_await: see protocol/wait.h on GCC 12.
        auto inserting = editAtSelection(
            QStringLiteral("Could Not Insert Into Tour"),
            QStringLiteral("You must select a position in the tour list to insert."),
            [this, tour, choice](int position) {
                return context_.session.insertTourStep(tour, position, choice, Requester::Operator);
            });
        co_await std::move(inserting);
    } else if (page_.Option1[2]->isChecked()) {
        auto replacing = editAtSelection(
            QStringLiteral("Could Not Replace In The Tour"),
            QStringLiteral("You must select a position in the tour list to replace."),
            [this, tour, choice](int position) {
                return context_.session.replaceTourStep(tour, position, choice,
                                                        Requester::Operator);
            });
        co_await std::move(replacing);
    } else {
        // The unit's step reply adds the line.
        const Outcome outcome =
            co_await context_.session.appendTourStep(tour, choice, Requester::Operator);
        outcome.raiseRangeFault();
    }
}

QCoro::Task<> Tours::editAtSelection(QString title, QString text,
                                     std::function<QCoro::Task<Outcome>(int)> edit) {
    const int selected = page_.ScriptList->currentRow();
    if (selected < 0) {
        context_.messages.exclamation(title, text);
        co_return;
    }
    auto editing = edit(selected);
    const Outcome outcome = co_await std::move(editing);
    outcome.raiseRangeFault();
    co_await TourSel_Click(SelectedTour());
}

QCoro::Task<> Tours::ScriptList_DblClick() {
    auto deleting = context_.session.deleteTourStep(SelectedTour(), page_.ScriptList->currentRow(),
                                                    Requester::Operator);
    const Outcome outcome = co_await std::move(deleting);
    outcome.raiseRangeFault();
    co_await TourSel_Click(SelectedTour());
}

QCoro::Task<> Tours::ExecScriptBut_Click() {
    co_await context_.session.startTour(SelectedTour(), Requester::Operator);
}

QCoro::Task<> Tours::ClearScriptBut_Click() {
    co_await context_.session.clearTour(SelectedTour(), Requester::Operator);
}

QCoro::Task<> Tours::Command3_Click() {
    co_await context_.session.readTourStepCount(SelectedTour(), Requester::Operator);
}

void Tours::WaitScroll_Change() {
    const int seconds = page_.WaitScroll->value();
    page_.WaitLabel->setText(
        QStringLiteral("Dwell %1 %2")
            .arg(seconds)
            .arg(seconds == 1 ? QStringLiteral("Sec") : QStringLiteral("Secs")));
}

void Tours::showStep(int index) {
    const QString line =
        tourStepLine(context_.session.tours().steps.at(static_cast<std::size_t>(index)),
                     context_.status.UnitVariant());
    QListWidget* list = page_.ScriptList;
    if (index < list->count()) {
        list->item(index)->setText(line);
    } else {
        list->addItem(line);
    }
}

void Tours::showExecuting(int tour) {
    page_.ExecScriptBut->setText(QStringLiteral("Executing Tour %1").arg(tour + 1));
    tourExecuting_ = true;
    setEditingEnabled(false);
}

void Tours::showCleared(int tour) {
    page_.TourSel[static_cast<std::size_t>(checkedTour(tour))]->setChecked(true);
    page_.ScriptList->clear();
    // Selecting the tour reloads it; that waits for replies of its own, so it
    // runs after this receive event rather than inside it.
    QMetaObject::invokeMethod(
        this,
        [this, tour] {
            guarded(context_.state, "TourSel_Click", [&] { return TourSel_Click(tour); });
        },
        Qt::QueuedConnection);
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
    page_.ExecScriptBut->setText(QStringLiteral("Execute Tour %1").arg(SelectedTour() + 1));
    tourExecuting_ = false;
    setEditingEnabled(true);
}

void Tours::prepareSelector() {
    page_.TourSel[static_cast<std::size_t>(checkedTour(SelectedTour()))]->setChecked(true);
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
