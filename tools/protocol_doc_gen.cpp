// Writes the protocol reference, docs/protocol.md, from the protocol table.
// Run by the build into the build folder; the target protocol-doc copies it
// over the page kept in the repository, and the suite fails while the two
// differ.
//
//   halvex-protocol-doc OUTPUT.md

#include <cstdio>
#include <fstream>

#include "protocol/protocol_reference.h"

int main(int argc, char* argv[]) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: halvex-protocol-doc OUTPUT.md\n");
        return 2;
    }
    std::ofstream output(argv[1], std::ios::binary | std::ios::trunc);
    output << halvex::table::protocolReference();
    if (!output) {
        std::fprintf(stderr, "halvex-protocol-doc: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
