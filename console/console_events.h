#pragma once

#include <QObject>

namespace halvex {

// How features ask each other for things without knowing each other: one
// raises a signal, whoever answers for it is connected by the main window.
// Connections are direct, so a request has run when emit returns.
class ConsoleEvents : public QObject {
    Q_OBJECT
  public:
    using QObject::QObject;

  signals:
    // Asks for presets 0..31 again, each after the reply to the one before.
    void presetsReloadRequested();
    // Checks the selector of the selected tour, before the first tour load.
    void tourSelectorPrepareRequested();
    // Loads the selected tour from the unit, as a click on its selector does.
    void selectedTourLoadRequested();
    // Copies the preset list into the tour page's preset choices.
    void tourPresetChoicesRefillRequested();
    // Ends the "executing" look of the tour page (stop button).
    void tourDisplayEndRequested();

    // Every current-position report and every target report, in degrees.
    void currentPositionReported(float pan, float tilt);
    void targetPositionReported(float pan, float tilt);
};

}  // namespace halvex
