#pragma once

#include <QMenu>

#include "console/console_context.h"

namespace halvex {

class ConnectionSequence;
class PortSelection;
class SerialPort;

// Puts Find Units, Save Unit Settings and Restore Unit Settings into the
// Unit menu, lending them the port (a search may run offline), the factory
// area's state and Talk To ID.
void installCommissioning(ConsoleContext& context, QMenu* unitMenu, PortSelection& ports,
                          SerialPort& port, ConnectionSequence& connection);

}  // namespace halvex
