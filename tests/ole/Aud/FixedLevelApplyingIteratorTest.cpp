#include "ole/Aud/FixedLevelApplyingIterator.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

using FixedLevelApplyingIterator = StageTest;

TEST_F(FixedLevelApplyingIterator, TakesItsGainOnceThroughTheMixerStyleCurve) {
    Aud::Render::FixedLevelApplyingIterator<Tens> level(Tens(), 0.0055F);
    EXPECT_EQ(take(level, 2), (Samples{50, 100}));
    useCurveTables(1);
    EXPECT_EQ(take(level, 2), (Samples{150, 200}));
}

} // namespace audlmd::test
