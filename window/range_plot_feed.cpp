#include "window/range_plot_feed.h"

#include <cmath>

#include "protocol/fault_guard.h"

namespace halvex {

namespace {
PlotAngles presetAngles(const PresetRecord& record) {
    return {record.pan / 100.0, record.tilt / 100.0};
}

// The unit's angles are whole hundredths, which the status holds as floats.
PlotAngles anglesOf(float pan, float tilt) {
    return {std::round(pan * 100.0) / 100.0, std::round(tilt * 100.0) / 100.0};
}
}  // namespace

RangePlotFeed::RangePlotFeed(Session& session, RangePlot& plot,
                             std::function<void(const QString&)> tell, QObject* parent)
    : QObject(parent), session_(session), plot_(&plot), tell_(std::move(tell)) {
    connect(&session, &Session::positionReported, this, &RangePlotFeed::showPosition);
    connect(&session, &Session::targetReported, this, &RangePlotFeed::showPosition);
    connect(&session, &Session::softLimitReported, this, &RangePlotFeed::showLimits);
    connect(&session, &Session::angleOffsetsReported, this, &RangePlotFeed::showLimits);
    connect(&session, &Session::continuousPanReported, this, &RangePlotFeed::showLimits);
    for (auto signal : {&Session::presetReported, &Session::tourStepReported,
                        &Session::tourLoadStarted, &Session::tourCleared}) {
        connect(&session, signal, this, &RangePlotFeed::showPresetsAndTour);
    }
    connect(&session, &Session::presetsReloaded, this, &RangePlotFeed::showPresetsAndTour);

    connect(&plot, &RangePlot::moveRequested, this, [this](double pan, double tilt) {
        carryOut("RangePlot_Click", session_.moveTo({pan, tilt}, Requester::Program));
    });
    connect(&plot, &RangePlot::presetRequested, this, [this](int number) {
        carryOut("RangePlot_DblClick", session_.goToPreset(number, Requester::Program));
    });
    // The unit keeps the new preset; reading the presets again shows it.
    connect(&plot, &RangePlot::savePositionRequested, this, [this](int number) {
        carryOut("RangePlot_Save", session_.saveCurrentPosition(number, Requester::Program),
                 [this] {
                     launch(session_.state(), "RangePlot_Save",
                            completing(session_.reloadPresets(Requester::Program)));
                 });
    });

    showLimits();
    showPosition();
    showPresetsAndTour();
}

void RangePlotFeed::showLimits() {
    const UnitStatus& status = session_.status();
    plot_->setPanWraps(status.PanContinuous);
    const PlotAngles offsets = anglesOf(status.PanAngleOffset, status.TiltAngleOffset);
    plot_->setHardLimits({offsets.pan - kPanTravel, offsets.pan + kPanTravel,
                          offsets.tilt - kTiltTravel, offsets.tilt + kTiltTravel});
    const PlotAngles least = anglesOf(status.PanMinLimit, status.TiltMinLimit);
    const PlotAngles most = anglesOf(status.PanMaxLimit, status.TiltMaxLimit);
    plot_->setSoftLimits({least.pan, most.pan, least.tilt, most.tilt});
}

void RangePlotFeed::showPosition() {
    const UnitStatus& status = session_.status();
    plot_->setPosition(anglesOf(status.CurrentPan, status.CurrentTilt));
    plot_->setTarget(anglesOf(status.TargetPan, status.TargetTilt));
    plot_->setMoving(status.Moving());
}

void RangePlotFeed::showPresetsAndTour() {
    const PresetTable& table = session_.presets();
    std::vector<PlotPreset> presets;
    for (int number = 0; number < kUnitPresets; ++number) {
        const PresetRecord& record = table.at(number);
        // A cleared preset reads 0/0: there is nothing there to show.
        if (record.pan != 0 || record.tilt != 0) {
            presets.push_back({number, presetAngles(record)});
        }
    }
    plot_->setPresets(std::move(presets));

    std::vector<PlotTourStep> path;
    for (const TourStep& step : session_.tours().steps) {
        // A step naming a preset the unit does not have goes nowhere.
        if (step.preset < kUnitPresets) {
            path.push_back({step.preset, presetAngles(table.at(step.preset)), step.dwellSeconds});
        }
    }
    plot_->setTour(std::move(path));
}

void RangePlotFeed::carryOut(const char* handler, QCoro::Task<Outcome> operation,
                             std::function<void()> afterwards) {
    launch(session_.state(), handler, reportOutcome(std::move(operation), std::move(afterwards)));
}

QCoro::Task<> RangePlotFeed::reportOutcome(QCoro::Task<Outcome> operation,
                                           std::function<void()> afterwards) {
    const QPointer<RangePlotFeed> alive(this);
    const Outcome outcome = co_await std::move(operation);
    if (!alive) {
        co_return;
    }
    if (outcome.isDone()) {
        if (afterwards) {
            afterwards();
        }
        co_return;
    }
    if (plot_) {
        plot_->showNotice(outcome.text());
    }
    tell_(QStringLiteral("Range Plot: %1").arg(outcome.text()));
}

}  // namespace halvex
