// libFuzzer target for recordings of the line: files in, read as the Line
// Log and halvex-sim --replay read them. A crash, a sanitizer report or a
// broken check of the harness is a finding.

#include <cstdio>
#include <cstdlib>

#include "fuzz/recording_harness.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string fault = halvex::fuzz::checkRecording(data, size);
    if (!fault.empty()) {
        std::fprintf(stderr, "recording fuzzer: %s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
