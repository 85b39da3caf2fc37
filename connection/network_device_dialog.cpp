#include "connection/network_device_dialog.h"

#include <QFormLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace halvex {

namespace {
// "8/N/1" with word joiners, so a wrapped line never splits it.
const QColor kProblemColour(0xa0, 0x18, 0x18);
const QString kEightNoneOne = QStringLiteral("8\u2060/\u2060N\u2060/\u20601");

QLabel* note(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setForegroundRole(QPalette::PlaceholderText);
    return label;
}
}  // namespace

NetworkDeviceDialog::NetworkDeviceDialog(int comPort, const std::optional<NetworkDevice>& current,
                                         QWidget* parent)
    : QDialog(parent), comPort_(comPort) {
    setObjectName(QStringLiteral("NetworkDeviceDialog"));
    setWindowTitle(QStringLiteral("Network Device For COM%1").arg(comPort));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(
        note(QStringLiteral("A unit on a serial device server: the server's name or address, "
                            "and the TCP port it gives the unit's serial line."),
             this));

    auto* form = new QFormLayout;
    host_ = new QLineEdit(this);
    host_->setObjectName(QStringLiteral("NetHostBox"));
    host_->setPlaceholderText(QStringLiteral("e.g. 10.0.0.5 or ds-mast-2"));
    form->addRow(QStringLiteral("&Host:"), host_);
    port_ = new QLineEdit(this);
    port_->setObjectName(QStringLiteral("NetPortBox"));
    port_->setPlaceholderText(QStringLiteral("e.g. 4001"));
    port_->setMaxLength(5);
    port_->setMaximumWidth(port_->fontMetrics().horizontalAdvance(QStringLiteral("000000")) * 2);
    form->addRow(QStringLiteral("&Port:"), port_);

    raw_ = new QRadioButton(QStringLiteral("&Raw TCP (socket://)"), this);
    raw_->setObjectName(QStringLiteral("NetRawOption"));
    rfc2217_ = new QRadioButton(QStringLiteral("RFC &2217 (rfc2217://)"), this);
    rfc2217_->setObjectName(QStringLiteral("NetRfc2217Option"));
    auto* kinds = new QVBoxLayout;
    kinds->addWidget(raw_);
    kinds->addWidget(note(QStringLiteral("The line's bytes as they are. Set the line speed and "
                                         "%1 on the server.")
                              .arg(kEightNoneOne),
                          this));
    kinds->addWidget(rfc2217_);
    kinds->addWidget(note(QStringLiteral("The console sets the server's line to the Baud Rate "
                                         "menu's speed and %1 each time it connects.")
                              .arg(kEightNoneOne),
                          this));
    form->addRow(QStringLiteral("Kind:"), kinds);
    layout->addLayout(form);

    // What OK will do, or why it cannot yet.
    result_ = new QLabel(this);
    result_->setObjectName(QStringLiteral("NetDeviceLabel"));
    result_->setWordWrap(true);
    layout->addWidget(result_);

    buttons_ = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons_->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("NetOkBut"));
    buttons_->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("NetCancelBut"));
    layout->addWidget(buttons_);
    connect(buttons_, &QDialogButtonBox::accepted, this, [this] {
        if (device()) {
            accept();
        }
    });
    connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);

    if (current) {
        host_->setText(current->host);
        port_->setText(QString::number(current->port));
    }
    // RFC 2217 unless the device chosen now is raw: it is the one that sets
    // the remote line to the console's speed.
    (current && current->kind == PortKind::RawTcp ? raw_ : rfc2217_)->setChecked(true);

    connect(host_, &QLineEdit::textChanged, this, &NetworkDeviceDialog::showProblems);
    connect(port_, &QLineEdit::textChanged, this, &NetworkDeviceDialog::showProblems);
    connect(raw_, &QRadioButton::toggled, this, &NetworkDeviceDialog::showProblems);
    showProblems();
    setMinimumWidth(fontMetrics().horizontalAdvance(QLatin1Char('x')) * 56);
}

std::optional<NetworkDevice> NetworkDeviceDialog::device() const {
    NetworkDevice chosen;
    if (!hostProblem(host_->text()).isEmpty() ||
        !portProblem(port_->text(), &chosen.port).isEmpty()) {
        return std::nullopt;
    }
    chosen.kind = raw_->isChecked() ? PortKind::RawTcp : PortKind::Rfc2217;
    chosen.host = normalisedHost(host_->text());
    return chosen;
}

void NetworkDeviceDialog::showProblems() {
    QString problem = hostProblem(host_->text());
    if (problem.isEmpty()) {
        problem = portProblem(port_->text());
    }
    const std::optional<NetworkDevice> chosen = device();
    result_->setText(
        chosen ? QStringLiteral("COM%1 will open %2").arg(comPort_).arg(chosen->toString())
               : problem);
    QPalette colours = palette();
    if (!chosen) {
        colours.setColor(QPalette::WindowText, kProblemColour);
    }
    result_->setPalette(colours);
    buttons_->button(QDialogButtonBox::Ok)->setEnabled(chosen.has_value());
}

}  // namespace halvex
