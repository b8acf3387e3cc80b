#include "host/signal/Fade.hpp"
#include "ole/Aud/EnvelopeTraits.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>

namespace audlmd::test {
namespace {

namespace Traits = Aud::Render::EnvelopeTraits;
using LogRamp = Traits::SimpleRamp<Aud::GainCurve::eMixerStyleLog>;
using PowerRamp = Traits::SimpleRamp<Aud::GainCurve::eConstantPower>;

/// Walks every placement with the renderer's own shape, and expects the u-values of the plan.
template <class Shape>
void expectFollowed(const FadePlan& plan, std::int64_t length, std::uint32_t alignment) {
    const FadeEnvelope fade(plan, static_cast<std::uint64_t>(length), alignment);
    // The first placement ends early, so that others begin anywhere.
    std::int64_t ragged = 5;
    for (RangeSample begin = 0; begin < length;) {
        const FadeEnvelope::Placement placement = fade.at(begin);
        ASSERT_GT(placement.end, begin);
        ASSERT_TRUE(alignment == 1 || placement.end.number() % alignment == 0);
        Aud::Render::EnvelopeParameters parameters = placement.parameters;
        Shape shape(parameters);
        RangeSample sample = begin;
        // 2e-5 in u-value, times the steepest slope of a curve.
        for (; sample < std::min<RangeSample>(placement.end, length); ++sample, shape.advance()) {
            ASSERT_NEAR(shape.gain(), fade.gainAt(sample), 7e-5) << sample;
            ASSERT_TRUE(sample == fade.fullLevelEnd(sample) || shape.gain() == 1.0F) << sample;
        }
        begin = alignment == 1 ? std::min(begin + ++ragged, sample) : sample;
    }
}

TEST(FadeEnvelope, FollowsTheStraightLineThroughTheRenderersShapes) {
    using enum FadeCurve;
    for (const std::uint32_t alignment : {1U, 128U}) {
        expectFollowed<Traits::RampHold>({3333, 0, linear, linear}, 5000, alignment);
        expectFollowed<Traits::HoldRamp>({0, 2500, linear, power}, 5000, alignment);
        expectFollowed<Traits::RampHoldRamp>({1, 1, linear, linear}, 300, alignment);
        expectFollowed<Traits::RampHoldRamp>({1700, 3300, power, log}, 5000, alignment);
        expectFollowed<LogRamp>({5000, 0, log, linear}, 5000, alignment);
        expectFollowed<PowerRamp>({0, 5000, linear, power}, 5000, alignment);
    }
}

TEST(FadeEnvelope, BeginsSilentReachesFullLevelExactlyAndEndsSilent) {
    const auto startAt = [](const FadeEnvelope& fade, RangeSample sample) {
        return fade.at(sample).parameters.startUValue;
    };
    // A minute at 48 kHz: single-precision steps of 1/2880000 alone would miss the top by 3 %.
    const FadeEnvelope fade({.fadeInSamples = 2'880'000, .fadeOutSamples = 100}, 3'000'000);
    EXPECT_EQ(startAt(fade, 0), 0.0F);
    EXPECT_NEAR(startAt(fade, 2'879'000), fade.uValueAt(2'879'000), 2e-5);
    EXPECT_EQ(startAt(fade, 2'880'000), 1.0F);
    EXPECT_EQ(fade.fullLevelEnd(2'879'999), 2'879'999);
    EXPECT_EQ(fade.fullLevelEnd(2'880'000), 2'999'900);
    EXPECT_NEAR(startAt(fade, 2'999'999), 0.01, 1e-6);
    EXPECT_EQ(startAt(fade, 3'000'000), 0.0F);
    // A hold longer than the envelope's lengths can say.
    constexpr std::int64_t length = 20'000'000'000;
    const FadeEnvelope longHold({.fadeInSamples = 100, .fadeOutSamples = 100}, length);
    for (RangeSample sample = longHold.at(100).end; sample < length - 100; sample = longHold.at(sample).end)
        ASSERT_EQ(startAt(longHold, sample), 1.0F) << sample;
}

TEST(FadeEnvelope, RefusesFadesThatOverlapOrAreLongerThanTheRange) {
    for (const FadePlan& plan : {FadePlan{60, 41}, {101, 0}, {0, 101}, {~std::uint64_t{0}, 2}})
        EXPECT_THROW(FadeEnvelope(plan, 100), std::invalid_argument) << plan.fadeInSamples;
    EXPECT_EQ(FadeEnvelope({60, 40}, 100).at(60).parameters.startUValue, 1.0F);
}

} // namespace
} // namespace audlmd::test
