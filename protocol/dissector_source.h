#pragma once

// The Wireshark dissector is generated from the protocol table: a Lua engine
// written by hand (data/wireshark/halvex.lua.in) that knows how frames are
// built and how each kind of field reads, and the table itself written out
// as Lua in place of its marker line. No Qt.

#include <string>
#include <vector>

namespace halvex::table {

// The line of the engine that the table replaces.
inline constexpr const char* kDissectorTableMarker = "-- @PROTOCOL_TABLE@";

// One filter field of the dissector, "halvex.<key>", for every field name.
struct FilterField {
    std::string key;    // "pan", "zoom_1", "camera_1_baud"
    std::string label;  // "pan"
    std::string type;   // "double", "uint32", "int32", "string", "bytes"
};

// Every field name of the table with its filter field. Fields of one name
// share one filter field, so they must agree on its type; `conflicts` names
// those that do not (the table is then wrong).
std::vector<FilterField> filterFields(std::vector<std::string>* conflicts = nullptr);

// The table as Lua: MESSAGES[direction][code] = { layouts }, FILTER_FIELDS.
std::string dissectorTable();

// The engine with the table in place of its marker line; empty when the
// engine has no marker.
std::string dissectorSource(const std::string& engine);

}  // namespace halvex::table
