#include "ole/Aud/SampleCacheIterators.hpp"

#include "tests/ole/Aud/StageTest.hpp"

namespace audlmd::test {
namespace {

using Forward = Aud::SampleCache::ForwardIterator;
using Reverse = Aud::SampleCache::ReverseIterator;

/// Material of six samples, 1 to 6, in two segments of three.
class SampleCacheIterators : public StageTest {
protected:
    SampleCacheIterators() {
        host.materialSamples = 6;
        host.segments = {{0, 3}, {3, 3}};
        host.material = samples;
        host.cache = &cache;
        host.gearing = &gearing;
    }

    Forward forwardFrom(long position, bool wait = false) {
        return {ScriptedHost::cookie, position, wait, cache, 0, !wait, gearing};
    }
    Reverse reverseFrom(long position) {
        return {ScriptedHost::cookie, position, false, cache, true, gearing};
    }

    struct : Aud::SampleCache {
    } cache;
    Orv::OutputGearing gearing;
    float samples[6] = {1, 2, 3, 4, 5, 6};
};

TEST_F(SampleCacheIterators, ReadTheMaterialBetweenSilence) {
    Forward forward = forwardFrom(-1);
    EXPECT_EQ(take(forward, 8), (Samples{0, 1, 2, 3, 4, 5, 6, 0}));
    Reverse reverse = reverseFrom(6);
    EXPECT_EQ(take(reverse, 8), (Samples{0, 6, 5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(host.underruns, 0U);
}

TEST_F(SampleCacheIterators, WaitForARequestOrCountTheSampleAsMissing) {
    for (bool wait : {false, true}) {
        host.segments[0].statuses = {2};
        Forward forward = forwardFrom(1, wait);
        EXPECT_EQ(*forward, wait ? 2.0F : 0.0F);
        EXPECT_EQ(host.underruns, 1U);
    }
}

TEST_F(SampleCacheIterators, StayForwardsOnASegmentOfUnknownLength) {
    host.segments[0].statuses = {7};
    Forward forward = forwardFrom(0);
    EXPECT_EQ(take(forward, 6), Samples(6));
    EXPECT_EQ(host.count("move forward"), 0U);
    EXPECT_EQ(host.underruns, 6U);
}

/// The host may place an iterator before its segment; from there no step leads to another one.
TEST_F(SampleCacheIterators, MoveInReverseFromIndexMinusOneExactly) {
    host.segments = {{3, 3}};
    const struct {
        long position;
        std::size_t moves;
    } cases[] = {{4, 0}, {3, 1}, {2, 0}, {1, 0}}; // At the indices 1, 0, -1 and -2.
    for (const auto& [position, moves] : cases) {
        host.log.clear();
        Reverse reverse = reverseFrom(position);
        ++reverse;
        EXPECT_EQ(host.count("move reverse"), moves) << "from position " << position;
    }
}

} // namespace
} // namespace audlmd::test
