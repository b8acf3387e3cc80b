#include "host/signal/Speed.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace audlmd::test {
namespace {

using Aud::SubSamplePos;

TEST(Speed, RoundsToTheNearestPosition) {
    EXPECT_EQ(subSamplePosOf(0.5), SubSamplePos(0, 536870912)) << "half of 2^30 - 1 fractions, a tie";
    EXPECT_EQ(subSamplePosOf(1.6), SubSamplePos(1, 644245094)) << "not 644245093.8";
    EXPECT_EQ(subSamplePosOf(7.0 - 1e-12), SubSamplePos(7, 0));
    EXPECT_EQ(subSamplePosOf(-0.25), SubSamplePos(-1, 805306367));
    EXPECT_EQ(subSamplePosOf(0x1p53), SubSamplePos(1L << 53, 0));
    for (const double none : {0x1p53 + 2.0, std::nan("")})
        EXPECT_THROW(subSamplePosOf(none), std::invalid_argument) << none;
    EXPECT_EQ(sourceSamplesOf(SubSamplePos(-1, 805306367)), -0x1.0000000400000p-2);
}

TEST(Speed, ManyStepsAtOnceAreWhatTheConverterAddsUp) {
    const SubSamplePos step = subSamplePosOf(1.2345678);
    SubSamplePos position(0, 1);
    for (std::uint64_t n = 0; n < 5000; ++n, position += step) {
        ASSERT_EQ(advanced(SubSamplePos(0, 1), step, n), position);
        const SubSamplePos last(300, 17);
        ASSERT_EQ(n < positionsUpTo(last, SubSamplePos(0, 1), step), position <= last);
    }
    EXPECT_EQ(positionsUpTo(SubSamplePos(-1, 0), SubSamplePos(0, 0), step), 0U);
    EXPECT_EQ(advanced({0, 0}, {0, 1}, 1'000'000'000'000).sample, 931);
}

TEST(Speed, IsARatioOfTheSmallestNumbersWithinATrillionth) {
    const std::tuple<double, std::int64_t, std::int64_t> table[] = {{1.1, 11, 10},
                                                                    {1.0, 1, 1},
                                                                    {2.0, 2, 1},
                                                                    {0.01, 1, 100},
                                                                    {1.0 / 3.0, 1, 3},
                                                                    {100, 100, 1},
                                                                    {1.0 + 1e-13, 1, 1},
                                                                    {23.976 / 24.0, 999, 1000},
                                                                    {1.00001, 100001, 100000}};
    for (const auto& [speed, source, output] : table) {
        const std::optional<SpeedRatio> ratio = ratioOf(speed);
        ASSERT_TRUE(ratio) << speed;
        EXPECT_EQ(std::pair(ratio->source, ratio->output), std::pair(source, output)) << speed;
    }
    for (int semitone = -36; semitone <= 36; ++semitone) {
        const double speed = std::exp2(semitone / 12.0);
        const std::optional<SpeedRatio> ratio = ratioOf(speed);
        ASSERT_TRUE(ratio) << semitone;
        EXPECT_NEAR(static_cast<double>(ratio->source) / static_cast<double>(ratio->output), speed,
                    1e-12 * std::max(1.0, speed));
    }
    EXPECT_FALSE(ratioOf(1.1000000001));
    EXPECT_FALSE(ratioOf(0x1p24));
}

} // namespace
} // namespace audlmd::test
