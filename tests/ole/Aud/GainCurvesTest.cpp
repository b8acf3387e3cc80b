#include "ole/Aud/GainCurves.hpp"

#include "tests/ole/Aud/StageTest.hpp"

#include <cmath>

namespace audlmd::test {

using namespace Aud::GainCurve;
using GainCurves = StageTest;

TEST_F(GainCurves, FindTheNodeAtOrBelowByADivision) {
    const struct {
        float (*curve)(float);
        float uValue, node;
    } cases[] = {
        {Curve<eLinear>::mapUValueToMagnitude, 7.0F, 7.0F},
        {Curve<eMixerStyleLog>::mapUValueToMagnitude, -0.1F, 0},
        {Curve<eMixerStyleLog>::mapUValueToMagnitude, 0.003F, 3}, // 2 by a product with 1 / 0.001
        {Curve<eMixerStyleLog>::mapUValueToMagnitude, 1.0F, 999},
        {Curve<eMixerStyleLog>::mapUValueToMagnitude, 1.5F, 1499},
        {Curve<eMixerStyleLog>::mapUValueToMagnitude, 2.0F, 1499},
        {Curve<eConstantPower>::mapUValueToMagnitude, 0.099999994F, 10}, // 9 by a product with 1 / 0.01
        {Curve<eConstantPower>::mapUValueToMagnitude, 1.0F, 100},
        {Curve<eConstantPower>::mapUValueToMagnitude, INFINITY, 100},
    };
    for (const auto& [curve, uValue, node] : cases)
        EXPECT_EQ(curve(uValue), node) << "at " << uValue;
    EXPECT_TRUE(std::isnan(Curve<eMixerStyleLog>::mapUValueToMagnitude(NAN)));
}

} // namespace audlmd::test
