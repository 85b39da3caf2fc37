#pragma once

#include <QDialog>

#include "remote/remote_bridges.h"

class QCheckBox;
class QComboBox;
class QLineEdit;
class QRadioButton;
class QSpinBox;
class QTableWidget;

namespace halvex {

class Messages;
class NetworkControl;

// Unit > Remote Control: where each bridge for other programs listens, who
// may sign in, and what each is doing now (its clients and the latest
// command). OK and Apply start and stop the bridges and keep the settings
// for the next start.
class RemoteControlDialog : public QDialog {
    Q_OBJECT
  public:
    RemoteControlDialog(RemoteBridges& bridges, NetworkControl& networkControl,
                        const Messages& messages, QWidget* parent = nullptr);

    // What the form says now; a sentence naming the first bad value, or
    // empty.
    QString readForm(BridgeSettings& settings) const;
    // Starts and stops as the form says; false with a message shown when a
    // value is wrong or a bridge cannot start.
    bool applyForm();

  private:
    void fillForm(const BridgeSettings& settings);
    void showStates();

    RemoteBridges& bridges_;
    NetworkControl& networkControl_;
    const Messages& messages_;
    QLineEdit* listen_;
    QCheckBox* onvifOn_;
    QLineEdit* onvifPort_;
    QLineEdit* onvifUser_;
    QLineEdit* onvifPassword_;
    QCheckBox* viscaOn_;
    QLineEdit* viscaPort_;
    QSpinBox* viscaRefresh_;
    QCheckBox* pelcoOn_;
    QRadioButton* pelcoSerial_;
    QRadioButton* pelcoTcp_;
    QLineEdit* pelcoDevice_;
    QComboBox* pelcoBaud_;
    QSpinBox* pelcoAddress_;
    QLineEdit* pelcoPort_;
    QSpinBox* pelcoRefresh_;
    QTableWidget* states_;
};

}  // namespace halvex
