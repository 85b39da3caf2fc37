#pragma once

// The protocol reference for people: docs/protocol.md, written from the
// protocol table so that it says what the console and the virtual unit do.
// Technicians and the writers of other programs that talk to a unit read it
// instead of the code. Plain C++, no Qt.

#include <string>

namespace halvex::table {

// The whole page as Markdown: the frame, stuffing and LRC with a worked
// example, then every message of the table with its layouts and fields.
std::string protocolReference();

}  // namespace halvex::table
