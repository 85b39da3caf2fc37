#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QTabWidget>

#include "connection/port_selection.h"
#include "console/console_context.h"
#include "console/messages.h"
#include "protocol/fault_guard.h"
#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "protocol/serial_port.h"
#include "session/jog_sources.h"
#include "session/jog_state.h"
#include "session/session.h"
#include "session/unit_status.h"
#include "window/input_wiring.h"

namespace halvex {

class DataWatch;
class PanTiltPage;
class CameraPage;
class JogControl;
class MotionCommands;
class PositionReport;
class ConnectionSequence;
class SessionRotator;
class NetworkControl;
class RemoteBridges;
class RemoteControlDialog;
class LineRecorder;
class RangePlot;
class PagePlace;
class VideoWiring;
class PresetThumbnails;

// The main window: owns the form state, the link and the pages, and wires
// the features to them.
class VornixU : public QMainWindow {
    Q_OBJECT
  public:
    // `port` is the line to the unit; a real serial port when none is given.
    // `presenter` shows the message boxes; real ones when none is given.
    // `linkTickMs` is the time between frames on the line.
    explicit VornixU(SerialPort* port = nullptr, Messages::Presenter presenter = {},
                     int linkTickMs = Link::kTickMs, QWidget* parent = nullptr);
    ~VornixU() override;

    // The unit as programs see it: operations, state, the line.
    Session& session() { return session_; }
    FormState& state() { return state_; }
    UnitStatus& status() { return status_; }
    JogState& jogState() { return jog_; }
    // The jog box, the keyboard and game controllers, and who steers.
    JogSources& jogSources() { return jogSources_; }
    const InputFeatures& input() const { return input_; }
    Link& link() { return link_; }
    Receiver& receiver() { return receiver_; }
    SerialPort& SerPort1() { return *port_; }
    DataWatch& dataWatch() { return *dataWatch_; }
    QTabWidget& SSTab1() { return *tabs_; }
    PanTiltPage& panTiltPage() { return *panTilt_; }
    ConnectionSequence& connection() { return *connection_; }
    // The rotctld server for tracking programs, off until started.
    NetworkControl& networkControl() { return *networkControl_; }
    RemoteBridges& remoteBridges() { return *remoteBridges_; }
    // The Line Log and recordings of the line.
    LineRecorder& lineRecorder() { return *lineRecorder_; }
    // The plot of the unit's range, and where it is shown.
    RangePlot& rangePlot() { return *rangePlot_; }
    PagePlace& rangePlotPlace() { return *rangePlotPlace_; }
    VideoWiring& videoWiring() { return *videoWiring_; }
    // What each preset looks at, as the video showed it when stored.
    PresetThumbnails& presetThumbnails() { return *presetThumbnails_; }
    const Messages& messages() const { return messages_; }
    ConsoleEvents& events() { return events_; }

    // Form_Load: puts everything offline and reads the settings file. Returns
    // the settings file's error sentence, empty when all was well.
    QString Form_Load();

  protected:
    void closeEvent(QCloseEvent* event) override;

  private:
    void buildMenus();
    void buildCentralArea();
    void installFeatures();
    void installInputFeatures();
    void showLamp(LinkLamp lamp);
    // The exit button's stop, then the window closes.
    QCoro::Task<> closeAfterExit();

    Session session_;
    FormState& state_ = session_.state();
    Link& link_ = session_.link();
    Receiver& receiver_ = session_.receiver();
    SerialPort* port_ = &session_.port();
    UnitStatus& status_ = session_.status();
    JogState& jog_ = session_.jog();
    JogSources& jogSources_ = session_.jogSources();
    PresetTable& presets_ = session_.presets();
    ConsoleEvents events_;
    Messages messages_;
    ConsoleContext context_;
    PortSelection* portSelection_ = nullptr;
    DataWatch* dataWatch_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    PanTiltPage* panTilt_ = nullptr;
    CameraPage* camera_ = nullptr;
    QPushButton* startBut_ = nullptr;
    QPushButton* stopBut_ = nullptr;
    QPushButton* resetBut_ = nullptr;
    QPushButton* exitBut_ = nullptr;
    QAction* reinitialize_ = nullptr;
    QAction* rotctldAction_ = nullptr;
    QLabel* rotctldLabel_ = nullptr;
    QLabel* label25_ = nullptr;
    JogControl* jogControl_ = nullptr;
    MotionCommands* motion_ = nullptr;
    PositionReport* positionReport_ = nullptr;
    ConnectionSequence* connection_ = nullptr;
    SessionRotator* rotator_ = nullptr;
    NetworkControl* networkControl_ = nullptr;
    RemoteBridges* remoteBridges_ = nullptr;
    RemoteControlDialog* remoteControlDialog_ = nullptr;
    QAction* remoteControlAction_ = nullptr;
    LineRecorder* lineRecorder_ = nullptr;
    QAction* rangePlotAction_ = nullptr;
    RangePlot* rangePlot_ = nullptr;
    PagePlace* rangePlotPlace_ = nullptr;
    QAction* videoAction_ = nullptr;
    VideoWiring* videoWiring_ = nullptr;
    PresetThumbnails* presetThumbnails_ = nullptr;
    InputFeatures input_;
    bool exiting_ = false;
    bool exited_ = false;
    bool inCloseEvent_ = false;
};

}  // namespace halvex
