#include "host/timeline/Rational.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace audlmd::test {
namespace {

using namespace timeline;

TEST(FrameRate, MeansTheExactRateBehindARoundedNumber) {
    struct Case {
        double rate;
        double frames;
        std::int64_t samples;
    };
    // Of an hour, at 48 kHz: 23.976 taken as written is 173 samples off, and 23.98 is 28,651 off.
    for (const Case& c : {Case{23.976, 86314, 172'800'628},
                          {23.98, 86314, 172'800'628},
                          {24000.0 / 1001.0, 86314, 172'800'628},
                          {24, 86400, 172'800'000},
                          {29.97, 107'892, 172'799'827},
                          {59.94, 215'784, 172'799'827},
                          {47.952, 172'628, 172'800'628},
                          {119.88, 431'568, 172'799'827},
                          {95.904, 345'256, 172'800'628},
                          {12.5, 45'000, 172'800'000},
                          {48'000.0 / 1.001, 47'952'000, 47'999'952},
                          {25, 0.5, 960}})
        EXPECT_EQ((secondsOf(c.frames, exactRate(c.rate)) * Rational(48000)).rounded(), c.samples) << c.rate;
    for (const double rate : {0.0, -24.0, 1e300})
        EXPECT_THROW(exactRate(rate), std::overflow_error) << rate;
    EXPECT_THROW(secondsOf(1e300, Rational(24)), std::overflow_error);
}

TEST(Rational, RoundsOnceAndNeverWraps) {
    EXPECT_EQ(Rational::nearest(0.1), Rational(1, 10));
    EXPECT_EQ(Rational::nearest(-20.0 / 19.0), Rational(-20, 19));
    EXPECT_EQ(Rational(-5, 2).rounded(), -2);
    EXPECT_EQ(Rational(5, 2).rounded(), 3);
    EXPECT_EQ(Rational(-7, 2).roundedUp(), -3);
    EXPECT_LT(Rational(1, 3), Rational(1, 2));
    constexpr Rational::Integer beyond = Rational::Integer{1} << 70;
    EXPECT_EQ(Rational(3 * beyond, -2 * beyond), Rational(-3, 2));
    for (const Rational::Integer whole : {beyond, -beyond})
        EXPECT_THROW(Rational(whole, 1).rounded(), std::overflow_error);
    EXPECT_EQ(Rational(4 * beyond, 2 * beyond), Rational(2));
    EXPECT_THROW(Rational(beyond << 56, 1) + Rational(beyond << 56, 1), std::overflow_error);
    EXPECT_THROW(Rational(1, 0), std::overflow_error);
    EXPECT_EQ(Rational::nearest(0.0), Rational());
    for (const double extreme : {1e-10, 1e16, static_cast<double>(NAN)})
        EXPECT_THROW(Rational::nearest(extreme), std::overflow_error) << extreme;
    Rational sum;
    for (int i = 0; i < 30'000; ++i)
        sum = sum + Rational(1001, 30000) + Rational(1, 44100);
    EXPECT_EQ(sum, Rational(1001) + Rational(30000, 44100));
    const auto multiply = [] {
        Rational product(3);
        for (int i = 0; i < 200; ++i)
            product = product * Rational(3);
    };
    EXPECT_THROW(multiply(), std::overflow_error);
}

} // namespace
} // namespace audlmd::test
