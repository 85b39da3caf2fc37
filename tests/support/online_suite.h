#pragma once

#include <gtest/gtest.h>

namespace halvex::testing {

// One console brought online for a whole test suite: coming online takes
// seconds, so tests that only press buttons share it. Rig is a ConsoleRig
// (or derived); tests reset what they touch in SetUp.
template <typename Rig>
class OnlineSuite : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        shared_ = new Rig;
        ASSERT_TRUE(shared_->connect());
    }
    static void TearDownTestSuite() {
        delete shared_;
        shared_ = nullptr;
    }
    static Rig* shared_;
};

template <typename Rig>
Rig* OnlineSuite<Rig>::shared_ = nullptr;

}  // namespace halvex::testing
