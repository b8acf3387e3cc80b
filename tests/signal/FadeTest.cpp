#include "standalone/signal/Fade.hpp"

#include "ole/Aud/EnvelopeTraits.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <stdexcept>

namespace audlmd {
namespace {

using Aud::Render::EnvelopeKind;
namespace Traits = Aud::Render::EnvelopeTraits;

/// Walks every placement with the renderer's own shape, and expects the u-values of the plan.
template <class Shape>
void expectFollowed(const FadePlan& plan, std::int64_t length, std::uint32_t alignment) {
    const FadeEnvelope fade(plan, static_cast<std::uint64_t>(length), alignment);
    // The first placement ends early, so that others begin anywhere.
    for (std::int64_t begin = 0, ragged = 5; begin < length;) {
        const FadeEnvelope::Placement placement = fade.at(begin);
        ASSERT_GT(placement.end, begin);
        ASSERT_TRUE(alignment == 1 || placement.end % alignment == 0);
        Aud::Render::EnvelopeParameters parameters = placement.parameters;
        Shape shape(parameters);
        std::int64_t sample = begin;
        for (; sample < std::min(placement.end, length); ++sample, shape.advance()) {
            // 2e-5 in u-value, times the steepest slope of a curve.
            ASSERT_NEAR(shape.gain(), fade.gainAt(sample), 7e-5) << sample;
        }
        begin = alignment == 1 ? std::min(begin + ++ragged, sample) : sample;
    }
}

TEST(Fade, PicksTheEnvelopeKindThatFits) {
    const auto kindOf = [](const FadePlan& plan) { return FadeEnvelope(plan, 1000).kind(); };
    EXPECT_EQ(kindOf({}), EnvelopeKind::none);
    EXPECT_EQ(kindOf({.fadeInSamples = 10}), EnvelopeKind::rampHold);
    EXPECT_EQ(kindOf({.fadeOutSamples = 10}), EnvelopeKind::holdRamp);
    EXPECT_EQ(kindOf({.fadeInSamples = 500, .fadeOutSamples = 500}), EnvelopeKind::rampHoldRamp);
    EXPECT_EQ(kindOf({.fadeInSamples = 1000}), EnvelopeKind::rampHold) << "no simple ramp is linear";
    EXPECT_EQ(kindOf({.fadeInSamples = 1000, .fadeInCurve = FadeCurve::log}),
              EnvelopeKind::simpleRampMixerStyleLog);
    EXPECT_EQ(kindOf({.fadeOutSamples = 1000, .fadeOutCurve = FadeCurve::power}),
              EnvelopeKind::simpleRampConstantPower);
}

TEST(Fade, FollowsTheStraightLineThroughTheRenderersShapes) {
    for (const std::uint32_t alignment : {1u, 128u}) {
        expectFollowed<Traits::RampHold>({.fadeInSamples = 3333}, 5000, alignment);
        expectFollowed<Traits::HoldRamp>({.fadeOutSamples = 2500, .fadeOutCurve = FadeCurve::power}, 5000,
                                         alignment);
        expectFollowed<Traits::RampHoldRamp>({1, 1, FadeCurve::linear, FadeCurve::linear}, 300, alignment);
        expectFollowed<Traits::RampHoldRamp>({1700, 3300, FadeCurve::power, FadeCurve::log}, 5000, alignment);
        expectFollowed<Traits::SimpleRamp<Aud::GainCurve::eMixerStyleLog>>(
            {.fadeInSamples = 5000, .fadeInCurve = FadeCurve::log}, 5000, alignment);
        expectFollowed<Traits::SimpleRamp<Aud::GainCurve::eConstantPower>>(
            {.fadeOutSamples = 5000, .fadeOutCurve = FadeCurve::power}, 5000, alignment);
    }
}

TEST(Fade, BeginsSilentReachesFullLevelExactlyAndEndsSilent) {
    const auto startAt = [](const FadeEnvelope& fade, std::int64_t sample) {
        return fade.at(sample).parameters.startUValue;
    };
    // A minute at 48 kHz: single-precision steps of 1/2880000 alone would miss the top by 3 %.
    const FadeEnvelope fade({.fadeInSamples = 2'880'000, .fadeOutSamples = 100}, 3'000'000);
    EXPECT_EQ(startAt(fade, 0), 0.0F);
    EXPECT_NEAR(startAt(fade, 2'879'000), fade.uValueAt(2'879'000), 2e-5);
    EXPECT_EQ(startAt(fade, 2'880'000), 1.0F);
    EXPECT_EQ(startAt(fade, 2'999'900), 1.0F);
    EXPECT_NEAR(startAt(fade, 2'999'999), 0.01, 1e-6);
    EXPECT_EQ(startAt(fade, 3'000'000), 0.0F);
    // A hold longer than the envelope's lengths can say.
    constexpr std::int64_t length = 20'000'000'000;
    const FadeEnvelope longHold({.fadeInSamples = 100, .fadeOutSamples = 100}, length);
    for (std::int64_t sample = longHold.at(100).end; sample < length - 100; sample = longHold.at(sample).end)
        ASSERT_EQ(startAt(longHold, sample), 1.0F) << sample;
}

TEST(Fade, RefusesFadesThatOverlap) {
    EXPECT_THROW(FadeEnvelope({.fadeInSamples = 600, .fadeOutSamples = 401}, 1000), std::invalid_argument);
    EXPECT_THROW(FadeEnvelope({.fadeOutSamples = 1001}, 1000), std::invalid_argument);
    EXPECT_THROW(FadeEnvelope({.fadeInSamples = ~std::uint64_t{0}}, 1000), std::invalid_argument);
}

} // namespace
} // namespace audlmd
