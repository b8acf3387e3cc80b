#include "ole/Aud/EnvelopeTraits.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {
namespace {

using namespace Aud::Render;
using namespace Aud::GainCurve;
using EnvelopeTraits = StageTest;

/// Four gains, from a step of the fade on.
template <class Shape>
Samples gains(EnvelopeParameters fade, std::uint32_t elapsed) {
    fade.elapsed = elapsed;
    Shape shape(fade);
    Samples gains;
    for (; gains.size() < 4; shape.advance())
        gains.push_back(shape.gain());
    return gains;
}

TEST_F(EnvelopeTraits, RampAndHoldFromAnyStepOfTheFade) {
    namespace Shapes = Aud::Render::EnvelopeTraits;
    const EnvelopeParameters rampHold{0, 0.0F, 0.0F, eRampHold, {.oneRamp{0.25F, 2, eLinear, {}}}};
    const EnvelopeParameters holdRamp{0, 0.5F, 0.0F, eHoldRamp, {.oneRamp{0.25F, 2, eLinear, {}}}};
    const EnvelopeParameters twoRamps{
        0, 0.0F, 0.0F, eRampHoldRamp, {.twoRamps{0.25F, -0.25F, 2, 1, eLinear, eLinear}}};
    const struct {
        Samples (*gains)(EnvelopeParameters, std::uint32_t);
        EnvelopeParameters fade;
        std::uint32_t elapsed;
        Samples expected;
    } cases[] = {
        {gains<Shapes::RampHold>, rampHold, 0, {0.0F, 0.25F, 0.5F, 0.5F}},
        {gains<Shapes::RampHold>, rampHold, 1, {0.25F, 0.5F, 0.5F, 0.5F}},
        {gains<Shapes::RampHold>, rampHold, 9, {0.5F, 0.5F, 0.5F, 0.5F}},
        {gains<Shapes::HoldRamp>, holdRamp, 0, {0.5F, 0.5F, 0.5F, 0.75F}},
        {gains<Shapes::HoldRamp>, holdRamp, 2, {0.5F, 0.75F, 1.0F, 1.25F}},
        {gains<Shapes::HoldRamp>, holdRamp, 4, {1.0F, 1.25F, 1.5F, 1.75F}},
        {gains<Shapes::RampHoldRamp>, twoRamps, 0, {0.0F, 0.25F, 0.5F, 0.5F}},
        {gains<Shapes::RampHoldRamp>, twoRamps, 2, {0.5F, 0.5F, 0.25F, 0.0F}},
        {gains<Shapes::RampHoldRamp>, twoRamps, 4, {0.25F, 0.0F, -0.25F, -0.5F}},
    };
    for (const auto& example : cases)
        EXPECT_EQ(example.gains(example.fade, example.elapsed), example.expected)
            << "type " << example.fade.type << " from step " << example.elapsed;
}

TEST_F(EnvelopeTraits, GoThroughTheirOwnCurves) {
    namespace Shapes = Aud::Render::EnvelopeTraits;
    const EnvelopeParameters simple{0, 0.1055F, 0.0F, 0, {.oneRamp{0.1F, 0, 0, {}}}};
    EXPECT_EQ(gains<Shapes::SimpleRamp<eMixerStyleLog>>(simple, 1), (Samples{205, 305, 405, 505}));
    EXPECT_EQ(gains<Shapes::SimpleRamp<eConstantPower>>(simple, 0), (Samples{10, 20, 30, 40}));
    // The hold takes the curve of the last ramp.
    const EnvelopeParameters twoRamps{
        0, 0.1055F, 0.0F, eRampHoldRamp, {.twoRamps{0.1F, 0.1F, 1, 1, eLinear, eConstantPower}}};
    EXPECT_EQ(gains<Shapes::RampHoldRamp>(twoRamps, 0), (Samples{0.1055F, 20, 20, 30}));
}

} // namespace
} // namespace audlmd::test
