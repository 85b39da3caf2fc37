#include "window/remote_control_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

#include "console/messages.h"
#include "window/network_control.h"

namespace halvex {

namespace {

template <typename T>
T* named(T* widget, const char* name) {
    widget->setObjectName(QLatin1String(name));
    return widget;
}

std::optional<quint16> portIn(const QLineEdit& box) {
    bool ok = false;
    const uint port = box.text().trimmed().toUInt(&ok);
    return ok && port >= 1 && port <= 65535 ? std::optional(static_cast<quint16>(port))
                                            : std::nullopt;
}

// Milliseconds of silence from a client before its drive stops; 0: never.
QSpinBox* refreshSpin(QWidget* parent) {
    auto* spin = new QSpinBox(parent);
    spin->setRange(0, BridgeSettings::kLongestRefreshMs);
    spin->setSingleStep(100);
    spin->setSuffix(QStringLiteral(" ms of silence"));
    spin->setSpecialValueText(QStringLiteral("never"));
    return spin;
}

}  // namespace

RemoteControlDialog::RemoteControlDialog(RemoteBridges& bridges, NetworkControl& networkControl,
                                         const Messages& messages, QWidget* parent)
    : QDialog(parent), bridges_(bridges), networkControl_(networkControl), messages_(messages) {
    setObjectName(QStringLiteral("RemoteControlDialog"));
    setWindowTitle(QStringLiteral("Remote Control"));

    listen_ = named(new QLineEdit(this), "RemoteListenBox");
    listen_->setToolTip(
        QStringLiteral("127.0.0.1 for this computer only; 'any' for every "
                       "network it is on."));
    auto* common = new QFormLayout;
    common->addRow(QStringLiteral("Listen on:"), listen_);

    auto* onvif = new QGroupBox(QStringLiteral("ONVIF (video management systems)"), this);
    onvifOn_ = named(new QCheckBox(QStringLiteral("On"), onvif), "OnvifCheck");
    onvifPort_ = named(new QLineEdit(onvif), "OnvifPortBox");
    onvifUser_ = named(new QLineEdit(onvif), "OnvifUserBox");
    onvifPassword_ = named(new QLineEdit(onvif), "OnvifPasswordBox");
    onvifPassword_->setEchoMode(QLineEdit::Password);
    auto* onvifForm = new QFormLayout(onvif);
    onvifForm->addRow(onvifOn_);
    onvifForm->addRow(QStringLiteral("HTTP port:"), onvifPort_);
    onvifForm->addRow(QStringLiteral("User:"), onvifUser_);
    onvifForm->addRow(QStringLiteral("Password:"), onvifPassword_);

    auto* visca = new QGroupBox(QStringLiteral("VISCA over IP (broadcast controllers)"), this);
    viscaOn_ = named(new QCheckBox(QStringLiteral("On"), visca), "ViscaCheck");
    viscaPort_ = named(new QLineEdit(visca), "ViscaPortBox");
    viscaRefresh_ = named(refreshSpin(visca), "ViscaRefreshSpin");
    auto* viscaForm = new QFormLayout(visca);
    viscaForm->addRow(viscaOn_);
    viscaForm->addRow(QStringLiteral("UDP and TCP port:"), viscaPort_);
    viscaForm->addRow(QStringLiteral("Stop a drive after:"), viscaRefresh_);

    auto* pelco = new QGroupBox(QStringLiteral("Pelco-D (PTZ keyboards)"), this);
    pelcoOn_ = named(new QCheckBox(QStringLiteral("On"), pelco), "PelcoCheck");
    pelcoSerial_ =
        named(new QRadioButton(QStringLiteral("Serial device:"), pelco), "PelcoSerialOption");
    pelcoTcp_ = named(new QRadioButton(QStringLiteral("TCP port:"), pelco), "PelcoTcpOption");
    pelcoDevice_ = named(new QLineEdit(pelco), "PelcoDeviceBox");
    pelcoBaud_ = named(new QComboBox(pelco), "PelcoBaudCombo");
    for (const int baud : {2400, 4800, 9600}) {
        pelcoBaud_->addItem(QString::number(baud), baud);
    }
    pelcoAddress_ = named(new QSpinBox(pelco), "PelcoAddressSpin");
    pelcoAddress_->setRange(1, 255);
    pelcoPort_ = named(new QLineEdit(pelco), "PelcoPortBox");
    auto* pelcoForm = new QFormLayout(pelco);
    pelcoForm->addRow(pelcoOn_);
    pelcoForm->addRow(pelcoSerial_, pelcoDevice_);
    pelcoForm->addRow(QStringLiteral("Speed:"), pelcoBaud_);
    pelcoForm->addRow(pelcoTcp_, pelcoPort_);
    pelcoForm->addRow(QStringLiteral("Camera address:"), pelcoAddress_);
    pelcoRefresh_ = named(refreshSpin(pelco), "PelcoRefreshSpin");
    pelcoForm->addRow(QStringLiteral("Stop a drive after:"), pelcoRefresh_);

    states_ = named(new QTableWidget(RemoteBridges::kKinds + 1, 5, this), "RemoteStatusTable");
    states_->setHorizontalHeaderLabels({QStringLiteral("Bridge"), QStringLiteral("Listening on"),
                                        QStringLiteral("User"), QStringLiteral("Clients"),
                                        QStringLiteral("Last command")});
    states_->verticalHeader()->hide();
    states_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    states_->horizontalHeader()->setStretchLastSection(true);
    states_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Every bridge's row in view without scrolling.
    states_->setMinimumHeight(states_->horizontalHeader()->sizeHint().height() +
                              states_->rowCount() *
                                  states_->verticalHeader()->defaultSectionSize() +
                              2 * states_->frameWidth());

    auto* buttons = new QDialogButtonBox(
        QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Apply, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("RemoteOkBut"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("RemoteCancelBut"));
    buttons->button(QDialogButtonBox::Apply)->setObjectName(QStringLiteral("RemoteApplyBut"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        if (applyForm()) {
            accept();
        }
    });
    connect(buttons->button(QDialogButtonBox::Apply), &QPushButton::clicked, this,
            &RemoteControlDialog::applyForm);

    auto* columns = new QHBoxLayout;
    columns->addWidget(onvif);
    columns->addWidget(visca);
    columns->addWidget(pelco);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(common);
    layout->addLayout(columns);
    layout->addWidget(states_);
    layout->addWidget(buttons);

    fillForm(bridges_.settings());
    connect(&bridges_, &RemoteBridges::stateChanged, this, &RemoteControlDialog::showStates);
    connect(&networkControl_.server(), &network::RotctldServer::clientCountChanged, this,
            &RemoteControlDialog::showStates);
    showStates();
}

void RemoteControlDialog::fillForm(const BridgeSettings& settings) {
    listen_->setText(settings.listen == QHostAddress(QHostAddress::Any)
                         ? QStringLiteral("any")
                         : settings.listen.toString());
    onvifOn_->setChecked(settings.onvifPort.has_value());
    onvifPort_->setText(QString::number(settings.onvifPort.value_or(8080)));
    onvifUser_->setText(settings.onvifUser);
    onvifPassword_->setText(settings.onvifPassword);
    viscaOn_->setChecked(settings.viscaPort.has_value());
    viscaPort_->setText(QString::number(settings.viscaPort.value_or(52381)));
    viscaRefresh_->setValue(settings.viscaRefreshMs);
    pelcoRefresh_->setValue(settings.pelcoRefreshMs);
    pelcoOn_->setChecked(!settings.pelcoDevice.isEmpty() || settings.pelcoTcpPort);
    pelcoSerial_->setChecked(!settings.pelcoTcpPort);
    pelcoTcp_->setChecked(settings.pelcoTcpPort.has_value());
    pelcoDevice_->setText(settings.pelcoDevice);
    pelcoBaud_->setCurrentIndex(std::max(0, pelcoBaud_->findData(settings.pelcoBaud)));
    pelcoAddress_->setValue(settings.pelcoAddress);
    pelcoPort_->setText(QString::number(settings.pelcoTcpPort.value_or(4001)));
}

QString RemoteControlDialog::readForm(BridgeSettings& settings) const {
    settings = BridgeSettings{};
    const QString listen = listen_->text().trimmed();
    if (listen == QStringLiteral("any")) {
        settings.listen = QHostAddress(QHostAddress::Any);
    } else if (!settings.listen.setAddress(listen)) {
        return QStringLiteral("'%1' is not an address to listen on.").arg(listen);
    }
    settings.onvifUser = onvifUser_->text().trimmed();
    settings.onvifPassword = onvifPassword_->text();
    if (onvifOn_->isChecked()) {
        settings.onvifPort = portIn(*onvifPort_);
        if (!settings.onvifPort) {
            return QStringLiteral("Enter a port number from 1 to 65535 for ONVIF.");
        }
        if (settings.onvifUser.isEmpty() || settings.onvifPassword.isEmpty()) {
            return QStringLiteral("ONVIF needs a user and a password.");
        }
    }
    if (viscaOn_->isChecked()) {
        settings.viscaPort = portIn(*viscaPort_);
        if (!settings.viscaPort) {
            return QStringLiteral("Enter a port number from 1 to 65535 for VISCA.");
        }
    }
    settings.pelcoAddress = pelcoAddress_->value();
    settings.viscaRefreshMs = viscaRefresh_->value();
    settings.pelcoRefreshMs = pelcoRefresh_->value();
    settings.pelcoBaud = pelcoBaud_->currentData().toInt();
    if (pelcoOn_->isChecked() && pelcoTcp_->isChecked()) {
        settings.pelcoTcpPort = portIn(*pelcoPort_);
        if (!settings.pelcoTcpPort) {
            return QStringLiteral("Enter a port number from 1 to 65535 for Pelco-D.");
        }
    } else if (pelcoOn_->isChecked()) {
        settings.pelcoDevice = pelcoDevice_->text().trimmed();
        if (settings.pelcoDevice.isEmpty()) {
            return QStringLiteral("Enter the serial device the Pelco-D keyboard is on.");
        }
    }
    return {};
}

bool RemoteControlDialog::applyForm() {
    BridgeSettings settings;
    QString problem = readForm(settings);
    if (problem.isEmpty()) {
        saveBridgeSettings(settings);
        problem = bridges_.apply(settings).join(QLatin1Char('\n'));
    }
    showStates();
    if (!problem.isEmpty()) {
        messages_.exclamation(windowTitle(), problem);
        return false;
    }
    return true;
}

void RemoteControlDialog::showStates() {
    const auto row = [this](int at, const QString& name, const RemoteBridges::State& state,
                            const QString& user = {}) {
        const QStringList cells = {name, state.running ? state.where : QStringLiteral("off"),
                                   state.running ? user : QString(),
                                   state.running ? QString::number(state.clients) : QString(),
                                   state.lastCommand};
        for (int column = 0; column < cells.size(); ++column) {
            auto* item = states_->item(at, column);
            if (item == nullptr) {
                item = new QTableWidgetItem;
                states_->setItem(at, column, item);
            }
            item->setText(cells[column]);
        }
    };
    const network::RotctldServer& rotctld = networkControl_.server();
    row(0, QStringLiteral("Network control (rotctld)"),
        {rotctld.isListening(),
         QStringLiteral("%1:%2").arg(rotctld.serverAddress().toString()).arg(rotctld.serverPort()),
         rotctld.clientCount(), QString()});
    for (int kind = 0; kind < RemoteBridges::kKinds; ++kind) {
        const auto k = static_cast<RemoteBridges::Kind>(kind);
        row(kind + 1, RemoteBridges::nameOf(k), bridges_.state(k),
            k == RemoteBridges::Kind::Onvif ? bridges_.settings().onvifUser : QString());
    }
}

}  // namespace halvex
