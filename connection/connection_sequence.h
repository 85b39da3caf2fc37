#pragma once

#include <QAction>
#include <QLabel>
#include <QObject>
#include <QPushButton>
#include <QTabWidget>
#include <array>
#include <functional>

#include "connection/port_selection.h"
#include "console/console_context.h"
#include "session/unit_connection.h"

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

// The Start, Stop, Reset and Exit buttons and Reinitialize over the
// session's connection: the progress captions, the title, the page tabs and
// the message boxes show what it does, and the window adds its pages' reads
// as the connection's later steps.
class ConnectionSequence : public QObject {
    Q_OBJECT
  public:
    ConnectionSequence(ConsoleContext& context, PortSelection& ports, ConnectionView view,
                       QObject* parent = nullptr);

    QCoro::Task<> StartBut_Click();
    QCoro::Task<> Reinitialize();
    void StopBut_Click();
    void ResetBut_Click();
    // Returns when the program may end.
    QCoro::Task<> ExitBut_Click();
    void HideSecondCameraControls();
    bool reconnecting() const { return connection_.reconnecting(); }
    bool running() const { return connection_.running(); }
    UnitConnection& unitConnection() { return connection_; }

  signals:
    // The sequence has run to its end (online) or has given up.
    void finished(bool online);

  private:
    std::vector<UnitConnection::Step> pageReads();
    void showStage(ConnectStage stage);
    void showProgress(const QString& pan, const QString& tilt);
    void showOffline();

    ConsoleContext& context_;
    PortSelection& ports_;
    ConnectionView view_;
    UnitConnection connection_;
};

}  // namespace halvex
