// Writes the Wireshark dissector: the Lua engine with the protocol table in
// place of its marker line. Run by the build.
//
//   halvex-dissector-gen ENGINE.lua.in OUTPUT.lua

#include <cstdio>
#include <fstream>
#include <sstream>

#include "protocol/dissector_source.h"

int main(int argc, char* argv[]) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: halvex-dissector-gen ENGINE.lua.in OUTPUT.lua\n");
        return 2;
    }
    std::ifstream input(argv[1], std::ios::binary);
    std::stringstream engine;
    engine << input.rdbuf();
    if (!input) {
        std::fprintf(stderr, "halvex-dissector-gen: cannot read %s\n", argv[1]);
        return 1;
    }
    std::vector<std::string> conflicts;
    halvex::table::filterFields(&conflicts);
    for (const std::string& conflict : conflicts) {
        std::fprintf(stderr, "halvex-dissector-gen: field of two types: %s\n", conflict.c_str());
    }
    const std::string source = halvex::table::dissectorSource(engine.str());
    if (source.empty() || !conflicts.empty()) {
        std::fprintf(stderr, "halvex-dissector-gen: %s has no table marker or the table is wrong\n",
                     argv[1]);
        return 1;
    }
    std::ofstream output(argv[2], std::ios::binary | std::ios::trunc);
    output << source;
    return output ? 0 : 1;
}
