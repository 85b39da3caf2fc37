#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QTabWidget>
#include <memory>

#include "connection/port_selection.h"
#include "protocol/form_state.h"
#include "protocol/link.h"
#include "protocol/receiver.h"
#include "protocol/serial_port.h"

namespace halvex {

class DataWatch;

// The main window: owns the form state, the link and the pages, and wires
// the features to them.
class VornixU : public QMainWindow {
    Q_OBJECT
  public:
    // `port` is the line to the unit; a real serial port when none is given.
    explicit VornixU(SerialPort* port = nullptr, QWidget* parent = nullptr);
    ~VornixU() override;

    FormState& state() { return state_; }
    Link& link() { return link_; }
    Receiver& receiver() { return receiver_; }
    SerialPort& SerPort1() { return *port_; }
    PortSelection& portSelection() { return *portSelection_; }
    DataWatch& dataWatch() { return *dataWatch_; }
    QTabWidget& SSTab1() { return *tabs_; }

    // Form_Load: puts everything offline and reads the settings file. Returns
    // the settings file's error sentence, empty when all was well.
    QString Form_Load();

    // Runs one handler of this window's controls under the range-fault guard.
    template <typename Handler>
    void handle(const char* name, Handler&& body);

  private:
    void buildMenus();
    void buildCentralArea();
    void showLamp(LinkLamp lamp);

    FormState state_;
    Link link_;
    Receiver receiver_;
    SerialPort* port_;
    PortSelection* portSelection_ = nullptr;
    DataWatch* dataWatch_ = nullptr;
    QTabWidget* tabs_ = nullptr;
    QPushButton* startBut_ = nullptr;
    QLabel* label25_ = nullptr;
};

}  // namespace halvex

#include "protocol/fault_guard.h"

template <typename Handler>
void halvex::VornixU::handle(const char* name, Handler&& body) {
    guarded(state_, name, std::forward<Handler>(body));
}
