#pragma once

// The protocol table: every command the console sends and every reply the
// unit gives, by code, with its name and the layout of its payload. The Line
// Log, the Wireshark dissector (generated from it at build time), the
// decoders' registration and the tests all read this one table. Plain C++,
// no Qt.

#include <string>
#include <vector>

#include "protocol/frame.h"

namespace halvex::table {

enum class Direction { ToUnit, FromUnit };

enum class FieldKind {
    Number,       // unsigned, `size` bytes low first, masked and shifted down
    Signed,       // two's complement over `size` bytes, low first
    Angle,        // signed 24 bits in hundredths of a degree, shown in degrees
    TargetAngle,  // an angle of a move, where 99999 holds the axis
    Flags,        // the bits of `mask` that are set, by name
    Text,         // printable characters
    Bytes,        // hexadecimal
};

// A value's name (Number) or a bit's name (Flags: value is the bit number).
struct ValueName {
    unsigned value;
    const char* name;
};

struct Field {
    // Where the field starts when it follows the field before it.
    static constexpr int kFollows = -1;

    std::string name;
    FieldKind kind = FieldKind::Number;
    int offset = 1;  // index in the message: 0 is the code
    int size = 1;    // bytes; for Text and Bytes 0 runs to the end of the payload
    unsigned mask = 0xFF;
    std::vector<ValueName> names;
    // Text and Bytes whose length a byte of the message gives (the camera
    // data of the position report): that byte's index and the bits that count.
    int countAt = 0;
    unsigned countMask = 0xFF;
    int bias = 0;      // added to a Number: the year byte counts from 2000
    std::string unit;  // appended to the value: " s"
};

// Which layout of a code a message has: some codes carry a read request or
// a second variant in byte 1, or differ by length.
struct Match {
    enum class Kind { Always, Bits, Length };
    Kind kind = Kind::Always;
    int index = 0;  // Bits: the byte tested
    unsigned mask = 0;
    unsigned value = 0;  // Bits: byte AND mask equals this; Length: message length
};

struct Layout {
    std::string name;
    Match match;
    std::vector<Field> fields;
    // The bytes after the fields are padding (a "Get" is padded to the
    // length of its set command), not worth showing.
    bool padded = false;
};

struct Message {
    Byte code = 0;
    Direction direction = Direction::ToUnit;
    // Tried in order; the first whose match holds describes the message.
    std::vector<Layout> layouts;
};

// The whole table, in code order, commands before replies of the same code.
const std::vector<Message>& messages();

// The entry for a code in one direction, or nullptr for a code not in it.
const Message* findMessage(Direction direction, Byte code);

// The layout that describes `message` (code first, payload after, no LRC),
// or nullptr when the code is not in the table.
const Layout* layoutFor(Direction direction, const std::vector<Byte>& message);

// "jog message / position report": both directions' main names of a code,
// for lists that choose a code.
std::string codeCaption(Byte code);

// Every code the table knows, in either direction, ascending.
std::vector<Byte> knownCodes();

// The codes whose reply has a layout of this name ("position report").
std::vector<Byte> replyCodesNamed(const std::string& name);

}  // namespace halvex::table
