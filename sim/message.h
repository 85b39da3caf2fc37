#pragma once

// A command as the unit receives it and a reply as it builds one. Byte
// numbers follow the wire: byte 0 is the code, byte 1 the first payload byte.

#include <cstdint>
#include <vector>

#include "protocol/frame.h"
#include "protocol/vocabulary.h"

namespace halvex::sim {

class Command {
  public:
    explicit Command(const std::vector<Byte>& message) : message_(message) {}

    Byte code() const { return message_.front(); }
    std::size_t payloadSize() const { return message_.size() - 1; }
    // Byte n of the message; bytes past the end read as 0 so that handlers
    // with optional trailing bytes need no special cases.
    Byte byte(std::size_t n) const { return n < message_.size() ? message_[n] : 0; }
    // Signed 24-bit value in bytes first..first+2, low byte first.
    std::int32_t angle(std::size_t first) const {
        return Build24(byte(first + 2), byte(first + 1), byte(first));
    }
    // A field of the vocabulary; bytes past the end read as 0 here too.
    template <class M>
    std::uint32_t field(vocab::Field<M> place) const {
        return vocab::get(*this, place);
    }
    Byte operator[](int n) const { return byte(static_cast<std::size_t>(n)); }
    // Bit 7 of byte 1 marks a read request in every get/set pair.
    bool isRead() const { return (byte(1) & 0x80) != 0; }

  private:
    const std::vector<Byte>& message_;
};

class Reply {
  public:
    explicit Reply(Byte code) : message_{code} {}

    // A field of the vocabulary, the message growing to hold it.
    template <class M>
    Reply& set(vocab::Field<M> place, std::uint32_t value) {
        const auto end = static_cast<std::size_t>(place.offset + place.size);
        if (message_.size() < end) {
            message_.resize(end, 0);
        }
        vocab::put(message_, place, value);
        return *this;
    }

    Reply& byte(int value) {
        message_.push_back(static_cast<Byte>(value & 0xFF));
        return *this;
    }
    // Signed 24-bit value, low byte first.
    Reply& angle(std::int32_t value) {
        Byte b2 = 0;
        Byte b1 = 0;
        Byte b0 = 0;
        Split24(value, b2, b1, b0);
        return byte(b0).byte(b1).byte(b2);
    }
    // 16-bit value, low byte first.
    Reply& word(int value) { return byte(value).byte(value >> 8); }

    const std::vector<Byte>& message() const { return message_; }

  private:
    std::vector<Byte> message_;
};

}  // namespace halvex::sim
