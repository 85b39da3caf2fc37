#pragma once

// The virtual unit on a byte stream: a pseudo-terminal (PtyUnit) or a TCP
// connection (TcpUnit) carries the console's frames to it and its replies
// back, with the line faults and pacing of line_control.h on the way. Runs in
// a Qt event loop: a socket notifier for bytes from the console, one timer
// for the unit's clock (only while something is due) and one for paced
// output.

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

class StreamUnit : public QObject {
    Q_OBJECT

  public:
    explicit StreamUnit(const PtyUnitOptions& options, QObject* parent = nullptr);
    ~StreamUnit() override;

    Unit& unit() { return unit_; }

    // Changes the line from now on (see line_control.h).
    void apply(const LineCommand& command);
    // Lets `answers` (a replayed recording) answer the console instead of
    // the unit model; pacing and silence still apply, line faults do not.
    void answerWith(std::unique_ptr<UnitPeer> answers);

  protected:
    // The console is at the other end of `fd` (non-blocking) from now on.
    void attachLine(int fd);
    // Nobody is: stops reading and forgets what waited to be sent.
    void detachLine();
    int lineFd() const { return line_; }
    // A read found the far end gone (end of file or an error).
    virtual void lineEnded() = 0;
    // Writes to the line; what a write(2) would return.
    virtual long writeLine(const Byte* bytes, std::size_t count) = 0;
    void pauseReading(bool paused);

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
    std::unique_ptr<UnitPeer> answers_;
    LineFaults faults_;
    int line_ = -1;
    bool reading_ = false;
    QElapsedTimer clock_;
    std::unique_ptr<QSocketNotifier> readNotifier_;
    QTimer clockTimer_;
    QTimer paceTimer_;
    QTimer chatterTimer_;
    int paceBaud_ = 0;
    // Replies before this time are not sent.
    std::int64_t silentUntilMs_ = 0;
    std::deque<Byte> pending_;
    std::int64_t paceStartMs_ = 0;
    std::int64_t pacedSent_ = 0;
};

}  // namespace halvex::sim
