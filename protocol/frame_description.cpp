#include "protocol/frame_description.h"

#include <algorithm>
#include <cstdio>

namespace halvex::table {

namespace {

constexpr std::int64_t kHoldValue = 99999;

std::string decimal(std::int64_t value) {
    return std::to_string(value);
}

// Hundredths as degrees, in whole numbers so that every reader prints the
// same digits: -5 is "-0.05°".
std::string degrees(std::int64_t hundredths) {
    const std::int64_t whole = hundredths < 0 ? -hundredths : hundredths;
    char text[32];
    std::snprintf(text, sizeof text, "%s%lld.%02lld\xC2\xB0", hundredths < 0 ? "-" : "",
                  static_cast<long long>(whole / 100), static_cast<long long>(whole % 100));
    return text;
}

const char* nameOf(const std::vector<ValueName>& names, unsigned value) {
    for (const ValueName& entry : names) {
        if (entry.value == value) {
            return entry.name;
        }
    }
    return nullptr;
}

int lowestBit(unsigned mask) {
    int shift = 0;
    while (mask != 0 && (mask & 1u) == 0) {
        mask >>= 1;
        ++shift;
    }
    return shift;
}

std::uint32_t littleEndian(const std::vector<Byte>& bytes, int start, int size) {
    std::uint32_t value = 0;
    for (int i = size - 1; i >= 0; --i) {
        value = (value << 8) | bytes[static_cast<std::size_t>(start + i)];
    }
    return value;
}

std::int64_t signExtended(std::uint32_t value, int size) {
    const std::uint32_t top = 1u << (size * 8 - 1);
    return (value & top) != 0
               ? static_cast<std::int64_t>(value) - 2 * static_cast<std::int64_t>(top)
               : static_cast<std::int64_t>(value);
}

std::string flagNames(const Field& field, std::uint32_t value) {
    std::string text;
    for (int bit = 0; bit < field.size * 8; ++bit) {
        const std::uint32_t mask = 1u << bit;
        if ((field.mask & mask) == 0 || (value & mask) == 0) {
            continue;
        }
        if (!text.empty()) {
            text += ", ";
        }
        const char* name = nameOf(field.names, static_cast<unsigned>(bit));
        text += name != nullptr ? std::string(name) : "bit " + decimal(bit);
    }
    return text;
}

std::string printable(const std::vector<Byte>& bytes, int start, int size) {
    std::string text = "\"";
    for (int i = 0; i < size; ++i) {
        const Byte value = bytes[static_cast<std::size_t>(start + i)];
        text += value >= 0x20 && value <= 0x7E ? static_cast<char>(value) : '.';
    }
    return text + "\"";
}

std::string hexRange(const std::vector<Byte>& bytes, int start, int size) {
    if (size == 0) {
        return "none";
    }
    return hexBytes(std::vector<Byte>(bytes.begin() + start, bytes.begin() + start + size));
}

DescribedField describeField(const Field& field, const std::vector<Byte>& payload, int start,
                             int size) {
    DescribedField out;
    out.name = field.name;
    out.offset = start;
    out.size = size;
    switch (field.kind) {
        case FieldKind::Number: {
            const unsigned value =
                (littleEndian(payload, start, size) & field.mask) >> lowestBit(field.mask);
            out.number = static_cast<std::int64_t>(value) + field.bias;
            const char* name = nameOf(field.names, value);
            out.value = name != nullptr ? std::string(name) : decimal(out.number) + field.unit;
            break;
        }
        case FieldKind::Signed:
            out.number = signExtended(littleEndian(payload, start, size), size);
            out.value = decimal(out.number);
            break;
        case FieldKind::Angle:
        case FieldKind::TargetAngle:
            out.number = signExtended(littleEndian(payload, start, size), size);
            out.value = field.kind == FieldKind::TargetAngle && out.number == kHoldValue
                            ? "hold"
                            : degrees(out.number);
            break;
        case FieldKind::Flags:
            out.number = littleEndian(payload, start, size) & field.mask;
            out.value = flagNames(field, static_cast<std::uint32_t>(out.number));
            out.empty = out.value.empty();
            if (out.empty) {
                out.value = "none";
            }
            break;
        case FieldKind::Text:
            out.value = printable(payload, start, size);
            break;
        case FieldKind::Bytes:
            out.value = hexRange(payload, start, size);
            out.empty = size == 0;
            break;
    }
    return out;
}

// Decodes the payload (code first, LRC left off) by the layout; false when
// a field did not fit.
bool describePayload(const Layout& layout, const std::vector<Byte>& payload,
                     std::vector<DescribedField>& fields) {
    const int length = static_cast<int>(payload.size());
    int cursor = 1;
    int furthest = 1;
    for (const Field& field : layout.fields) {
        const int start = field.offset == Field::kFollows ? cursor : field.offset;
        int size = field.size;
        if (field.countAt > 0) {
            if (field.countAt >= length) {
                return false;
            }
            size = static_cast<int>(payload[static_cast<std::size_t>(field.countAt)] &
                                    field.countMask);
        } else if (size == 0) {
            size = std::max(0, length - start);
        }
        if (start + size > length) {
            return false;
        }
        fields.push_back(describeField(field, payload, start, size));
        cursor = start + size;
        furthest = std::max(furthest, cursor);
    }
    if (!layout.padded && length > furthest) {
        Field more;
        more.name = "more";
        more.kind = FieldKind::Bytes;
        fields.push_back(describeField(more, payload, furthest, length - furthest));
    }
    return true;
}

// Reads the stuffed fields after the start byte: address, then the message.
void unstuff(const std::vector<Byte>& wire, FrameDescription& out) {
    std::vector<Byte> values;
    for (std::size_t i = 1; i < wire.size(); ++i) {
        Byte value = wire[i];
        if (value == kEtx) {
            out.ended = true;
            break;
        }
        if (value == kEsc && i + 1 < wire.size()) {
            value = unstuffed(wire[++i]);
        }
        values.push_back(value);
    }
    if (!values.empty()) {
        out.address = values.front();
        out.message.assign(values.begin() + 1, values.end());
    }
}

}  // namespace

std::string hexBytes(const std::vector<Byte>& bytes) {
    static const char kDigits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(bytes.size() * 3);
    for (Byte value : bytes) {
        if (!text.empty()) {
            text += ' ';
        }
        text += kDigits[value >> 4];
        text += kDigits[value & 0x0F];
    }
    return text;
}

FrameDescription describeFrame(const std::vector<Byte>& wire) {
    FrameDescription out;
    const Byte start = wire.empty() ? 0 : wire.front();
    if (start == kStx) {
        out.start = FrameStart::Command;
        out.direction = Direction::ToUnit;
    } else if (start == kAck) {
        out.start = FrameStart::Reply;
    } else if (start == kNak) {
        out.start = FrameStart::Refusal;
    } else {
        out.name = "noise";
        return out;
    }
    unstuff(wire, out);

    std::vector<Byte> payload = out.message;
    if (out.ended && !payload.empty()) {
        out.lrc = payload.back();
        payload.pop_back();
        Byte sum = *out.address;  // the first value read
        for (Byte value : out.message) {
            sum ^= value;
        }
        out.lrcMatchesAddress = sum == 0;
    }
    if (payload.empty()) {
        out.name = out.start == FrameStart::Refusal ? "refusal" : "empty frame";
        return out;
    }
    out.code = payload.front();
    if (out.start == FrameStart::Refusal) {
        // A NAK names the command it refuses.
        out.name = "refusal";
        const Message* refused = findMessage(Direction::ToUnit, payload.front());
        out.fields.push_back({"of",
                              refused != nullptr ? refused->layouts.back().name : "unknown code",
                              payload.front(), 0, 1, false});
        return out;
    }
    const Layout* layout = layoutFor(out.direction, payload);
    if (layout == nullptr) {
        out.name = "unknown code";
        Field rest;
        rest.name = "payload";
        rest.kind = FieldKind::Bytes;
        out.fields.push_back(describeField(rest, payload, 1, static_cast<int>(payload.size()) - 1));
        return out;
    }
    out.name = layout->name;
    out.shortPayload = !describePayload(*layout, payload, out.fields);
    return out;
}

std::string FrameDescription::fieldsText() const {
    std::string text;
    for (const DescribedField& field : fields) {
        if (field.empty) {
            continue;
        }
        if (!text.empty()) {
            text += "; ";
        }
        text += field.name + " " + field.value;
    }
    return text;
}

std::string FrameDescription::summary() const {
    std::string text = name;
    const std::string values = fieldsText();
    if (!values.empty()) {
        text += ": " + values;
    }
    if (start != FrameStart::Noise && !ended) {
        text += " (cut)";
    } else if (shortPayload) {
        text += " (short)";
    }
    return text;
}

}  // namespace halvex::table
