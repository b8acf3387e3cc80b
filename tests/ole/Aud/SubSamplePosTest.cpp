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
}

TEST(SubSamplePos, AddsAsTheConstructorNormalises) {
    SubSamplePos sum(0, one - 1);
    sum += SubSamplePos(0, one - 1);
    EXPECT_EQ(sum, SubSamplePos(1, one - 2));
    SubSamplePos twice(0, 536870912);
    twice += SubSamplePos(0, 536870912);
    EXPECT_EQ(twice, SubSamplePos(1, 1));
    // The sum of positions that a host made by hand, without normalising, is normalised too.
    for (int first : {0, 1, one - 1, one, -1, -one, 2147483647, -2147483647})
        for (int second : {0, 1, one - 1, -1, -one, 536870912}) {
            SubSamplePos position(7, 0);
            position.fraction = first;
            SubSamplePos distance(2, 0);
            distance.fraction = second;
            position += distance;
            const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(first) +
                                                           static_cast<std::uint32_t>(second));
            EXPECT_EQ(position, SubSamplePos(9, wrapped)) << first << " + " << second;
        }
}

TEST(SubSamplePos, ComparesWholeSamplesFirst) {
    EXPECT_LT(SubSamplePos(-1, 5), SubSamplePos(0, 0));
    EXPECT_GT(SubSamplePos(1, 0), SubSamplePos(0, one - 1));
    EXPECT_GT(SubSamplePos(1, 2), SubSamplePos(1, 1));
    EXPECT_FALSE(SubSamplePos(0, 0) > Aud::zeroSubSamplePos);
}

} // namespace
} // namespace audlmd::test
