#include "ole/Aud/EnvelopeTraits.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

using namespace Aud::Render;
using namespace Aud::GainCurve;
using EnvelopeTraits = StageTest;

/// The gains of the first four samples, where some steps of the fade have elapsed.
template <class Shape>
static Samples gains(std::uint32_t elapsed, EnvelopeParameters fade) {
    fade.elapsed = elapsed;
    Shape shape(fade);
    Samples gains;
    for (; gains.size() < 4; shape.advance())
        gains.push_back(shape.gain());
    return gains;
}

TEST_F(EnvelopeTraits, RampAndHoldFromAnyStepOfTheFade) {
    using namespace Aud::Render::EnvelopeTraits;
    const EnvelopeParameters rampHold{0, 0.0F, 0.0F, eRampHold, {.oneRamp{0.25F, 2, eLinear, {}}}};
    EXPECT_EQ(gains<RampHold>(0, rampHold), (Samples{0.0F, 0.25F, 0.5F, 0.5F}));
    EXPECT_EQ(gains<RampHold>(1, rampHold), (Samples{0.25F, 0.5F, 0.5F, 0.5F}));
    EXPECT_EQ(gains<RampHold>(9, rampHold), (Samples{0.5F, 0.5F, 0.5F, 0.5F}));
    const EnvelopeParameters holdRamp{0, 0.5F, 0.0F, eHoldRamp, {.oneRamp{0.25F, 2, eLinear, {}}}};
    EXPECT_EQ(gains<HoldRamp>(0, holdRamp), (Samples{0.5F, 0.5F, 0.5F, 0.75F}));
    EXPECT_EQ(gains<HoldRamp>(4, holdRamp), (Samples{1.0F, 1.25F, 1.5F, 1.75F}));
    EnvelopeParameters three{
        0, 0.0F, 0.0F, eRampHoldRamp, {.twoRamps{0.25F, -0.25F, 2, 1, eLinear, eLinear}}};
    EXPECT_EQ(gains<RampHoldRamp>(1, three), (Samples{0.25F, 0.5F, 0.5F, 0.25F}));
    EXPECT_EQ(gains<RampHoldRamp>(4, three), (Samples{0.25F, 0.0F, -0.25F, -0.5F}));
    // The hold goes through the curve of the last ramp, which shows node 50.
    three.twoRamps.lastRampCurve = eConstantPower;
    three.startUValue = 0.005F;
    EXPECT_EQ(gains<RampHoldRamp>(1, three), (Samples{0.255F, 50, 50, 25}));
}

TEST_F(EnvelopeTraits, RampForeverThroughTheCurveOfTheMode) {
    using namespace Aud::Render::EnvelopeTraits;
    const EnvelopeParameters simple{0, 0.1055F, 0.0F, 0, {.oneRamp{0.1F, 0, 0, {}}}};
    EXPECT_EQ(gains<SimpleRamp<eMixerStyleLog>>(1, simple), (Samples{205, 305, 405, 505}));
    EXPECT_EQ(gains<SimpleRamp<eConstantPower>>(0, simple), (Samples{10, 20, 30, 40}));
}

} // namespace audlmd::test
