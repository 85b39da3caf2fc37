#pragma once

#include <QAction>
#include <QLabel>
#include <QObject>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <array>
#include <functional>

#include "connection/port_selection.h"
#include "console/console_context.h"
#include "protocol/serial_port.h"

namespace halvex {

// The controls the connection sequence shows its progress on.
struct ConnectionView {
    QWidget* window = nullptr;
    QPushButton* StartBut = nullptr;
    std::array<QLabel*, 2> Label2{};
    QTabWidget* SSTab1 = nullptr;
    std::function<void(const QString&)> setTitle;
    // Shows the Pan/Tilt page as if the operator had picked it.
    std::function<void()> showFirstPage;
};

// Opens the link, proves a unit answers, reads every page's settings from
// it and goes online; stop, reset and exit act through the jog message.
class ConnectionSequence : public QObject {
    Q_OBJECT
  public:
    // How long Exit waits for the stop request to get onto the line.
    static constexpr int kExitSendTimeoutMs = 2000;
    // How often a lost device is looked for again.
    static constexpr int kReconnectMs = 1000;

    ConnectionSequence(ConsoleContext& context, PortSelection& ports, SerialPort& port,
                       ConnectionView view, QObject* parent = nullptr);

    QCoro::Task<> StartBut_Click();
    QCoro::Task<> Reinitialize();
    void StopBut_Click();
    void ResetBut_Click();
    // Returns when the program may end.
    QCoro::Task<> ExitBut_Click();
    void HideSecondCameraControls();
    // The device went away: offline, and look for it again every second.
    void portLost(const QString& reason);
    bool reconnecting() const { return reconnect_.isActive(); }

    bool running() const { return running_; }

  signals:
    // The sequence has run to its end (online) or has given up.
    void finished(bool online);

  private:
    // What a sequence does when no unit answers its first frame.
    enum class NoAnswer {
        // The operator pressed Start: say so in a box and stay offline.
        Tell,
        // The console found the device again by itself: a unit still
        // powering up may not answer yet, so keep looking.
        KeepLooking,
    };

    // Steps from the first jog message to online; false when no unit answered.
    QCoro::Task<bool> initialise(NoAnswer noAnswer = NoAnswer::Tell);
    // Completes when the frames queued so far have gone out and no sender
    // holds the line for replies of its own.
    StateWait lineFree();
    void fail(NoAnswer noAnswer);
    // The port closed under the sequence: back to offline without a message.
    void abandon();
    void showProgress(const QString& pan, const QString& tilt);
    void tryReconnect();
    // The lost device is there again: connect and initialise.
    QCoro::Task<> reconnected();
    QString portName() const;
    void requestLimits();

    ConsoleContext& context_;
    PortSelection& ports_;
    SerialPort& port_;
    ConnectionView view_;
    QTimer reconnect_;
    QString lastLoss_;
    bool running_ = false;
};

}  // namespace halvex
