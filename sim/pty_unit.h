#pragma once

// The virtual unit on a pseudo-terminal: whatever opens the slave device
// talks to the unit as to hardware on a serial port. Runs in a Qt event
// loop: a socket notifier for bytes from the console, one timer for the
// unit's clock (only while something is due) and one for paced output.

#include <QElapsedTimer>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <deque>
#include <memory>
#include <vector>

#include "sim/line_faults.h"
#include "sim/pty_unit_options.h"
#include "sim/unit.h"

namespace halvex::sim {

class PtyUnit : public QObject {
    Q_OBJECT

  public:
    explicit PtyUnit(const PtyUnitOptions& options, QObject* parent = nullptr);
    // Lets `answers` (a replayed recording) answer the console instead of
    // the unit model; pacing still applies, line faults do not.
    PtyUnit(const PtyUnitOptions& options, std::unique_ptr<UnitPeer> answers,
            QObject* parent = nullptr);
    ~PtyUnit() override;

    // Creates the pseudo-terminal. False, with a reason, when it cannot.
    bool open(QString* error = nullptr);
    // The device the console opens, e.g. /dev/pts/5; empty before open().
    QString slavePath() const { return slavePath_; }

    Unit& unit() { return unit_; }

  private:
    void readFromConsole();
    void runClock();
    void scheduleClock();
    void queueOutput();
    void writeNow();
    void writePaced();
    std::int64_t nowMs() const { return clock_.elapsed(); }

    PtyUnitOptions options_;
    Unit unit_;
    std::unique_ptr<UnitPeer> answers_;
    LineFaults faults_;
    int master_ = -1;
    // Kept open so that the line settings stay raw and the master never
    // sees a hang-up while no console has the device open.
    int slave_ = -1;
    QString slavePath_;
    QElapsedTimer clock_;
    std::unique_ptr<QSocketNotifier> readNotifier_;
    QTimer clockTimer_;
    QTimer paceTimer_;
    QTimer resumeTimer_;
    std::deque<Byte> pending_;
    std::int64_t paceStartMs_ = 0;
    std::int64_t pacedSent_ = 0;
};

}  // namespace halvex::sim
