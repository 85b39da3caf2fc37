// Every layout of every command and reply in the protocol table, filled with
// two complementary byte patterns (so that each bit is once set and once
// clear), against the descriptions in every_frame.txt: what the Line Log and
// the Wireshark dissector say for it, name and fields. The hand-checked
// cases in protocol_table_test.cpp say why the words are right; this keeps
// every message's words as they were checked.
//
// After a deliberate change to the table, write the file again with
// HALVEX_WRITE_EVERY_FRAME=1 and read the difference before keeping it.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "protocol/frame_description.h"
#include "protocol/protocol_reference.h"
#include "protocol/protocol_table.h"
#include "tests/support/kept_text.h"

using namespace halvex;
using namespace halvex::table;

namespace {

// Bytes with their bits mixed, so that a field read from a neighbouring
// byte or through a wrong mask reads another value.
constexpr Byte kPattern[] = {0xA5, 0x3C, 0x96, 0x5A, 0xC3, 0x69, 0x1E, 0xB4,
                             0x87, 0x4B, 0xD2, 0x2D, 0x78, 0xE1, 0x0F, 0x9C};
constexpr std::size_t kLongest = sizeof kPattern;

void makeMatch(std::vector<Byte>& message, const Match& match, bool holds) {
    if (match.kind != Match::Kind::Bits ||
        static_cast<std::size_t>(match.index) >= message.size()) {
        return;
    }
    Byte& byte = message[static_cast<std::size_t>(match.index)];
    const unsigned wanted = holds ? match.value : (~match.value & match.mask);
    byte = static_cast<Byte>((byte & ~match.mask) | wanted);
}

// A message for the layout: the pattern (or its complement), the layout's
// own match made true and the matches of the layouts before it false.
std::vector<Byte> messageFor(const Message& entry, std::size_t which, bool inverted) {
    const Layout& layout = entry.layouts[which];
    std::size_t length = kLongest + 1;
    if (layout.match.kind == Match::Kind::Length) {
        length = std::max<std::size_t>(layout.match.value, 1);
    }
    std::vector<Byte> message(length, 0);
    message[0] = entry.code;
    for (std::size_t i = 1; i < length; ++i) {
        message[i] = inverted ? static_cast<Byte>(~kPattern[i - 1]) : kPattern[i - 1];
    }
    for (std::size_t before = 0; before < which; ++before) {
        makeMatch(message, entry.layouts[before].match, false);
    }
    makeMatch(message, layout.match, true);
    return message;
}

std::string keptFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string describeAll() {
    std::ostringstream out;
    for (const Message& entry : messages()) {
        const bool toUnit = entry.direction == Direction::ToUnit;
        for (std::size_t which = 0; which < entry.layouts.size(); ++which) {
            for (const bool inverted : {false, true}) {
                const std::vector<Byte> message = messageFor(entry, which, inverted);
                const FrameDescription frame =
                    describeFrame(encodeFrame(toUnit ? kStx : kAck, 1, message, 1));
                out << (toUnit ? "> " : "< ") << hexBytes(message) << '\n'
                    << "  " << frame.summary() << '\n';
            }
        }
    }
    return out.str();
}

}  // namespace

TEST(EveryFrame, EachLayoutDescribesAsTheFileSays) {
    halvex::testing::expectAsKept(describeAll(), HALVEX_PROTOCOL_TEST_DATA "/every_frame.txt",
                                  "HALVEX_WRITE_EVERY_FRAME");
}

// The protocol reference that people read instead of the code: kept in the
// repository as docs/protocol.md, and always what the protocol table says.
TEST(ProtocolReference, TheKeptPageIsWhatTheTableSays) {
    EXPECT_TRUE(keptFile(HALVEX_SOURCE_DIR "/docs/protocol.md") == protocolReference())
        << "docs/protocol.md is out of date: cmake --build build --target protocol-doc";
}
