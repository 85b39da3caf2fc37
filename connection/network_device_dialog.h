#pragma once

#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <optional>

#include "protocol/network_device.h"

namespace halvex {

// "Network Device For COMn": the host, port and kind of a serial port on a
// device server. OK stays disabled, with the reason shown, until the host
// and the port will do.
class NetworkDeviceDialog : public QDialog {
    Q_OBJECT
  public:
    // `current` fills the fields when COMn already opens a network device.
    NetworkDeviceDialog(int comPort, const std::optional<NetworkDevice>& current,
                        QWidget* parent = nullptr);

    // What the fields name, when it will do.
    std::optional<NetworkDevice> device() const;

  private:
    void showProblems();

    int comPort_;
    QLineEdit* host_;
    QLineEdit* port_;
    QRadioButton* raw_;
    QRadioButton* rfc2217_;
    QLabel* result_;
    QDialogButtonBox* buttons_;
};

}  // namespace halvex
