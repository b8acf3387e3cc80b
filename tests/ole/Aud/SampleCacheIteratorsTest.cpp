#include "ole/Aud/SampleCacheIterators.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {

/// Material of six samples, 1 to 6, in two segments of three.
class SourceIterators : public StageTest {
protected:
    SourceIterators() {
        host.materialSamples = 6;
        host.segments = {{0, 3}, {3, 3}};
        host.material = samples;
    }

    struct : Aud::SampleCache {
    } cache;
    Orv::OutputGearing gearing;
    float samples[6] = {1, 2, 3, 4, 5, 6};
};

TEST_F(SourceIterators, ReadTheMaterialBetweenSilence) {
    Aud::SampleCache::ForwardIterator forward({}, -1, false, cache, 0, true, gearing);
    EXPECT_EQ(take(forward, 8), (Samples{0, 1, 2, 3, 4, 5, 6, 0}));
    Aud::SampleCache::ReverseIterator reverse({}, 6, false, cache, true, gearing);
    EXPECT_EQ(take(reverse, 8), (Samples{0, 6, 5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(host.underruns, 0U);
}

TEST_F(SourceIterators, StayForwardsOnASegmentOfUnknownLength) {
    host.segments[0].statuses = {7};
    Aud::SampleCache::ForwardIterator forward({}, 0, false, cache, 0, true, gearing);
    EXPECT_EQ(take(forward, 6), Samples(6));
    EXPECT_EQ(host.count("move forward"), 0U);
    EXPECT_EQ(host.underruns, 6U);
}

/// A host may place an iterator before its segment. From there no step leads to another segment.
TEST_F(SourceIterators, MoveInReverseWhereTheIndexBecomesMinusOneExactly) {
    host.segments = {{3, 3}};
    for (const auto& [position, moves] : {std::pair{4, 0U}, {3, 1U}, {2, 0U}, {1, 0U}}) {
        host.log.clear();
        Aud::SampleCache::ReverseIterator reverse({}, position, false, cache, true, gearing);
        ++reverse;
        EXPECT_EQ(host.count("move reverse"), moves) << "from the index " << position - 3;
    }
}

} // namespace audlmd::test
