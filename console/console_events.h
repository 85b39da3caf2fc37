#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <functional>

namespace halvex {

class FormState;

// A request one feature makes of another and waits for. The answering
// handler runs under the fault guard by its own name, so a fault stops that
// handler alone and the asker goes on.
class AwaitedRequest {
  public:
    void answerWith(FormState& state, const char* handler, std::function<QCoro::Task<>()> answer);
    // Completes when the answer has; at once when nobody answers.
    QCoro::Task<> operator()() const;

  private:
    FormState* state_ = nullptr;
    const char* handler_ = "";
    std::function<QCoro::Task<>()> answer_;
};

// How features ask each other for things without knowing each other: one
// raises a signal or awaits a request, whoever answers for it is connected by
// the main window. Connections are direct, so a signal has run when emit
// returns.
class ConsoleEvents : public QObject {
    Q_OBJECT
  public:
    using QObject::QObject;

    // Asks for presets 0..31 again, each after the reply to the one before.
    AwaitedRequest presetsReload;
    // Loads the selected tour from the unit, as a click on its selector does.
    AwaitedRequest selectedTourLoad;

  signals:
    // Checks the selector of the selected tour, before the first tour load.
    void tourSelectorPrepareRequested();
    // Copies the preset list into the tour page's preset choices.
    void tourPresetChoicesRefillRequested();
    // Ends the "executing" look of the tour page (stop button).
    void tourDisplayEndRequested();

    // Every current-position report and every target report, in degrees.
    void currentPositionReported(float pan, float tilt);
    void targetPositionReported(float pan, float tilt);
};

}  // namespace halvex
