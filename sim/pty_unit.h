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

#include "sim/line_control.h"
#include "sim/line_faults.h"
#include "sim/pty_unit_options.h"
#include "sim/unit.h"

namespace halvex::sim {

class PtyUnit : public QObject {
    Q_OBJECT

  public:
    explicit PtyUnit(const PtyUnitOptions& options, QObject* parent = nullptr);
    ~PtyUnit() override;

    // Creates the pseudo-terminal. False, with a reason, when it cannot.
    bool open(QString* error = nullptr);
    // The device the console opens, e.g. /dev/pts/5; empty before open().
    QString slavePath() const { return slavePath_; }

    Unit& unit() { return unit_; }

    // Changes the line from now on (see line_control.h).
    void apply(const LineCommand& command);

  private:
    void readFromConsole();
    void runClock();
    void scheduleClock();
    void queueOutput();
    void writeNow();
    void writePaced();
    void chatter();
    void sendOut(const std::vector<Byte>& bytes);
    std::int64_t nowMs() const { return clock_.elapsed(); }

    Unit unit_;
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
    QTimer chatterTimer_;
    int paceBaud_ = 0;
    // Replies before this time are not sent.
    std::int64_t silentUntilMs_ = 0;
    std::deque<Byte> pending_;
    std::int64_t paceStartMs_ = 0;
    std::int64_t pacedSent_ = 0;
};

}  // namespace halvex::sim
