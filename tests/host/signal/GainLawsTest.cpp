#include "host/signal/GainLaws.hpp"

#include "ole/Aud/GainCurves.hpp"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace audlmd::test {
namespace {

using Fader = Aud::GainCurve::Curve<Aud::GainCurve::eMixerStyleLog>;
using Power = Aud::GainCurve::Curve<Aud::GainCurve::eConstantPower>;

TEST(GainLaws, CurvesFollowTheirLawsWithinTheResolutionOfTheTables) {
    for (int i = 0; i <= 150'000; ++i) {
        const auto u = static_cast<float>(i) * 1e-5F;
        // Straight lines between nodes: the law's bend over one spacing is what may be left.
        const double fader = mixerStyleGain(static_cast<double>(u));
        ASSERT_NEAR(Fader::mapUValueToMagnitude(u), fader,
                    u < 0.001F ? 3e-6 : 4e-6 + 1e-3 * fader * (u < 0.1F))
            << u;
        ASSERT_NEAR(Power::mapUValueToMagnitude(u), constantPowerGain(static_cast<double>(u)), 3.2e-5) << u;
    }
    EXPECT_NEAR(decibelsOfGain(mixerStyleGain(1.5)), 10.0, 2e-9);
    const auto top = static_cast<float>(mixerStyleGain(1.5));
    for (const auto& [u, fader, power] : std::vector<std::array<float, 3>>{{-1.0F, 0.0F, 0.0F},
                                                                           {0.0F, 0.0F, 0.0F},
                                                                           {1.0F, 1.0F, 1.0F},
                                                                           {1.5F, top, 1.0F},
                                                                           {7.0F, top, 1.0F}}) {
        EXPECT_EQ(Fader::mapUValueToMagnitude(u), fader) << "exact at " << u;
        EXPECT_EQ(Power::mapUValueToMagnitude(u), power) << "exact at " << u;
    }
    EXPECT_TRUE(std::isnan(Fader::mapUValueToMagnitude(std::numeric_limits<float>::quiet_NaN())));
}

TEST(GainLaws, InversesLeadBack) {
    for (double u = 0.001; u < 1.0; u += 0.0137)
        EXPECT_NEAR(mixerStyleUValue(mixerStyleGain(u)), u, 1e-12);
    EXPECT_EQ(mixerStyleUValueOfDecibels(40.0), 1.5);
    EXPECT_EQ(mixerStyleUValueOfDecibels(-std::numeric_limits<double>::infinity()), 0.0);
}

} // namespace
} // namespace audlmd::test
