#include "standalone/signal/Speed.hpp"

#include <gtest/gtest.h>

namespace audlmd {
namespace {

using Aud::SubSamplePos;

TEST(Speed, ManyStepsAtOnceAreWhatTheConverterAddsUp) {
    const SubSamplePos step = subSamplePosOf(1.2345678);
    SubSamplePos position(0, 1);
    for (std::uint64_t n = 0; n < 5000; ++n, position += step) {
        ASSERT_EQ(advanced(SubSamplePos(0, 1), step, n), position);
        const SubSamplePos last(300, 17);
        ASSERT_EQ(n < positionsUpTo(last, SubSamplePos(0, 1), step), position <= last);
    }
    EXPECT_EQ(advanced({0, 0}, {0, 1}, 1'000'000'000'000).sample, 931);
}

} // namespace
} // namespace audlmd
