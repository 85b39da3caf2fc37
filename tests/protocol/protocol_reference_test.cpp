// The protocol reference that people read instead of the code: kept in the
// repository as docs/protocol.md, and always what the protocol table says.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "protocol/protocol_reference.h"

using namespace halvex;
using namespace halvex::table;

namespace {

std::string keptPage() {
    std::ifstream file(HALVEX_SOURCE_DIR "/docs/protocol.md", std::ios::binary);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

// The lines of the page from the heading of a message to the next heading.
std::string section(const std::string& page, const std::string& heading) {
    const std::size_t start = page.find("### " + heading + "\n");
    if (start == std::string::npos) {
        return {};
    }
    return page.substr(start, page.find("\n### ", start + 1) - start);
}

}  // namespace

TEST(ProtocolReference, TheKeptPageIsWhatTheTableSays) {
    EXPECT_TRUE(keptPage() == protocolReference())
        << "docs/protocol.md is out of date: cmake --build build --target protocol-doc";
}

// The kept page checked by hand where a slip would mislead a reader most:
// the worked frame, bit places, a layout's condition, counted bytes, a bias.
TEST(ProtocolReference, TheWorkedFrameAndTheTrickierRowsReadAsTheBytesCarryThem) {
    const std::string page = protocolReference();
    // Go to preset 3 at address 2: the address and the preset are stuffed,
    // the LRC is 0x02 XOR 0x32 XOR 0x03.
    EXPECT_NE(page.find("On the line: `02 1B 82 32 1B 83 33 03`."), std::string::npos);
    EXPECT_NE(page.find("| LRC | 0x33 | 33 |"), std::string::npos);
    const std::string jog = section(page, "0x31, console to unit");
    EXPECT_NE(jog.find("| 1 | 0-4 | flags | bits | bit 0 reset, bit 1 stop, bit 2 soft-limit "
                       "override, bit 3 tilt low speed, bit 4 pan low speed |"),
              std::string::npos)
        << jog;
    EXPECT_NE(jog.find("| 1 | 7 | pan direction | unsigned | 0 CCW, 1 CW |"), std::string::npos);
    const std::string report = section(page, "0x31, unit to console");
    EXPECT_NE(report.find("**target report**. When bit 5 of byte 9 is set."), std::string::npos);
    EXPECT_NE(
        report.find("| 1-3 |  | pan | angle: signed, hundredths of a degree, low byte first |"),
        std::string::npos);
    EXPECT_NE(report.find("| after camera 1 data |  | camera 2 data |"), std::string::npos);
    EXPECT_NE(section(page, "0x9C, console to unit")
                  .find("**second top speeds request**. When byte 1 AND 0xC0 is 0xC0."),
              std::string::npos);
    EXPECT_NE(section(page, "0x9A, unit to console").find("| year | unsigned; plus 2000 |"),
              std::string::npos);
}
