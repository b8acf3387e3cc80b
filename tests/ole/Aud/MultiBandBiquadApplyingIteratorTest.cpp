#include "ole/Aud/MultiBandBiquadApplyingIterator.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

using MultiBandBiquadApplyingIterator = StageTest;

TEST_F(MultiBandBiquadApplyingIterator, IsOneSampleAheadOfTheReadAndRunsTheBandsInOrder) {
    for (unsigned int band = 0; band < 5; ++band)
        host.bands[band] = {.gain = static_cast<float>(band + 2), .memory = static_cast<float>(10 * band)};
    host.bands[4].result = 7.0F;
    Aud::Render::MultiBandBiquadApplyingIterator<Tens> equaliser(Tens(), &record.equaliser);
    EXPECT_EQ(*equaliser, 7.0F); // What the render call before left.
    ++equaliser;
    EXPECT_EQ(*equaliser, ((((20.0F * 2 + 0) * 3 + 10) * 4 + 20) * 5 + 30) * 6 + 40);
}

} // namespace audlmd::test
