#include "protocol/dissector_source.h"

#include <cctype>
#include <map>
#include <sstream>

#include "protocol/frame.h"
#include "protocol/protocol_table.h"

namespace halvex::table {

namespace {

std::string keyOf(const std::string& name) {
    std::string key;
    for (char c : name) {
        const auto u = static_cast<unsigned char>(c);
        key += std::isalnum(u) ? static_cast<char>(std::tolower(u)) : '_';
    }
    return key;
}

const char* filterType(FieldKind kind) {
    switch (kind) {
        case FieldKind::Number:
        case FieldKind::Flags:
            return "uint32";
        case FieldKind::Signed:
            return "int32";
        case FieldKind::Angle:
        case FieldKind::TargetAngle:
            return "double";
        case FieldKind::Text:
            return "string";
        case FieldKind::Bytes:
            return "bytes";
    }
    return "bytes";
}

const char* kindName(FieldKind kind) {
    switch (kind) {
        case FieldKind::Number:
            return "number";
        case FieldKind::Signed:
            return "signed";
        case FieldKind::Angle:
            return "angle";
        case FieldKind::TargetAngle:
            return "target";
        case FieldKind::Flags:
            return "flags";
        case FieldKind::Text:
            return "text";
        case FieldKind::Bytes:
            return "bytes";
    }
    return "bytes";
}

// A Lua string literal. No text of the table holds a quote or a backslash
// today; one added later still reads as written.
std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    return out + "\"";
}

void writeMatch(std::ostream& out, const Match& match) {
    switch (match.kind) {
        case Match::Kind::Always:
            out << "{ kind = \"always\" }";
            break;
        case Match::Kind::Bits:
            out << "{ kind = \"bits\", index = " << match.index << ", mask = " << match.mask
                << ", value = " << match.value << " }";
            break;
        case Match::Kind::Length:
            out << "{ kind = \"length\", value = " << match.value << " }";
            break;
    }
}

void writeField(std::ostream& out, const Field& field) {
    out << "        { name = " << quoted(field.name) << ", key = " << quoted(keyOf(field.name))
        << ", kind = \"" << kindName(field.kind) << "\", offset = " << field.offset
        << ", size = " << field.size << ", mask = " << field.mask
        << ", count_at = " << field.countAt << ", count_mask = " << field.countMask
        << ", bias = " << field.bias << ", unit = " << quoted(field.unit) << ", names = {";
    for (const ValueName& name : field.names) {
        out << " [" << name.value << "] = " << quoted(name.name) << ",";
    }
    out << " } },\n";
}

void writeMessages(std::ostream& out, Direction direction) {
    out << "  [" << (direction == Direction::ToUnit ? "\"to_unit\"" : "\"from_unit\"") << "] = {\n";
    for (const Message& message : messages()) {
        if (message.direction != direction) {
            continue;
        }
        out << "    [" << static_cast<int>(message.code) << "] = {\n";
        for (const Layout& layout : message.layouts) {
            out << "      { name = " << quoted(layout.name)
                << ", padded = " << (layout.padded ? "true" : "false") << ", match = ";
            writeMatch(out, layout.match);
            out << ", fields = {\n";
            for (const Field& field : layout.fields) {
                writeField(out, field);
            }
            out << "      } },\n";
        }
        out << "    },\n";
    }
    out << "  },\n";
}

}  // namespace

std::vector<FilterField> filterFields(std::vector<std::string>* conflicts) {
    std::map<std::string, FilterField> byKey;
    for (const Message& message : messages()) {
        for (const Layout& layout : message.layouts) {
            for (const Field& field : layout.fields) {
                const FilterField filter{keyOf(field.name), field.name, filterType(field.kind)};
                const auto [known, added] = byKey.emplace(filter.key, filter);
                if (!added && known->second.type != filter.type && conflicts != nullptr) {
                    conflicts->push_back(field.name + " (" + known->second.type + " and " +
                                         filter.type + ")");
                }
            }
        }
    }
    // The fields every description may add.
    byKey.emplace("more", FilterField{"more", "more", "bytes"});
    byKey.emplace("payload", FilterField{"payload", "payload", "bytes"});
    byKey.emplace("of", FilterField{"of", "of", "uint32"});
    std::vector<FilterField> fields;
    for (auto& entry : byKey) {
        fields.push_back(entry.second);
    }
    return fields;
}

std::string dissectorTable() {
    std::ostringstream out;
    out << "-- Generated from the console's protocol table (protocol/protocol_table.cpp)\n"
           "-- and the framing of protocol/frame.h.\n";
    out << "local STX, ETX, ACK, NAK, ESC = " << int{kStx} << ", " << int{kEtx} << ", " << int{kAck}
        << ", " << int{kNak} << ", " << int{kEsc} << "\n";
    out << "local STUFF_BIT = " << int{kStuffBit} << "\n";
    out << "local MESSAGES = {\n";
    writeMessages(out, Direction::ToUnit);
    writeMessages(out, Direction::FromUnit);
    out << "}\n\nlocal FILTER_FIELDS = {\n";
    for (const FilterField& field : filterFields()) {
        out << "  { key = " << quoted(field.key) << ", label = " << quoted(field.label)
            << ", type = \"" << field.type << "\" },\n";
    }
    out << "}\n";
    return out.str();
}

std::string dissectorSource(const std::string& engine) {
    const std::string marker = kDissectorTableMarker;
    const auto at = engine.find(marker);
    if (at == std::string::npos) {
        return {};
    }
    return engine.substr(0, at) + dissectorTable() + engine.substr(at + marker.size());
}

}  // namespace halvex::table
