#include "standalone/signal/Speed.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>

namespace audlmd {
namespace {

using Aud::SubSamplePos;

TEST(Speed, PositionsConvertBothWays) {
    EXPECT_EQ(subSamplePosOf(1.0), SubSamplePos(1, 0));
    EXPECT_EQ(subSamplePosOf(1.0 / 3.0), SubSamplePos(0, 357913941));
    EXPECT_EQ(subSamplePosOf(std::nextafter(2.0, 0.0)), SubSamplePos(2, 0));
    EXPECT_EQ(subSamplePosOf(-0.25).sample, -1);
    for (const double x : {0.0, 0.1, 0.75, 3.125, -0.25, -7.6, 123456.789})
        EXPECT_NEAR(sourceSamplesOf(subSamplePosOf(x)), x, 5e-10) << x;
    EXPECT_THROW(subSamplePosOf(std::numeric_limits<double>::infinity()), std::invalid_argument);
    EXPECT_THROW(subSamplePosOf(std::numeric_limits<double>::quiet_NaN()), std::invalid_argument);
}

TEST(Speed, ManyStepsAtOnceAreWhatTheConverterAddsUp) {
    const SubSamplePos step = subSamplePosOf(1.2345678);
    SubSamplePos position(0, 1);
    for (std::uint64_t n = 0; n < 5000; ++n, position += step) {
        ASSERT_EQ(advanced(SubSamplePos(0, 1), step, n), position);
        const SubSamplePos last(300, 17);
        ASSERT_EQ(n < positionsUpTo(last, SubSamplePos(0, 1), step), position <= last);
    }
    EXPECT_EQ(advanced({0, 0}, {0, 1}, 1'000'000'000'000).sample, 931);
    EXPECT_EQ(positionsUpTo({0, 0}, {0, 1}, step), 0u);
}

TEST(Speed, IsRefusedOrLimitedWhereItIsNoneOrTooFast) {
    for (const double speed :
         {0.0, -1.0, std::numeric_limits<double>::infinity(), 1e7, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_THROW(requireSpeed(speed), std::invalid_argument) << speed;
    EXPECT_EQ(filteringSpeedInForce(2.0), 2.0);
    EXPECT_EQ(filteringSpeedInForce(10.0), 6.0) << "unless configured otherwise";
    EXPECT_EQ(filteringSpeedInForce(1e-5), 1.0 / 1024.0);
}

} // namespace
} // namespace audlmd
