// libFuzzer target for the unit settings file reader: any bytes in. A crash,
// a sanitizer report, a refusal that names no problem, or a file that is
// accepted but does not read back the same once written again is a finding.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "commissioning/settings_text.h"

using namespace halvex::commissioning;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const SettingsRead read =
        readSettingsText(std::string_view(reinterpret_cast<const char*>(data), size));
    if (!read.settings) {
        if (read.problem.empty()) {
            std::fputs("settings fuzzer: refused without naming the problem\n", stderr);
            std::abort();
        }
        return 0;
    }
    const SettingsRead again = readSettingsText(writeSettingsText(*read.settings));
    if (!again.settings || *again.settings != *read.settings) {
        std::fprintf(stderr, "settings fuzzer: accepted, but does not read back the same: %s\n",
                     again.problem.c_str());
        std::abort();
    }
    return 0;
}
