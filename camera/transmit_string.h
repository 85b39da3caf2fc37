#pragma once

// The camera transmit string: the text of a camera's transmit box turned into
// the bytes to pass through to the camera, or the message that refuses it.

#include <QString>
#include <cstdint>
#include <vector>

namespace halvex {

enum class TransmitMode { Ascii, Hex };

inline constexpr int kMaxTransmitBytes = 80;

struct TransmitString {
    // The bytes for the camera, with a carriage return when asked for.
    // Empty when refused.
    std::vector<std::uint8_t> data;
    // The box's new text; empty when refused, as the box then keeps what the
    // operator typed.
    QString boxText;
    // Set when refused: the message box's title and sentence.
    QString messageTitle;
    QString messageText;

    bool refused() const { return !messageText.isEmpty(); }
};

// ASCII text is sent one
// byte per character in Latin-1; a character outside Latin-1 is refused with
// a message naming it. A carriage return is appended whenever appendCr is
// set (the page keeps it cleared in hex mode).
TransmitString buildTransmitString(const QString& boxText, TransmitMode mode, bool appendCr);

}  // namespace halvex
