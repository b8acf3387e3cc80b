#include "ole/Aud/DynamicLevelApplyingIterators.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

using namespace Aud::DynamicLevelControl;
using DynamicLevelApplyingIterators = StageTest;

TEST_F(DynamicLevelApplyingIterators, FetchANodeWhenItIsReachedAndStayWhereTheLevelIsStationary) {
    DynamicLevelApplyingIteratorState& state = record.dynamicLevel;
    host.levelSegments = {{5, 0.0035F, 1.0F, 1}};
    for (bool forwards : {true, false}) {
        state = {.samplesToNextNode = 2, .uValue = 0.0015F, .uValueStep = 0.001F, .stationary = 0};
        ForwardsDynamicLevelApplyingIterator<Tens> forward(Tens(), state);
        ReverseDynamicLevelApplyingIterator<Tens> reverse(Tens(), state);
        // The gains are 1, 2, 3 and 3.
        EXPECT_EQ(forwards ? take(forward, 4) : take(reverse, 4), (Samples{10, 40, 90, 120}));
        EXPECT_EQ(host.count("node forwards"), 1U);
        EXPECT_EQ(host.count("node reverse"), forwards ? 0U : 1U);
    }
}

} // namespace audlmd::test
