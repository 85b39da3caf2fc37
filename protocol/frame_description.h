#pragma once

// What a frame on the line says, by the protocol table: its direction,
// address, code and name, each field of its payload as text, and whether
// its LRC adds up. Takes any bytes (a frame as it crossed the line, cut
// short, noise); never fails. The Wireshark dissector describes frames the
// same way, word for word.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "protocol/frame.h"
#include "protocol/protocol_table.h"

namespace halvex::table {

enum class FrameStart { Command, Reply, Refusal, Noise };

struct DescribedField {
    std::string name;
    std::string value;        // as shown: "12.34°", "moving CW, target", "hold"
    std::int64_t number = 0;  // the value as a number, angles in hundredths
    int offset = 0;           // in the message: 0 is the code
    int size = 0;
    bool empty = false;  // flags with none set, left out of the one-line text
};

struct FrameDescription {
    FrameStart start = FrameStart::Noise;
    Direction direction = Direction::FromUnit;
    std::optional<Byte> address;
    std::optional<Byte> code;
    // "position report", "jog message", "noise", "unknown code"
    std::string name;
    std::vector<DescribedField> fields;
    // Unstuffed, code first; the LRC is its last byte when the frame ended.
    std::vector<Byte> message;
    bool ended = false;         // closed by a raw ETX
    bool shortPayload = false;  // the layout needed more bytes than came
    std::optional<Byte> lrc;
    // The address XOR the message is zero: the check the unit makes, and the
    // console's too when the reply comes from the unit it talks to.
    bool lrcMatchesAddress = false;

    // "pan 12.34°; tilt -5.00°; status C moving CW, target"
    std::string fieldsText() const;
    // "position report: pan 12.34°; ...", with " (short)" or " (cut)".
    std::string summary() const;
};

FrameDescription describeFrame(const std::vector<Byte>& wire);

// "06 01 31 ... 03": every byte in two upper-case digits, blank between.
std::string hexBytes(const std::vector<Byte>& bytes);

}  // namespace halvex::table
