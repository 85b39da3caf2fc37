#include "positioning/presets.h"

#include "console/handler_wiring.h"
#include "positioning/angle_steps.h"
#include "protocol/wait.h"
#include "views/pages/presets_page.h"
#include "views/widgets/led_display.h"

namespace halvex {

namespace {
const char* const kClearCaption = "Clear All Preset Entries To 0/0";
const char* const kClearingCaption = "Clearing And Reloading Presets";
}  // namespace

Presets::Presets(ConsoleContext& context, PresetsPage& page, QObject* parent)
    : QObject(parent), context_(context), page_(page) {
    connectControls();
    Session& session = context_.session;
    connect(&session, &Session::presetReported, this, &Presets::showPreset);
    connect(&session, &Session::presetsReloadStarted, this, [this] {
        page_.PresetList->clear();
        publishListEntries();
    });
    connect(&session, &Session::presetsReloaded, this, [this] {
        if (page_.PresetList->count() > 0) {
            page_.PresetList->setCurrentRow(0);
        }
    });
}

void Presets::connectControls() {
    FormState& state = context_.state;
    QListWidget* list = page_.PresetList;
    // A selection made from the keyboard or by a reply shows the preset too.
    onEvent(state, list, &QListWidget::currentRowChanged, this, "PresetList_Click",
            [this] { PresetList_Click(); });
    onEvent(state, list, &QListWidget::itemDoubleClicked, this, "PresetList_DblClick",
            [this] { return PresetList_DblClick(); });
    onClick(state, page_.SavePreBut, this, "SavePreBut_Click", &Presets::SavePreBut_Click);
    onClick(state, page_.SaveCurPreBut, this, "SaveCurPreBut_Click", &Presets::SaveCurPreBut_Click);
    onClick(state, page_.AddAuxBut, this, "AddAuxBut_Click", &Presets::AddAuxBut_Click);
    onEvent(state, page_.ClearPreBut, &QPushButton::clicked, this, "ClearPreBut_Click",
            [this] { return ClearPreBut_Click(); });

    UnitStatus& status = context_.status;
    connectAngleSteps(
        state, page_.PanPreBut, page_.PanPreLED,
        [&status]() -> std::optional<float> { return status.PanMinLimit; },
        [&status]() -> std::optional<float> { return status.PanMaxLimit; });
    connectAngleSteps(
        state, page_.TiltPreBut, page_.TiltPreLED,
        [&status]() -> std::optional<float> { return status.TiltMinLimit; },
        [&status]() -> std::optional<float> { return status.TiltMaxLimit; });
}

void Presets::showPreset(int number) {
    const PresetRecord& record = context_.presets.at(number);
    QListWidget* list = page_.PresetList;
    if (list->count() > number) {
        delete list->takeItem(number);
    }
    // A position past the end puts the entry at the end of the list.
    if (const auto text = presetEntryText(number, record, context_.status.UnitVariant())) {
        list->insertItem(number, *text);
    }
    publishListEntries();
    // An entry placed at the end of a shorter list has no position n to select.
    if (number < list->count()) {
        list->setCurrentRow(number);
        PresetList_Click();
    }
}

QCoro::Task<> Presets::reload() {
    co_await context_.session.reloadPresets(Requester::Operator);
}

void Presets::publishListEntries() {
    QStringList entries;
    for (int row = 0; row < page_.PresetList->count(); ++row) {
        entries << page_.PresetList->item(row)->text();
    }
    context_.presets.setListEntries(std::move(entries));
}

void Presets::PresetList_Click() {
    const int row = page_.PresetList->currentRow();
    if (row < 0) {
        return;
    }
    const PresetRecord& record = context_.presets.at(row);
    page_.PanPreLED->setValue(static_cast<float>(record.pan) / 100.0f);
    page_.TiltPreLED->setValue(static_cast<float>(record.tilt) / 100.0f);
}

QCoro::Task<> Presets::PresetList_DblClick() {
    const Outcome outcome =
        co_await context_.session.goToPreset(page_.PresetList->currentRow(), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Presets::SavePreBut_Click() {
    const Outcome outcome = co_await context_.session.savePreset(
        page_.PresetList->currentRow(), {page_.PanPreLED->value(), page_.TiltPreLED->value()},
        Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Presets::SaveCurPreBut_Click() {
    const Outcome outcome = co_await context_.session.saveCurrentPosition(
        page_.PresetList->currentRow(), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Presets::AddAuxBut_Click() {
    const Outcome outcome = co_await context_.session.addLensPositions(
        page_.PresetList->currentRow(), Requester::Operator);
    outcome.raiseRangeFault();
}

QCoro::Task<> Presets::ClearPreBut_Click() {
    FormState& state = context_.state;
    page_.ClearPreBut->setText(QString::fromLatin1(kClearingCaption));
    co_await letEventsRun(state);
    co_await context_.session.clearAllPresets(Requester::Operator);
    page_.ClearPreBut->setText(QString::fromLatin1(kClearCaption));
}

}  // namespace halvex
