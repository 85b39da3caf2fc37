#pragma once

#include <QCoro/QCoroTask>
#include <QObject>
#include <QString>
#include <QTimer>
#include <functional>
#include <memory>
#include <vector>

#include "protocol/wait.h"
#include "session/session.h"

namespace halvex {

// How far a connection has come, for whoever shows its progress.
enum class ConnectStage {
    FirstAnswer,  // the first jog message, waiting for a unit to answer
    Offsets,
    Limits,
    Presets,
    Tours,
    Setup,
    Camera,
    Online,
};

// The line a connection opens, asked each time: the operator may choose
// another between attempts.
struct LineChoice {
    std::function<QString()> device;
    std::function<qint32()> baudRate;
    // How messages name it: "COM1 (/dev/ttyUSB0)".
    std::function<QString()> name;
};

// Opens the line, proves a unit answers, reads offsets and limits and then
// whatever later steps the caller adds (the window reads every page), and
// goes online. Looks for a lost device again every second; Exit tells the
// unit to stop before the line closes.
class UnitConnection : public QObject {
    Q_OBJECT
  public:
    // How long Exit waits for the stop request to get onto the line.
    static constexpr int kExitSendTimeoutMs = 2000;
    // How often a lost device is looked for again.
    static constexpr int kReconnectMs = 1000;

    // A step after the limits, run in order with its stage announced first.
    struct Step {
        ConnectStage stage;
        std::function<QCoro::Task<>()> run;
    };

    UnitConnection(Session& session, LineChoice line, QObject* parent = nullptr);

    void setLaterSteps(std::vector<Step> steps) { laterSteps_ = std::move(steps); }
    // The steps that read the unit's setup (centre, drive, identity, mount,
    // encoders) and its cameras, lenses, video and displays, each read
    // answered before the next goes out; for the end of the later steps.
    std::vector<Step> settingsReads();
    // Everything the console reads after the limits: the presets, the
    // selected tour, then the settings reads above.
    std::vector<Step> unitReads();
    // Made for the time a connection works and dropped after it (the
    // window's hourglass pointer).
    void setBusyIndicator(std::function<std::shared_ptr<void>()> busy) { busy_ = std::move(busy); }

    // Opens the line and connects; false when the line would not open
    // (openFailed) or no unit answered (noUnitAnswered).
    QCoro::Task<bool> start();
    // Reads the unit again on the open line.
    QCoro::Task<bool> reinitialise();
    // Tells the unit to stop, waits for that to reach it, closes the line.
    QCoro::Task<> exit();
    // Ends the looking for a lost device; false when there was none.
    bool stopLooking();

    bool running() const { return running_; }
    bool reconnecting() const { return reconnect_.isActive(); }
    // Looks for a lost device this often instead: tests whose units come
    // back at once need not wait a second for each look.
    void setReconnectInterval(int milliseconds) { reconnect_.setInterval(milliseconds); }
    QString lineName() const { return line_.name(); }

    // Completes when the frames queued so far have gone out and no sender
    // holds the line for replies of its own: the step before is done.
    StateWait lineFree();

  signals:
    void stageChanged(halvex::ConnectStage stage);
    // The first reply came: the unit's kind is known.
    void unitAnswered();
    void openFailed();
    // Nobody answered the operator's Start.
    void noUnitAnswered();
    // The line went away, or a unit was found but not answering: offline,
    // and looking for it again.
    void wentOffline();
    // A connection ended without going online, the line closed.
    void abandoned();
    // The sequence has run to its end (online) or has given up.
    void finished(bool online);

  private:
    enum class NoAnswer {
        // The operator pressed Start: say so and stay offline.
        Tell,
        // The console found the device again by itself: a unit still
        // powering up may not answer yet, so keep looking.
        KeepLooking,
    };

    QCoro::Task<bool> initialise(NoAnswer noAnswer = NoAnswer::Tell);
    QCoro::Task<> announce(ConnectStage stage);
    void requestLimits();
    // Sends the read and lets it complete on its own.
    static void startRead(FormState& state, QCoro::Task<Outcome> read);
    void fail(NoAnswer noAnswer);
    void abandon();
    void portLost(const QString& reason);
    void tryReconnect();
    QCoro::Task<> reconnected();

    Session& session_;
    LineChoice line_;
    std::vector<Step> laterSteps_;
    std::function<std::shared_ptr<void>()> busy_;
    QTimer reconnect_;
    QString lastLoss_;
    bool running_ = false;
};

}  // namespace halvex
