#include "ole/Aud/Instructions.hpp"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

namespace audlmd::test {
namespace {

namespace Instructions = Aud::Instructions;

TEST(Instructions, ClipAsThePlainComparisonsDo) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    for (const float x :
         {-infinity, -2.0F, -1.0F, -0.0F, 0.0F, 1e-40F, 0.5F, 1.0F, std::nextafter(1.0F, 2.0F), 2.0F,
          infinity, std::numeric_limits<float>::quiet_NaN()})
        for (const auto& [lower, upper] : {std::pair{-1.0F, 1.0F}, {0.0F, 2.0F}, {-1.0F, 0.0F}})
            EXPECT_EQ(std::bit_cast<std::uint32_t>(Instructions::clip(x, lower, upper)),
                      std::bit_cast<std::uint32_t>(Instructions::Plain::clip(x, lower, upper)))
                << x << " in " << lower << " .. " << upper;
}

TEST(Instructions, CarryAWholeAsThePlainSubtractionDoes) {
    constexpr std::uint32_t whole = 1073741823;
    for (const std::uint32_t fraction : {0U, 1U, whole - 1, whole, whole + 1, 2 * whole - 1})
        for (const std::int64_t before : {std::int64_t{-1}, std::int64_t{0}, std::int64_t{0xFFFFFFFF}}) {
            std::uint32_t rest[2] = {fraction, fraction};
            std::int64_t wholes[2] = {before, before};
            Instructions::carry<whole>(rest[0], wholes[0]);
            Instructions::Plain::carry<whole>(rest[1], wholes[1]);
            EXPECT_EQ(rest[0], rest[1]) << fraction;
            EXPECT_EQ(wholes[0], wholes[1]) << fraction;
        }
}

} // namespace
} // namespace audlmd::test
