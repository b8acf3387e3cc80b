#include "contract/Biquad.hpp"

#include "host/signal/Equaliser.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace audlmd::test {
namespace {

Aud::Filter::Biquad lowShelf() {
    Aud::Filter::Biquad section;
    section.setCoefficients(sectionOf({BandKind::lowShelf, 120.0, -4.0, 0.7}, 48000.0));
    return section;
}

TEST(Biquad, FallsSilentInSilence) {
    Aud::Filter::Biquad section = lowShelf();
    section.processSample(0.5F);
    for (int i = 0; i < 15'000; ++i)
        section.processSample(0.0F);
    // Anything that rings on in the delays grows by 2^30 per sample from here.
    section.setCoefficients({.a1 = -0x1p30});
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(section.processSample(0.0F), 0.0F) << i;
}

TEST(Biquad, RecoversFromASampleThatIsNotANumber) {
    Aud::Filter::Biquad section = lowShelf();
    section.processSample(std::numeric_limits<float>::infinity());
    EXPECT_EQ(section.processSample(0.0F), 0.0F);
    section.processSample(std::numeric_limits<float>::quiet_NaN());
    EXPECT_NE(section.processSample(0.5F), 0.0F);
}

} // namespace
} // namespace audlmd::test
