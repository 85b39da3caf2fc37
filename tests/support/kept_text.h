#pragma once

// A transcript kept beside its test, compared whole: on a difference the
// lines that differ are shown. After a deliberate change, run the test with
// `variable` set to write the file again, and read the difference before
// keeping it.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace halvex::testing {

inline void expectAsKept(const std::string& now, const std::string& path, const char* variable) {
    if (std::getenv(variable) != nullptr) {
        std::ofstream(path, std::ios::binary) << now;
        GTEST_SKIP() << "wrote " << path;
    }
    std::ifstream file(path, std::ios::binary);
    ASSERT_TRUE(file) << path;
    EXPECT_EQ(now, std::string(std::istreambuf_iterator<char>(file), {}));
}

}  // namespace halvex::testing
