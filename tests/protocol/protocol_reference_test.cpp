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

}  // namespace

TEST(ProtocolReference, TheKeptPageIsWhatTheTableSays) {
    EXPECT_TRUE(keptPage() == protocolReference())
        << "docs/protocol.md is out of date: cmake --build build --target protocol-doc";
}

// The page's worked frame by hand: go to preset 3 at address 2, the address
// and the preset stuffed, the LRC 0x02 XOR 0x32 XOR 0x03. The rows are kept
// above as they were read when the page was written.
TEST(ProtocolReference, TheWorkedFrameReadsAsTheBytesCarryIt) {
    const std::string page = protocolReference();
    EXPECT_NE(page.find("On the line: `02 1B 82 32 1B 83 33 03`."), std::string::npos);
    EXPECT_NE(page.find("| LRC | 0x33 | 33 |"), std::string::npos);
}
