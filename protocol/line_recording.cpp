#include "protocol/line_recording.h"

#include <limits>

namespace halvex::recording {

namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;

constexpr std::uint16_t kEndOfOptions = 0;
constexpr std::uint16_t kShbUserApplication = 4;
constexpr std::uint16_t kIfName = 2;
constexpr std::uint16_t kIfDescription = 3;
constexpr std::uint16_t kIfTimeResolution = 9;
constexpr std::uint16_t kEpbFlags = 2;

// epb_flags: bits 0-1 direction, bits 24-31 link-layer errors.
constexpr std::uint32_t kInbound = 1;
constexpr std::uint32_t kOutbound = 2;
constexpr std::uint32_t kDirectionMask = 3;
constexpr std::uint32_t kCrcError = 1u << 24;
constexpr std::uint32_t kTooShort = 1u << 26;
constexpr std::uint32_t kSymbolError = 1u << 31;

constexpr std::uint32_t kFrameInterface = 0;
constexpr std::uint32_t kEventInterface = 1;

std::size_t padded(std::size_t length) {
    return (length + 3) & ~static_cast<std::size_t>(3);
}

class BlockWriter {
  public:
    explicit BlockWriter(std::uint32_t type) {
        u32(type);
        u32(0);  // total length, filled in by finish()
    }
    BlockWriter& u16(std::uint16_t value) {
        bytes_.push_back(static_cast<Byte>(value & 0xFF));
        bytes_.push_back(static_cast<Byte>(value >> 8));
        return *this;
    }
    BlockWriter& u32(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            bytes_.push_back(static_cast<Byte>((value >> shift) & 0xFF));
        }
        return *this;
    }
    BlockWriter& data(const std::vector<Byte>& data) {
        bytes_.insert(bytes_.end(), data.begin(), data.end());
        bytes_.resize(padded(bytes_.size()), 0);
        return *this;
    }
    BlockWriter& option(std::uint16_t code, const std::vector<Byte>& value) {
        u16(code).u16(static_cast<std::uint16_t>(value.size()));
        return data(value);
    }
    BlockWriter& option(std::uint16_t code, const std::string& value) {
        return option(code, std::vector<Byte>(value.begin(), value.end()));
    }
    std::vector<Byte> finish() {
        const auto total = static_cast<std::uint32_t>(bytes_.size() + 4);
        u32(total);
        for (int i = 0; i < 4; ++i) {
            bytes_[4 + static_cast<std::size_t>(i)] = static_cast<Byte>((total >> (8 * i)) & 0xFF);
        }
        return std::move(bytes_);
    }

  private:
    std::vector<Byte> bytes_;
};

std::vector<Byte> interfaceBlock(std::uint16_t linkType, const std::string& name,
                                 const std::string& description) {
    BlockWriter block(kInterfaceDescription);
    block.u16(linkType).u16(0).u32(0);  // reserved, no snapshot limit
    block.option(kIfName, name).option(kIfDescription, description);
    block.option(kIfTimeResolution, std::vector<Byte>{6});
    block.u16(kEndOfOptions).u16(0);
    return block.finish();
}

std::uint32_t packetFlags(const LineRecord& record) {
    if (record.kind == LineKind::Sent) {
        return kOutbound;
    }
    switch (record.verdict) {
        case Verdict::Good:
            return kInbound;
        case Verdict::BadLrc:
            return kInbound | kCrcError;
        case Verdict::Cut:
            return kInbound | kTooShort;
        case Verdict::Noise:
            return kInbound | kSymbolError;
    }
    return kInbound;
}

Verdict verdictOf(std::uint32_t flags) {
    if ((flags & kSymbolError) != 0) {
        return Verdict::Noise;
    }
    if ((flags & kTooShort) != 0) {
        return Verdict::Cut;
    }
    return (flags & kCrcError) != 0 ? Verdict::BadLrc : Verdict::Good;
}

// Converts a time stamp in the interface's units to microseconds, saturating.
std::int64_t microseconds(std::uint64_t stamp, Byte resolution) {
    using Wide = unsigned __int128;
    const unsigned exponent = resolution & 0x7Fu;
    Wide value = 0;
    if ((resolution & 0x80) != 0) {
        value = exponent >= 100 ? 0 : (static_cast<Wide>(stamp) * 1000000u) >> exponent;
    } else if (exponent <= 6) {
        value = stamp;
        for (unsigned i = exponent; i < 6; ++i) {
            value *= 10u;
        }
    } else {
        value = stamp;
        for (unsigned i = 6; i < exponent && value != 0; ++i) {
            value /= 10u;
        }
    }
    const auto most = static_cast<Wide>(std::numeric_limits<std::int64_t>::max());
    return static_cast<std::int64_t>(value > most ? most : value);
}

}  // namespace

std::vector<Byte> recordingHeader(const std::string& application, const std::string& line) {
    BlockWriter section(kSectionHeader);
    section.u32(kByteOrderMagic).u16(1).u16(0);
    section.u32(0xFFFFFFFF).u32(0xFFFFFFFF);  // section length not given
    section.option(kShbUserApplication, application).u16(kEndOfOptions).u16(0);
    std::vector<Byte> file = section.finish();
    for (const auto& block :
         {interfaceBlock(kFrameLinkType, line, "Halvex serial line: one packet a frame"),
          interfaceBlock(kEventLinkType, "events", "Halvex link events")}) {
        file.insert(file.end(), block.begin(), block.end());
    }
    return file;
}

std::vector<Byte> recordingBlock(const LineRecord& record) {
    BlockWriter block(kEnhancedPacket);
    const bool event = record.kind == LineKind::Event;
    const auto stamp = static_cast<std::uint64_t>(record.timeUs < 0 ? 0 : record.timeUs);
    block.u32(event ? kEventInterface : kFrameInterface);
    block.u32(static_cast<std::uint32_t>(stamp >> 32)).u32(static_cast<std::uint32_t>(stamp));
    const auto length = static_cast<std::uint32_t>(record.bytes.size());
    block.u32(length).u32(length).data(record.bytes);
    if (!event) {
        block.u16(kEpbFlags).u16(4).u32(packetFlags(record));
        block.u16(kEndOfOptions).u16(0);
    }
    return block.finish();
}

std::uint16_t RecordingReader::u16(std::size_t at) const {
    const Byte a = data_[at];
    const Byte b = data_[at + 1];
    return static_cast<std::uint16_t>(bigEndian_ ? (a << 8) | b : (b << 8) | a);
}

std::uint32_t RecordingReader::u32(std::size_t at) const {
    const std::uint32_t low = u16(at);
    const std::uint32_t high = u16(at + 2);
    return bigEndian_ ? (low << 16) | high : (high << 16) | low;
}

bool RecordingReader::fail(const std::string& reason) {
    stopped_ = true;
    error_ = reason + " at byte " + std::to_string(position_);
    return false;
}

bool RecordingReader::readSectionHeader(std::size_t body, std::size_t bodyLength) {
    if (bodyLength < 16) {
        return fail("section header too short");
    }
    if (u16(body + 4) != 1) {
        return fail("unknown pcapng version " + std::to_string(u16(body + 4)));
    }
    inSection_ = true;
    interfaces_.clear();
    return true;
}

bool RecordingReader::readInterface(std::size_t body, std::size_t bodyLength) {
    if (bodyLength < 8) {
        return fail("interface description too short");
    }
    Interface interface;
    interface.linkType = u16(body);
    std::size_t option = body + 8;
    const std::size_t end = body + bodyLength;
    while (option + 4 <= end) {
        const std::uint16_t code = u16(option);
        const std::size_t length = u16(option + 2);
        if (code == kEndOfOptions) {
            break;
        }
        if (option + 4 + length > end) {
            return fail("interface option runs past its block");
        }
        if (code == kIfTimeResolution && length >= 1) {
            interface.timeResolution = data_[option + 4];
        }
        option += 4 + padded(length);
    }
    interfaces_.push_back(interface);
    return true;
}

std::optional<LineRecord> RecordingReader::readPacket(std::size_t body, std::size_t bodyLength) {
    if (bodyLength < 20) {
        fail("packet block too short");
        return std::nullopt;
    }
    const std::uint32_t interfaceId = u32(body);
    if (interfaceId >= interfaces_.size()) {
        fail("packet of an interface never described");
        return std::nullopt;
    }
    const std::size_t captured = u32(body + 12);
    if (captured > bodyLength - 20) {
        fail("packet data runs past its block");
        return std::nullopt;
    }
    std::uint32_t flags = 0;
    std::size_t option = body + 20 + padded(captured);
    const std::size_t end = body + bodyLength;
    while (option + 4 <= end) {
        const std::uint16_t code = u16(option);
        const std::size_t length = u16(option + 2);
        if (code == kEndOfOptions) {
            break;
        }
        if (option + 4 + length > end) {
            fail("packet option runs past its block");
            return std::nullopt;
        }
        if (code == kEpbFlags && length == 4) {
            flags = u32(option + 4);
        }
        option += 4 + padded(length);
    }
    const Interface& interface = interfaces_[interfaceId];
    if (interface.linkType != kFrameLinkType && interface.linkType != kEventLinkType) {
        return std::nullopt;
    }
    LineRecord record;
    const std::uint64_t stamp = (static_cast<std::uint64_t>(u32(body + 4)) << 32) | u32(body + 8);
    record.timeUs = microseconds(stamp, interface.timeResolution);
    record.bytes.assign(data_ + body + 20, data_ + body + 20 + captured);
    if (interface.linkType == kEventLinkType) {
        record.kind = LineKind::Event;
        return record;
    }
    const std::uint32_t direction = flags & kDirectionMask;
    const bool sent = direction == kOutbound ||
                      (direction != kInbound && !record.bytes.empty() && record.bytes[0] == kStx);
    record.kind = sent ? LineKind::Sent : LineKind::Received;
    record.verdict = sent ? Verdict::Good : verdictOf(flags);
    return record;
}

std::optional<LineRecord> RecordingReader::next() {
    while (!stopped_ && position_ < size_) {
        if (size_ - position_ < 12) {
            fail("file ends inside a block");
            return std::nullopt;
        }
        if (!inSection_) {
            // The byte order comes from the first section header.
            const std::uint32_t type = static_cast<std::uint32_t>(data_[position_]) |
                                       static_cast<std::uint32_t>(data_[position_ + 1]) << 8 |
                                       static_cast<std::uint32_t>(data_[position_ + 2]) << 16 |
                                       static_cast<std::uint32_t>(data_[position_ + 3]) << 24;
            if (type != kSectionHeader) {
                fail("not a pcapng file");
                return std::nullopt;
            }
        }
        if (u32(position_) == kSectionHeader) {
            bigEndian_ = false;
            if (u32(position_ + 8) != kByteOrderMagic) {
                bigEndian_ = true;
                if (u32(position_ + 8) != kByteOrderMagic) {
                    fail("section header without its byte-order magic");
                    return std::nullopt;
                }
            }
        }
        const std::uint32_t type = u32(position_);
        const std::size_t length = u32(position_ + 4);
        if (length < 12 || length % 4 != 0 || length > size_ - position_) {
            fail("block of impossible length " + std::to_string(length));
            return std::nullopt;
        }
        if (u32(position_ + length - 4) != length) {
            fail("block lengths at its two ends differ");
            return std::nullopt;
        }
        const std::size_t body = position_ + 8;
        const std::size_t bodyLength = length - 12;
        // Each reader stops the whole reading at a block it cannot read.
        std::optional<LineRecord> record;
        if (type == kSectionHeader) {
            readSectionHeader(body, bodyLength);
        } else if (type == kInterfaceDescription) {
            readInterface(body, bodyLength);
        } else if (type == kEnhancedPacket) {
            record = readPacket(body, bodyLength);
        }
        if (stopped_) {
            return std::nullopt;
        }
        position_ += length;
        if (record) {
            return record;
        }
    }
    return std::nullopt;
}

}  // namespace halvex::recording
