#include "protocol/protocol_reference.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>
#include <sstream>

#include "protocol/frame.h"
#include "protocol/frame_description.h"
#include "protocol/protocol_table.h"

namespace halvex::table {
namespace {

std::string hex(unsigned value, int digits = 2) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", digits, value);
    return text;
}

int fullMask(int size) {
    return size >= 4 ? -1 : static_cast<int>((1u << (size * 8)) - 1);
}

int lowestMaskBit(unsigned mask) {
    int bit = 0;
    while (bit < 31 && (mask & (1u << bit)) == 0) {
        ++bit;
    }
    return bit;
}

int highestMaskBit(unsigned mask) {
    int bit = 31;
    while (bit > 0 && (mask & (1u << bit)) == 0) {
        --bit;
    }
    return bit;
}

// "1", "1-3", "16 on", "after camera 1 data".
std::string place(const Field& field, const std::string& previous) {
    if (field.offset == Field::kFollows) {
        return "after " + previous;
    }
    const std::string start = std::to_string(field.offset);
    const bool runs = field.kind == FieldKind::Text || field.kind == FieldKind::Bytes;
    if (runs && (field.size == 0 || field.countAt > 0)) {
        return start + " on";
    }
    return field.size > 1 ? start + "-" + std::to_string(field.offset + field.size - 1) : start;
}

// The bits a field takes, where it does not take its bytes whole.
std::string bitsOf(const Field& field) {
    const bool whole = field.kind == FieldKind::Text || field.kind == FieldKind::Bytes ||
                       static_cast<int>(field.mask) == fullMask(field.size);
    if (whole) {
        return "";
    }
    const int low = lowestMaskBit(field.mask);
    const int high = highestMaskBit(field.mask);
    return low == high ? std::to_string(low) : std::to_string(low) + "-" + std::to_string(high);
}

std::string kindOf(const Field& field, const std::string& countName) {
    std::string kind;
    switch (field.kind) {
        case FieldKind::Number:
            kind = field.size > 1 ? "unsigned, low byte first" : "unsigned";
            break;
        case FieldKind::Signed:
            kind = "signed (two's complement), low byte first";
            break;
        case FieldKind::Angle:
            kind = "angle: signed, hundredths of a degree, low byte first";
            break;
        case FieldKind::TargetAngle:
            kind = "angle: signed, hundredths of a degree, low byte first; 99999 holds the axis";
            break;
        case FieldKind::Flags:
            kind = "bits";
            break;
        case FieldKind::Text:
            kind = "characters";
            break;
        case FieldKind::Bytes:
            kind = "bytes";
            break;
    }
    if (field.countAt > 0) {
        kind += "; as many as " + countName;
    } else if ((field.kind == FieldKind::Text || field.kind == FieldKind::Bytes) &&
               field.size == 0) {
        kind += ", to the end";
    } else if (field.kind == FieldKind::Text) {
        kind += ", " + std::to_string(field.size);
    }
    if (field.bias != 0) {
        kind += "; plus " + std::to_string(field.bias);
    }
    if (!field.unit.empty()) {
        kind += "; in" + field.unit;
    }
    return kind;
}

std::string valuesOf(const Field& field) {
    std::string text;
    for (const ValueName& name : field.names) {
        if (!text.empty()) {
            text += ", ";
        }
        text += field.kind == FieldKind::Flags
                    ? "bit " + std::to_string(name.value) + " " + name.name
                    : std::to_string(name.value) + " " + name.name;
    }
    return text;
}

// What the byte that counts a field is called: "byte 14, bits 0-6".
std::string countName(const Field& field, const Layout& layout) {
    for (const Field& other : layout.fields) {
        if (other.offset == field.countAt && other.kind == FieldKind::Number) {
            return other.name + " says";
        }
    }
    std::string name = "byte " + std::to_string(field.countAt);
    if (field.countMask != 0xFF) {
        name += " bits " + std::to_string(lowestMaskBit(field.countMask)) + "-" +
                std::to_string(highestMaskBit(field.countMask));
    }
    return name + " says";
}

std::string when(const Layout& layout, bool only) {
    switch (layout.match.kind) {
        case Match::Kind::Always:
            return only ? "" : "Otherwise.";
        case Match::Kind::Length:
            return layout.match.value == 1
                       ? std::string("When the message is the code alone.")
                       : "When the message is " + std::to_string(layout.match.value) +
                             " bytes long, code included.";
        case Match::Kind::Bits: {
            const std::string byte = "byte " + std::to_string(layout.match.index);
            if (layout.match.mask == layout.match.value &&
                lowestMaskBit(layout.match.mask) == highestMaskBit(layout.match.mask)) {
                return "When bit " + std::to_string(lowestMaskBit(layout.match.mask)) + " of " +
                       byte + " is set.";
            }
            return "When " + byte + " AND " + hex(layout.match.mask) + " is " +
                   hex(layout.match.value) + ".";
        }
    }
    return "";
}

// A Markdown table cell: a bar would end it.
std::string cell(std::string text) {
    for (std::size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2)) {
        text.replace(at, 1, "\\|");
    }
    return text;
}

// The field table of a layout, fields in the order of their bytes and bits.
std::string fieldTable(const Layout& layout) {
    struct Row {
        int byte;
        int bit;
        std::string text;
    };
    std::vector<Row> rows;
    std::string previous;
    int previousByte = 0;
    for (const Field& field : layout.fields) {
        const std::string counted = field.countAt > 0 ? countName(field, layout) : "";
        // A field that follows another sorts right after it.
        const int byte = field.offset == Field::kFollows ? previousByte : field.offset;
        rows.push_back({byte, lowestMaskBit(field.mask),
                        "| " + place(field, previous) + " | " + bitsOf(field) + " | " +
                            cell(field.name) + " | " + cell(kindOf(field, counted)) + " | " +
                            cell(valuesOf(field)) + " |\n"});
        previous = field.name;
        previousByte = byte;
    }
    std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
        return a.byte != b.byte ? a.byte < b.byte : a.bit > b.bit;
    });
    std::string table = "| Byte | Bits | Field | Kind | Values |\n|---|---|---|---|---|\n";
    for (const Row& row : rows) {
        table += row.text;
    }
    return table;
}

// Where each layout was written out first, so that the reports that answer
// every move refer back instead of repeating themselves.
using Written = std::map<std::string, std::string>;

std::string anchor(const std::string& heading) {
    std::string out;
    for (char c : heading) {
        if (c == ' ') {
            out += '-';
        } else if (c != ',') {
            out += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        }
    }
    return out;
}

void writeLayout(std::ostringstream& out, const Layout& layout, bool only,
                 const std::string& heading, Written& written) {
    out << "**" << layout.name << "**";
    const std::string condition = when(layout, only);
    if (!condition.empty()) {
        out << ". " << condition;
    }
    if (layout.padded) {
        out << " Zeros pad it to the length of the command that sets the same values; the unit "
               "reads none of them.";
    }
    out << "\n\n";
    if (layout.fields.empty()) {
        if (layout.match.kind != Match::Kind::Bits && !layout.padded) {
            out << "The code alone.\n\n";
        }
        return;
    }
    const std::string table = fieldTable(layout);
    const auto [first, isNew] = written.emplace(layout.name + "\n" + table, heading);
    if (!isNew) {
        out << "Laid out as under [" << first->second << "](#" << anchor(first->second) << ").\n\n";
        return;
    }
    out << table << "\n";
}

const char* kFrame = R"(## Frames

Every message travels in a frame. There is no length field: a raw 0x03
ends the frame, and stuffing keeps that value out of everything between.

| Byte | Console to unit | Unit to console |
|---|---|---|
| start | 0x02, never stuffed | 0x06, never stuffed |
| address | the unit's address (0 reaches every unit); stuffed | the replying unit's address; stuffed |
| code | the command code; stuffed | the code of the command it answers; stuffed |
| payload | the message's fields, each byte stuffed | the reply's fields, each byte stuffed |
| LRC | stuffed | stuffed |
| end | 0x03, never stuffed | 0x03, never stuffed |

**Stuffing.** A byte of value 0x02, 0x03, 0x06, 0x15 or 0x1B inside a frame
is sent as two bytes: 0x1B, then the value with bit 7 set (OR 0x80). A
receiver takes 0x1B and the byte after it as that byte with bit 7 cleared.

**LRC.** The exclusive or of the address, the code and every payload byte,
as they are before stuffing. A unit checks that its address XOR the code,
payload and LRC of a command is zero; the console checks a reply the same
way from the address it talks to, not from the address the reply carries.

**Numbers.** Multi-byte numbers travel low byte first. Angles are signed
24-bit numbers in hundredths of a degree: 12.34 degrees is 1234, sent as
0xD2 0x04 0x00.

**Reading a setting.** A command that sets a value reads it instead when
bit 7 (0x80) of its byte 1 is set; zeros pad such a request to the length
of the setting command, and the unit answers with the setting. Bit 6 (0x40)
of a setting byte, where the message names it "store", asks the unit to
keep the setting as its power-up setting.

)";

// A frame built from the table, with every byte on the wire explained.
void writeExample(std::ostringstream& out) {
    constexpr Byte kAddress = 2;
    constexpr Byte kCode = 0x32;
    constexpr Byte kPreset = 3;
    const Message* goTo = findMessage(Direction::ToUnit, kCode);
    const std::string name = goTo != nullptr ? goTo->layouts.back().name : "go to preset";
    const std::vector<Byte> message = {kCode, kPreset};
    const std::vector<Byte> wire = encodeFrame(kStx, kAddress, message, kAddress);
    const Byte lrc = static_cast<Byte>(kAddress ^ kCode ^ kPreset);

    out << "## A frame, byte by byte\n\n";
    out << "The console tells the unit at address " << int{kAddress} << " to " << name << " "
        << int{kPreset} << ":\n\n";
    out << "| Part | Value | On the wire | Why |\n|---|---|---|---|\n";
    const auto row = [&out](const char* part, Byte value, const char* why) {
        std::vector<Byte> stuffed;
        appendStuffed(stuffed, value);
        out << "| " << part << " | " << hex(value) << " | " << hexBytes(stuffed) << " | " << why
            << " |\n";
    };
    out << "| start | 0x02 | 02 | a command |\n";
    row("address", kAddress, "0x02 is stuffed: 0x1B, then 0x02 OR 0x80");
    row("code", kCode, name.c_str());
    row("preset", kPreset, "0x03 is stuffed too");
    row("LRC", lrc, "0x02 XOR 0x32 XOR 0x03");
    out << "| end | 0x03 | 03 | raw: the frame ends |\n\n";
    out << "On the line: `" << hexBytes(wire) << "`.\n\n";
}

void writeIndex(std::ostringstream& out) {
    out << "## Codes\n\n| Code | Console to unit | Unit to console |\n|---|---|---|\n";
    for (Byte code : knownCodes()) {
        const auto names = [code](Direction direction) {
            const Message* message = findMessage(direction, code);
            std::string text;
            if (message == nullptr) {
                return text;
            }
            std::vector<std::string> seen;
            for (const Layout& layout : message->layouts) {
                if (std::find(seen.begin(), seen.end(), layout.name) == seen.end()) {
                    text += (text.empty() ? "" : ", ") + layout.name;
                    seen.push_back(layout.name);
                }
            }
            return text;
        };
        out << "| " << hex(code) << " | " << names(Direction::ToUnit) << " | "
            << names(Direction::FromUnit) << " |\n";
    }
    out << "\n";
}

}  // namespace

std::string protocolReference() {
    std::ostringstream out;
    out << "# The Halvex serial protocol\n\n"
           "How the console and a Halvex unit talk over the serial line. This page is\n"
           "written from the console's protocol table by the build\n"
           "(`halvex-protocol-doc`); edit the table, not the page.\n\n";
    out << kFrame;
    writeExample(out);
    writeIndex(out);
    out << "## Messages\n\nByte 0 of a message is its code; the payload starts at byte 1. "
           "Bits are numbered from 0, the lowest.\n\n";
    Written written;
    for (const Message& message : messages()) {
        const std::string heading =
            hex(message.code) + ", " +
            (message.direction == Direction::ToUnit ? "console to unit" : "unit to console");
        out << "### " << heading << "\n\n";
        for (const Layout& layout : message.layouts) {
            writeLayout(out, layout, message.layouts.size() == 1, heading, written);
        }
    }
    return out.str();
}

}  // namespace halvex::table
