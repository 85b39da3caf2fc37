#include "session/reply_history.h"

#include <gtest/gtest.h>

namespace halvex {
namespace {

std::vector<Byte> numbered(std::size_t number) {
    return {static_cast<Byte>(number >> 8), static_cast<Byte>(number & 0xFF)};
}

TEST(ReplyHistory, FindsTheFirstFittingReplyAfterAMarkAmongTheLastOnesKept) {
    ReplyHistory history;
    const auto any = [](const std::vector<Byte>&) { return true; };
    EXPECT_FALSE(history.firstSince(0, any));
    const std::size_t total = ReplyHistory::kKept + 44;
    for (std::size_t n = 0; n < total; ++n) {
        history.keep(numbered(n));
    }
    EXPECT_EQ(history.count(), total);
    // A mark older than what is kept starts at the oldest kept.
    EXPECT_EQ(history.firstSince(0, any), numbered(44));
    EXPECT_EQ(history.firstSince(total - 1, any), numbered(total - 1));
    EXPECT_FALSE(history.firstSince(total, any));
    const auto odd = [](const std::vector<Byte>& reply) { return (reply[1] & 1) != 0; };
    EXPECT_EQ(history.firstSince(100, odd), numbered(101));
}

}  // namespace
}  // namespace halvex
