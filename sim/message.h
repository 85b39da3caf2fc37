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
    // A field holding a two's complement number: an angle.
    template <class M>
    std::int32_t signedField(vocab::Field<M> place) const {
        return vocab::getSigned(*this, place);
    }
    template <class M>
    bool isSet(vocab::Bit<M> bit) const {
        return vocab::isSet(byte(static_cast<std::size_t>(bit.offset)), bit);
    }
    Byte operator[](int n) const { return byte(static_cast<std::size_t>(n)); }
    // The read bit lies in the same place in every get/set pair, so any
    // message's will do.
    template <class M = Command>
    bool isRead() const {
        return isSet(vocab::kReadRequest<M>);
    }

  private:
    const std::vector<Byte>& message_;
};

class Reply {
  public:
    explicit Reply(Byte code) : message_{code} {}

    // A reply of M's full length, zeros but for the code. Where one layout
    // answers several commands, the reply carries the command's code.
    template <class M>
    static Reply of(Byte code = M::kCode) {
        Reply reply(code);
        reply.message_.resize(static_cast<std::size_t>(M::kLength), 0);
        return reply;
    }

    // A field of the vocabulary, the message growing to hold it.
    template <class M>
    Reply& set(vocab::Field<M> place, std::uint32_t value) {
        grow(place.offset + place.size);
        vocab::put(message_, place, value);
        return *this;
    }
    // A two's complement number: an angle.
    template <class M>
    Reply& setSigned(vocab::Field<M> place, std::int32_t value) {
        return set(place, static_cast<std::uint32_t>(value));
    }
    template <class M>
    Reply& set(vocab::Bit<M> bit, bool on) {
        grow(bit.offset + 1);
        const auto at = static_cast<std::size_t>(bit.offset);
        message_[at] = vocab::withBit(message_[at], bit, on);
        return *this;
    }

    Reply& byte(int value) {
        message_.push_back(static_cast<Byte>(value & 0xFF));
        return *this;
    }
    // Signed 24-bit value, low byte first.
    Reply& angle(std::int32_t value) {
        for (const Byte b : lowestFirst24(value)) {
            byte(b);
        }
        return *this;
    }
    // 16-bit value, low byte first.
    Reply& word(int value) { return byte(value).byte(value >> 8); }

    const std::vector<Byte>& message() const { return message_; }

  private:
    void grow(int length) {
        if (message_.size() < static_cast<std::size_t>(length)) {
            message_.resize(static_cast<std::size_t>(length), 0);
        }
    }

    std::vector<Byte> message_;
};

}  // namespace halvex::sim
