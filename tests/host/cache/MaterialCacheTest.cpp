#include "tests/host/cache/TestMaterial.hpp"

#include <limits>

namespace audlmd::test {
namespace {

using testing::ElementsAre;

TEST(MaterialCache, LoadsAheadOfTheReaderInItsDirection) {
    const auto readsOf = [](std::size_t count, std::int64_t position, const ReaderOptions& options = {}) {
        MaterialCache cache({.segmentLength = 10, .loaderThreads = 1, .segmentsAhead = 2});
        const auto source = addRamp(cache, 1000);
        read(cache, position, 0, options);
        return source->awaitReads(count);
    };
    EXPECT_THAT(readsOf(3, 507), ElementsAre(500, 510, 520));
    EXPECT_THAT(readsOf(3, 507, {.reverse = true}), ElementsAre(500, 490, 480));
    EXPECT_THAT(readsOf(4, 507, {.gearing = -1.5}), ElementsAre(500, 510, 520, 530));
    EXPECT_THAT(readsOf(3, -3, {.extra = 3}), ElementsAre(0, 10, 20));
    EXPECT_THAT(readsOf(2, 1200, {.reverse = true}), ElementsAre(990, 980));
}

TEST(MaterialCache, RequestsAheadForHalfItsBudgetAtMost) {
    const auto loads = [](std::uint32_t segmentsAhead, const ReaderOptions& options) {
        MaterialCache cache({.segmentLength = 10,
                             .memoryBudget = 8 * 10 * sizeof(float),
                             .loaderThreads = 1,
                             .segmentsAhead = segmentsAhead});
        addRamp(cache, 1000);
        // Requested before, hence loaded last: the second segment of another material.
        const auto other = addRamp(cache, 20, 1);
        std::unique_lock held(other->gate);
        read(cache, 0, 0, {.channel = 1});
        other->awaitReads(1);
        read(cache, 500, 0, options);
        held.unlock();
        other->awaitReads(2);
        return cache.usage().segmentsLoaded - 2;
    };
    EXPECT_EQ(loads(3, {}), 1U + 3);
    EXPECT_EQ(loads(40, {}), 1U + 4);
    EXPECT_EQ(loads(1, {.extra = 40}), 1U + 4);
    EXPECT_EQ(loads(1, {.gearing = -40.0}), 1U + 4);
}

TEST(MaterialCache, ServesWhoWaitsFirstAndOthersWhileAResourceIsBusy) {
    MaterialCache cache({.segmentLength = 10, .loaderThreads = 2, .segmentsAhead = 3});
    const auto busy = addRamp(cache, 1000);
    busy->isExclusive = true;
    addRamp(cache, 20, 1);
    std::unique_lock held(busy->gate);
    read(cache, 0, 0);
    busy->awaitReads(1);
    const auto stays = forwardReader(cache, 500);
    // Has jumped away by the time that a segment could be loaded. What was wanted last is wanted most.
    read(cache, 30, 0);
    EXPECT_EQ(read(cache, 15, 5, {.channel = 1}), expectedRead(20, 15, 5));
    held.unlock();
    EXPECT_THAT(busy->awaitReads(11), ElementsAre(0, 500, 30, 40, 50, 60, 510, 520, 530, 10, 20));
    // The last of them is not only begun.
    EXPECT_EQ(read(cache, 20, 1), expectedRead(1000, 20, 1));
    held.lock();
    read(cache, 900, 0);
    busy->awaitReads(12);
    cache.remove(cookieOf(0)); // while it is read
}

TEST(MaterialCache, FillsItsBudgetAndLoadsEachSegmentOnce) {
    // Where it holds no segment at all, the one that is read is kept beyond it.
    for (const std::size_t segments : {8U, 0U}) {
        MaterialCache cache({.segmentLength = 100, .memoryBudget = segments * 100 * sizeof(float)});
        addRamp(cache, 20050);
        EXPECT_EQ(read(cache, 0, 20050, {.extra = 2}), ramp(20050));
        EXPECT_EQ(cache.usage().peakBytes, std::max(segments, std::size_t{1}) * 100 * sizeof(float));
        EXPECT_EQ(cache.usage().segmentsLoaded, 201U);
        cache.remove(cookieOf(0));
        EXPECT_EQ(cache.usage().residentBytes, 0U);
    }
}

TEST(MaterialCache, DropsTheLeastRecentlyUsedSegment) {
    MaterialCache cache({.segmentLength = 10, .memoryBudget = 3 * 10 * sizeof(float), .segmentsAhead = 0});
    addRamp(cache, 100);
    std::vector<std::uint64_t> loads;
    // 30 takes the place of the segment at 10.
    for (const std::int64_t position : {0, 10, 20, 5, 30, 0, 20, 10}) {
        EXPECT_EQ(read(cache, position, 1), expectedRead(100, position, 1));
        loads.push_back(cache.usage().segmentsLoaded);
    }
    EXPECT_THAT(loads, ElementsAre(1, 2, 3, 3, 4, 4, 4, 5));
}

TEST(MaterialCache, NeverDropsWhatAReaderHolds) {
    MaterialCache cache({.segmentLength = 10, .memoryBudget = 6 * 10 * sizeof(float), .segmentsAhead = 1});
    addRamp(cache, 2000);
    auto holder = forwardReader(cache, 0, {.wait = false, .extra = 2});
    EXPECT_EQ(read(cache, 0, 30), ramp(30));
    read(cache, 2000, 1950, {.reverse = true});
    EXPECT_EQ(take(holder, 30), ramp(30));
    EXPECT_EQ(cache.statistics(cookieOf(0)).underrunSamples, 0U);
}

TEST(MaterialCache, RefusesWhatItCannotHold) {
    EXPECT_THROW(MaterialCache({.segmentLength = 0}), std::invalid_argument);
    EXPECT_THROW(MaterialCache({.loaderThreads = 0}), std::invalid_argument);
    MaterialCache cache;
    addRamp(cache, 1);
    EXPECT_THROW(addRamp(cache, 1), std::invalid_argument);
    EXPECT_THROW(forwardReader(cache, 0, {.channel = 7}), UnknownMaterial);
    struct SourceOfLength final : SampleSource {
        explicit SourceOfLength(std::int64_t length) : length_(length) {}
        std::int64_t length() const override { return length_; }
        void read(std::int64_t, std::span<float>) override {}
        std::int64_t length_;
    };
    EXPECT_THROW(cache.add(cookieOf(1), nullptr), std::invalid_argument);
    for (const std::int64_t length : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()})
        EXPECT_THROW(cache.add(cookieOf(1), std::make_shared<SourceOfLength>(length)), std::invalid_argument);
}

} // namespace
} // namespace audlmd::test
