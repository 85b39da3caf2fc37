#include <gtest/gtest.h>

#include <optional>

#include "protocol/line_recording.h"

using namespace halvex;
using namespace halvex::recording;

namespace {

std::vector<LineRecord> readAll(const std::vector<Byte>& file, std::string* error = nullptr) {
    RecordingReader reader(file.data(), file.size());
    std::vector<LineRecord> records;
    while (auto record = reader.next()) {
        records.push_back(*record);
    }
    if (error != nullptr) {
        *error = reader.error();
    }
    return records;
}

std::uint32_t le32(const std::vector<Byte>& bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 |
           static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

// Blocks as another writer might lay them out, in either byte order.
class Blocks {
  public:
    explicit Blocks(bool bigEndian = false) : big_(bigEndian) {}

    Blocks& section(std::uint16_t major = 1) {
        return block(0x0A0D0D0A, {n(0x1A2B3C4D), n(major, 2), n(0, 2), n(~0u), n(~0u)});
    }
    // An interface of `linkType`, with the time stamps' resolution if given.
    Blocks& interface(std::uint16_t linkType, int resolution = -1) {
        const std::vector<Byte> option =
            resolution < 0
                ? std::vector<Byte>{}
                : join({n(9, 2), n(1, 2), {static_cast<Byte>(resolution), 0, 0, 0}, n(0)});
        return block(1, {n(linkType, 2), n(0, 2), n(0), option});
    }
    // An interface whose four-letter name fills the block to its end, with
    // no end-of-options after it.
    Blocks& namedInterface(std::uint16_t linkType, const char (&name)[5]) {
        return block(1, {n(linkType, 2),
                         n(0, 2),
                         n(0),
                         n(2, 2),
                         n(4, 2),
                         {static_cast<Byte>(name[0]), static_cast<Byte>(name[1]),
                          static_cast<Byte>(name[2]), static_cast<Byte>(name[3])}});
    }
    Blocks& packet(std::uint32_t interfaceId, std::uint64_t stamp, std::vector<Byte> data,
                   std::optional<std::uint32_t> flags = std::nullopt) {
        const auto size = static_cast<std::uint32_t>(data.size());
        data.resize((data.size() + 3) / 4 * 4);
        return block(6, {n(interfaceId), n(static_cast<std::uint32_t>(stamp >> 32)),
                         n(static_cast<std::uint32_t>(stamp)), n(size), n(size), data,
                         flags ? join({n(2, 2), n(4, 2), n(*flags), n(0)}) : std::vector<Byte>{}});
    }
    Blocks& other(std::uint32_t type) { return block(type, {n(0x12345678)}); }
    std::vector<Byte> bytes() const { return bytes_; }

  private:
    static std::vector<Byte> join(std::initializer_list<std::vector<Byte>> parts) {
        std::vector<Byte> out;
        for (const auto& part : parts) {
            out.insert(out.end(), part.begin(), part.end());
        }
        return out;
    }
    // `value` in `size` bytes of the file's byte order.
    std::vector<Byte> n(std::uint32_t value, int size = 4) const {
        std::vector<Byte> out;
        for (int i = 0; i < size; ++i) {
            out.push_back(static_cast<Byte>(value >> 8 * (big_ ? size - 1 - i : i)));
        }
        return out;
    }
    Blocks& block(std::uint32_t type, std::initializer_list<std::vector<Byte>> body) {
        const std::vector<Byte> inside = join(body);
        const auto length = static_cast<std::uint32_t>(inside.size() + 12);
        const auto whole = join({n(type), n(length), inside, n(length)});
        bytes_.insert(bytes_.end(), whole.begin(), whole.end());
        return *this;
    }
    bool big_;
    std::vector<Byte> bytes_;
};

const std::vector<Byte> kJogFrame = {0x02, 0x00, 0x31, 0x00, 0x00, 0x00, 0x00,
                                     0x00, 0x00, 0x00, 0x00, 0x31, 0x03};

}  // namespace

// Each record written and read back with its time, direction and verdict
// is checked on the kept recordings (verdicts-and-events.pcapng among them)
// by recording_fuzz_cases_test.cpp.
// Where each frame's direction and the console's verdict go in the
// packet's flags, as Wireshark reads them; the rest of the layout is read
// back here from other writers' files and by tshark in tests/recorder.
TEST(LineRecording, FlagsEachFrameWithItsDirectionAndTheConsolesVerdict) {
    const auto flagsOf = [](LineKind kind, Verdict verdict) {
        return le32(recordingBlock({0, kind, verdict, {0x06, 0x00, 0x31, 0x00}}), 36);
    };
    // Inbound and outbound alone are read by tshark in tests/recorder.
    EXPECT_EQ(flagsOf(LineKind::Received, Verdict::BadLrc), 1u | 1u << 24);  // CRC error
    EXPECT_EQ(flagsOf(LineKind::Received, Verdict::Cut), 1u | 1u << 26);     // too short
    EXPECT_EQ(flagsOf(LineKind::Received, Verdict::Noise), 1u | 1u << 31);   // symbol error
}

TEST(LineRecording, ReadsOtherWritersFilesAndSkipsWhatIsNotOurs) {
    // Big-endian, nanosecond and binary time stamps, a block of another
    // kind, an Ethernet interface, and a second section with an interface
    // whose last option ends where its block does.
    const auto file = Blocks(true)
                          .section()
                          .interface(1)
                          .interface(147, 9)
                          .other(4)
                          .packet(0, 5, {0xFF})
                          .packet(1, 1'500'000'000, kJogFrame, 2)
                          .bytes();
    const auto second = Blocks(false)
                            .section()
                            .interface(147, 0x80 | 10)
                            .interface(147, 3)
                            .namedInterface(147, "line")
                            .packet(0, 2048, {0x06, 0x00, 0x9A, 0x9A, 0x03})
                            .packet(1, 7, {0x06})
                            .bytes();
    std::vector<Byte> both = file;
    both.insert(both.end(), second.begin(), second.end());
    std::string error;
    const auto read = readAll(both, &error);
    EXPECT_EQ(error, "");
    ASSERT_EQ(read.size(), 3u);
    EXPECT_EQ(read[0].kind, LineKind::Sent);
    EXPECT_EQ(read[0].timeUs, 1'500'000);  // 1.5 s in nanoseconds
    EXPECT_EQ(read[0].bytes, kJogFrame);
    EXPECT_EQ(read[1].kind, LineKind::Received);  // no flags: by its start byte
    EXPECT_EQ(read[1].timeUs, 2'000'000);         // 2048 / 1024 s
    EXPECT_EQ(read[2].timeUs, 7'000);             // 7 ms
}

TEST(LineRecording, StopsAtAMalformedBlockAndKeepsWhatCameBefore) {
    const auto good = Blocks().section().interface(147).packet(0, 1, kJogFrame, 2).bytes();
    struct Case {
        const char* what;
        std::vector<Byte> tail;
        std::string error;
    };
    // A second packet, and the same with one byte changed.
    const auto packet = Blocks().packet(0, 2, kJogFrame, 2).bytes();
    const auto changed = [](std::vector<Byte> bytes, std::size_t at, Byte value) {
        bytes[at] = value;
        return bytes;
    };
    const std::vector<Case> cases = {
        {"a block cut short", {packet.begin(), packet.end() - 6}, "impossible length"},
        {"lengths at the two ends differ", changed(packet, packet.size() - 1, packet.back() ^ 0x10),
         "lengths at its two ends differ"},
        {"a length that is no multiple of four", changed(packet, 4, packet[4] + 2),
         "impossible length"},
        {"a packet of an interface never described", Blocks().packet(3, 2, kJogFrame).bytes(),
         "never described"},
        {"captured bytes past the block",
         changed(Blocks().packet(0, 2, {1, 2, 3, 4}).bytes(), 20, 200), "runs past its block"},
        // The flags option claims 64 bytes.
        {"an option past the block",
         changed(Blocks().packet(0, 2, {1, 2, 3, 4}, 2).bytes(), 34, 0x40), "runs past its block"},
        {"a section of an unknown version", Blocks().section(2).bytes(), "unknown pcapng version"},
        {"a file ending inside a block header", {0x06, 0x00, 0x00}, "ends inside a block"},
    };
    for (const Case& c : cases) {
        std::vector<Byte> file = good;
        file.insert(file.end(), c.tail.begin(), c.tail.end());
        std::string error;
        const auto read = readAll(file, &error);
        EXPECT_EQ(read.size(), 1u) << c.what;
        EXPECT_NE(error.find(c.error), std::string::npos) << c.what << ": " << error;
    }

    std::string error;
    EXPECT_TRUE(
        readAll({'h', 'e', 'l', 'l', 'o', ' ', 'w', 'o', 'r', 'l', 'd', '!'}, &error).empty());
    EXPECT_NE(error.find("not a pcapng file"), std::string::npos) << error;
    EXPECT_TRUE(readAll({}, &error).empty());
    EXPECT_EQ(error, "");
}
