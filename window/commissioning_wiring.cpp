#include "window/commissioning_wiring.h"

#include <QMainWindow>
#include <QStatusBar>

#include "commissioning/commissioning_menu.h"
#include "connection/connection_sequence.h"
#include "connection/port_selection.h"
#include "protocol/port_map.h"

namespace halvex {

void installCommissioning(ConsoleContext& context, QMenu* unitMenu, PortSelection& ports,
                          SerialPort& port, ConnectionSequence& connection) {
    QWidget* window = context.window;
    commissioning::CommissioningHooks hooks;
    hooks.busy = [&connection] { return connection.running(); };
    hooks.openLine = [&context, &ports, &port] {
        if (!port.open(comPortDevice(ports.comPort()), ports.baudRate())) {
            context.messages.exclamation(
                QStringLiteral("Could Not Open COM%1").arg(ports.comPort()),
                QStringLiteral("There was a problem opening the serial port. Please check your "
                               "port selection under 'Port' and try again."));
            return false;
        }
        context.link.Timer2().start();
        return true;
    };
    hooks.closeLine = [&context, &port] {
        context.link.stop();
        port.close();
        context.state.LinkFault = false;
        context.state.setLamp(LinkLamp::None);
    };
    hooks.factoryOpen = [window] {
        const auto* cover = window->findChild<QWidget*>(QStringLiteral("PassFrame"));
        return cover != nullptr && cover->isHidden();
    };
    hooks.showStatus = [window](const QString& message) {
        if (auto* main = qobject_cast<QMainWindow*>(window)) {
            main->statusBar()->showMessage(message, 15000);
        }
    };
    new commissioning::CommissioningMenu(context, unitMenu, std::move(hooks), window);
}

}  // namespace halvex
