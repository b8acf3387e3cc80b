#include "ole/Aud/GainCurves.hpp"
#include "standalone/signal/GainLaws.hpp"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace audlmd {
namespace {

using Fader = Aud::GainCurve::Curve<Aud::GainCurve::eMixerStyleLog>;
using Power = Aud::GainCurve::Curve<Aud::GainCurve::eConstantPower>;

TEST(GainLaw, FaderIsSilentAtTheBottomUnityAtOneAndTenDecibelsAtTheTop) {
    EXPECT_EQ(mixerStyleGain(0.0), 0.0);
    EXPECT_DOUBLE_EQ(mixerStyleGain(1.0), 1.0);
    EXPECT_NEAR(decibelsOfGain(mixerStyleGain(1.5)), 10.0, 2e-9);
}

TEST(GainLaw, FaderKeepsToThePublishedLawOnATravelWithAnotherTop) {
    // There +6 dB lie at the top and unity at p = (192/198)^8; here that is u = 1.
    for (double u = 0.01; u <= 1.5; u += 0.01) {
        const double p = u * std::pow(192.0 / 198.0, 8.0);
        const double published = std::pow(2.0, (198.0 * std::pow(p, 0.125) - 192.0) / 6.0);
        EXPECT_NEAR(decibelsOfGain(mixerStyleGain(u)), decibelsOfGain(published), 0.15) << u;
    }
}

TEST(GainLaw, CurvesFollowTheirLawsWithinTheResolutionOfTheTables) {
    for (int i = 0; i <= 150'000; ++i) {
        const auto u = static_cast<float>(i) * 1e-5F;
        // Straight lines between nodes: the law's bend over one spacing is what may be left.
        const double fader = mixerStyleGain(static_cast<double>(u));
        ASSERT_NEAR(Fader::mapUValueToMagnitude(u), fader,
                    u < 0.001F ? 3e-6 : 4e-6 + 1e-3 * fader * (u < 0.1F))
            << u;
        ASSERT_NEAR(Power::mapUValueToMagnitude(u), constantPowerGain(static_cast<double>(u)), 3.2e-5) << u;
    }
}

TEST(GainLaw, CurvesAreExactWhereAFaderIsExpectedToBe) {
    EXPECT_EQ(Fader::mapUValueToMagnitude(0.0F), 0.0F);
    EXPECT_EQ(Fader::mapUValueToMagnitude(-1.0F), 0.0F);
    EXPECT_EQ(Fader::mapUValueToMagnitude(1.0F), 1.0F);
    EXPECT_EQ(Power::mapUValueToMagnitude(0.0F), 0.0F);
    EXPECT_EQ(Power::mapUValueToMagnitude(1.0F), 1.0F);
    EXPECT_EQ(Power::mapUValueToMagnitude(7.0F), 1.0F);
    EXPECT_EQ(Fader::mapUValueToMagnitude(1.5F), static_cast<float>(mixerStyleGain(1.5)));
    EXPECT_TRUE(std::isnan(Fader::mapUValueToMagnitude(std::numeric_limits<float>::quiet_NaN())));
    EXPECT_EQ(Fader::mapUValueToMagnitude(7.0F), static_cast<float>(mixerStyleGain(1.5)));
}

TEST(GainLaw, InversesLeadBack) {
    for (double u = 0.001; u < 1.0; u += 0.0137) {
        EXPECT_NEAR(mixerStyleUValue(mixerStyleGain(u)), u, 1e-12);
        EXPECT_NEAR(constantPowerUValue(constantPowerGain(u)), u, 1e-9);
    }
    EXPECT_EQ(mixerStyleUValueOfDecibels(0.0), 1.0);
    EXPECT_NEAR(mixerStyleUValueOfDecibels(10.0), 1.5, 1e-9);
    EXPECT_EQ(mixerStyleUValueOfDecibels(40.0), 1.5);
    EXPECT_EQ(mixerStyleUValueOfDecibels(-std::numeric_limits<double>::infinity()), 0.0);
    EXPECT_EQ(decibelsOfGain(0.0), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(constantPowerUValue(2.0), 1.0);
}

} // namespace
} // namespace audlmd
