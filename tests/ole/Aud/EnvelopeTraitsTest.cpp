#include "ole/Aud/EnvelopeTraits.hpp"

#include "tests/ole/Aud/StageTest.hpp"

#include <algorithm>
#include <vector>

namespace audlmd::test {
namespace {

using namespace Aud::Render;
using namespace Aud::Render::EnvelopeTraits;

using EnvelopeTraitsTest = StageTest;
using Lengths = std::vector<std::uint32_t>;
constexpr std::uint32_t forever = Phase::forever;

/// Walks a shape's phases, in pieces of `most` samples at most, beside a shape that steps through the same
/// samples, and returns the phases' lengths as they are met.
template <class Shape>
Lengths lengthsOf(const EnvelopeParameters& parameters, std::uint32_t most) {
    Shape skipped(parameters), stepped(parameters);
    Lengths lengths;
    for (int piece = 0; piece < 4; ++piece) {
        const Phase phase = skipped.phase();
        lengths.push_back(phase.length);
        const std::uint32_t count = std::min(phase.length, most);
        float uValue = phase.uValue;
        for (std::uint32_t i = 0; i < count;
             ++i, uValue += phase.holds ? 0.0F : phase.step, stepped.advance())
            EXPECT_EQ(phase.curve(uValue), stepped.gain()) << "piece " << piece << ", sample " << i;
        skipped.skip(count, uValue);
    }
    return lengths;
}

TEST_F(EnvelopeTraitsTest, PhasesGoOnAsTheShapeDoesStepByStep) {
    EnvelopeParameters fade{1, 0.25F, 0.0F, eRampHold, {.oneRamp{0.125F, 5, 1, {}}}};
    EXPECT_EQ(lengthsOf<SimpleRamp<Aud::GainCurve::eConstantPower>>(fade, 3), Lengths(4, forever));
    EXPECT_EQ(lengthsOf<RampHold>(fade, 3), (Lengths{4, 1, forever, forever}));
    fade.type = eHoldRamp;
    EXPECT_EQ(lengthsOf<HoldRamp>(fade, 3), (Lengths{4, 1, forever, forever}));
    fade = {1, 0.25F, 0.0F, eRampHoldRamp, {.twoRamps{0.125F, -0.0625F, 3, 4, 1, 3}}};
    EXPECT_EQ(lengthsOf<RampHoldRamp>(fade, 3), (Lengths{2, 4, 1, forever}));
}

} // namespace
} // namespace audlmd::test
