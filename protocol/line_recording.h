#pragma once

// Recordings of the line: pcapng files that Wireshark opens. One section;
// interface 0 carries the frames (LINKTYPE_USER0), one packet a frame as it
// crossed the line, its direction and the console's verdict in the packet
// flags; interface 1 (LINKTYPE_USER1) carries the link's events as text.
// Writing and reading, no Qt: the Line Log and the virtual unit's replay
// both read recordings through RecordingReader.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "protocol/frame.h"
#include "protocol/line_record.h"

namespace halvex::recording {

constexpr std::uint16_t kFrameLinkType = 147;  // LINKTYPE_USER0
constexpr std::uint16_t kEventLinkType = 148;  // LINKTYPE_USER1

// The start of a file: the section header naming the program, and the two
// interfaces, the frames' one named after the line ("COM1 (/dev/ttyUSB0)").
std::vector<Byte> recordingHeader(const std::string& application, const std::string& line);
// One record as an enhanced packet block.
std::vector<Byte> recordingBlock(const LineRecord& record);

// Reads a recording block by block. Blocks of other kinds, and packets of
// interfaces other than ours, are skipped; a malformed block ends the
// reading with a reason, the records before it stay good.
class RecordingReader {
  public:
    RecordingReader(const Byte* data, std::size_t size) : data_(data), size_(size) {}

    // The next record, or nothing at the end of the file or at a fault.
    std::optional<LineRecord> next();
    // Empty unless reading stopped at a fault.
    const std::string& error() const { return error_; }

  private:
    struct Interface {
        std::uint16_t linkType = 0;
        Byte timeResolution = 6;  // if_tsresol: 10^-6 s unless told
    };
    bool fail(const std::string& reason);
    bool readSectionHeader(std::size_t body, std::size_t bodyLength);
    bool readInterface(std::size_t body, std::size_t bodyLength);
    std::optional<LineRecord> readPacket(std::size_t body, std::size_t bodyLength);
    std::uint16_t u16(std::size_t at) const;
    std::uint32_t u32(std::size_t at) const;

    const Byte* data_;
    std::size_t size_;
    std::size_t position_ = 0;
    bool bigEndian_ = false;
    bool inSection_ = false;
    bool stopped_ = false;
    std::vector<Interface> interfaces_;
    std::string error_;
};

}  // namespace halvex::recording
