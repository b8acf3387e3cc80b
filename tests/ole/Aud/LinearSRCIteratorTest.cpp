#include "ole/Aud/LinearSRCIterator.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

using LinearSRCIteratorTest = StageTest;

TEST_F(LinearSRCIteratorTest, InterpolatesAndLagsByOneSampleOnWholePositions) {
    constexpr int half = 536870912;
    const struct {
        Aud::SubSamplePos start, step;
        Samples samples;
    } cases[] = {
        {{0, 0}, {1, 0}, {10, 10, 20, 30}},
        {{0, 0}, {2, 0}, {10, 20, 40, 60}},
        {{0, 0}, {0, half}, {10, 15, 20, 25}},
        {{0, half}, {1, 0}, {15, 25, 35, 45}},
        {{1, 0}, {1, 0}, {10, 20, 30, 40}},
        {{-1, half}, {1, 0}, {10, 10, 20, 30}}, // A start before 0 is no start.
        {{0, 0}, {-1, 0}, {10, 10, 10, 10}},
    };
    for (const auto& [start, step, samples] : cases) {
        Aud::Render::LinearSRCIterator<Tens> converter(Tens(), start, step);
        EXPECT_EQ(take(converter, 4), samples) << "from " << start.sample << " by " << step.sample;
    }
}

} // namespace audlmd::test
