#include "ole/Aud/SubSamplePos.hpp"

#include <gtest/gtest.h>

namespace audlmd::test {
namespace {

using Aud::SubSamplePos;

constexpr int one = 1073741823;

TEST(SubSamplePos, NormalisesWithTheBorrowRule) {
    const auto is = [](const SubSamplePos& position, std::int64_t sample, std::int32_t fraction) {
        return position.sample == sample && position.fraction == fraction;
    };
    EXPECT_TRUE(is({0, one}, 1, 0));
    EXPECT_TRUE(is({0, one - 1}, 0, one - 1));
    EXPECT_TRUE(is({0, 2147483647}, 2, 1));
    EXPECT_TRUE(is({3, -one}, 2, 0));
    EXPECT_TRUE(is({5, -1}, 4, 1));
    EXPECT_TRUE(is({0, -one - 5}, -2, 5));
    EXPECT_TRUE(is({0, -2147483647 - 1}, -3, 2));
    // As a host may have made it.
    SubSamplePos byHand(0, 0);
    byHand.fraction = 2 * one;
    EXPECT_TRUE(is(byHand += SubSamplePos(0, 0), 2, 0));
}

} // namespace
} // namespace audlmd::test
