#include "tests/cache/TestMaterial.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

namespace audlmd::test {
namespace {

using testing::ElementsAre;

constexpr std::size_t bytesOf(int segments, int segmentLength) {
    return static_cast<std::size_t>(segments) * static_cast<std::size_t>(segmentLength) * sizeof(float);
}

TEST(Cache, LoadsAheadOfTheReaderInItsDirection) {
    const auto readsOf = [](auto makeReader, std::size_t count) {
        const auto source = std::make_shared<ScriptedSource>(1000);
        MaterialCache cache({.segmentLength = 10, .loaderThreads = 1, .segmentsAhead = 2});
        cache.add(cookieOf(0), source);
        const auto reader = makeReader(cache);
        return source->awaitReads(count);
    };
    EXPECT_THAT(readsOf([](auto& c) { return forwardReader(c, cookieOf(0), 507); }, 3),
                ElementsAre(500, 510, 520));
    EXPECT_THAT(readsOf([](auto& c) { return reverseReader(c, cookieOf(0), 507); }, 3),
                ElementsAre(500, 490, 480));
    EXPECT_THAT(readsOf([](auto& c) { return forwardReader(c, cookieOf(0), 507, {.gearing = -1.5}); }, 4),
                ElementsAre(500, 510, 520, 530));
    EXPECT_THAT(readsOf([](auto& c) { return forwardReader(c, cookieOf(0), -3, {.extra = 3}); }, 3),
                ElementsAre(0, 10, 20));
    EXPECT_THAT(readsOf([](auto& c) { return reverseReader(c, cookieOf(0), 1200); }, 2),
                ElementsAre(990, 980));
}

TEST(Cache, ServesWhoWaitsBeforeWhatIsOnlyAhead) {
    const auto source = std::make_shared<ScriptedSource>(1000);
    source->hold();
    MaterialCache cache({.segmentLength = 10, .loaderThreads = 1, .segmentsAhead = 3});
    cache.add(cookieOf(0), source);
    const auto first = forwardReader(cache, cookieOf(0), 0);
    source->awaitReads(1);
    const auto elsewhere = forwardReader(cache, cookieOf(0), 500);
    const auto onWhatWasAhead = forwardReader(cache, cookieOf(0), 30);
    source->letGo();
    EXPECT_THAT(source->awaitReads(9), ElementsAre(0, 500, 30, 10, 20, 510, 520, 530, 40));
}

TEST(Cache, ServesOthersWhileAResourceIsBusy) {
    class FileLikeSource : public ScriptedSource {
    public:
        using ScriptedSource::ScriptedSource;
        const void* exclusiveResource() const override { return this; }
    };
    const auto busy = std::make_shared<FileLikeSource>(1000);
    busy->hold();
    MaterialCache cache({.segmentLength = 10, .loaderThreads = 2});
    cache.add(cookieOf(0), busy);
    cache.add(cookieOf(1), std::make_shared<MemorySource>(ramp(20)));
    const auto reader = forwardReader(cache, cookieOf(0), 0);
    busy->awaitReads(1);
    EXPECT_EQ(*forwardReader(cache, cookieOf(1), 15), 16.0F);
    busy->letGo();
    EXPECT_THAT(busy->awaitReads(3), ElementsAre(0, 10, 20));
}

TEST(Cache, KeepsToItsBudgetAndLoadsEachSegmentOnce) {
    MaterialCache cache({.segmentLength = 100, .memoryBudget = bytesOf(8, 100)});
    cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(20050)));
    auto reader = forwardReader(cache, cookieOf(0), 0, {.extra = 2});
    const std::vector<float> samples = take(reader, 20050);
    EXPECT_EQ(samples, ramp(20050));
    EXPECT_LE(cache.usage().peakBytes, bytesOf(8, 100));
    EXPECT_GE(cache.usage().residentBytes, bytesOf(7, 100));
    EXPECT_EQ(cache.usage().segmentsLoaded, 201U);
    cache.remove(cookieOf(0));
    EXPECT_EQ(cache.usage().residentBytes, 0U);
}

TEST(Cache, DropsTheLeastRecentlyUsedSegment) {
    MaterialCache cache({.segmentLength = 10, .memoryBudget = bytesOf(3, 10), .segmentsAhead = 0});
    cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(100)));
    const auto loadsAfterReading = [&](std::int64_t position) {
        EXPECT_EQ(*forwardReader(cache, cookieOf(0), position), expectedAt(position, 100));
        return cache.usage().segmentsLoaded;
    };
    loadsAfterReading(0);
    loadsAfterReading(10);
    EXPECT_EQ(loadsAfterReading(20), 3U);
    EXPECT_EQ(loadsAfterReading(5), 3U);
    EXPECT_EQ(loadsAfterReading(30), 4U); // in the place of the segment at 10
    EXPECT_EQ(loadsAfterReading(0), 4U);
    EXPECT_EQ(loadsAfterReading(20), 4U);
    EXPECT_EQ(loadsAfterReading(10), 5U);
}

TEST(Cache, NeverDropsWhatAReaderHolds) {
    MaterialCache cache({.segmentLength = 10, .memoryBudget = bytesOf(6, 10), .segmentsAhead = 1});
    cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(2000)));
    auto holder = forwardReader(cache, cookieOf(0), 0, {.wait = false, .extra = 2});
    for (const std::int64_t position : {0, 10, 20})
        EXPECT_EQ(*forwardReader(cache, cookieOf(0), position), expectedAt(position, 2000));
    auto passer = reverseReader(cache, cookieOf(0), 2000);
    take(passer, 1950);
    EXPECT_EQ(take(holder, 30), ramp(30));
    EXPECT_EQ(cache.statistics(cookieOf(0)).underrunSamples, 0U);
}

TEST(Cache, ReadsOnWhereTheBudgetHoldsNoSegmentAtAll) {
    MaterialCache cache({.segmentLength = 10, .memoryBudget = 0});
    cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(200)));
    auto reader = forwardReader(cache, cookieOf(0), 0, {.extra = 4});
    EXPECT_EQ(take(reader, 200), ramp(200));
    EXPECT_EQ(cache.usage().peakBytes, bytesOf(1, 10));
}

TEST(Cache, RefusesWhatItCannotHold) {
    EXPECT_THROW(MaterialCache({.segmentLength = 0}), std::invalid_argument);
    EXPECT_THROW(MaterialCache({.loaderThreads = 0}), std::invalid_argument);
    MaterialCache cache;
    cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(1)));
    EXPECT_THROW(cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(1))), std::invalid_argument);
    EXPECT_THROW(cache.add(cookieOf(1), nullptr), std::invalid_argument);
    EXPECT_THROW(cache.remove(cookieOf(1)), UnknownMaterial);
    EXPECT_THROW(cache.statistics(cookieOf(1)), UnknownMaterial);
}

TEST(Cache, ServesManyThreadsAtOnce) {
    constexpr std::int64_t length = 3000;
    MaterialCache cache({.segmentLength = 37, .memoryBudget = bytesOf(12, 37), .loaderThreads = 3});
    for (std::uint16_t channel = 0; channel < 3; ++channel)
        cache.add(cookieOf(channel), std::make_shared<MemorySource>(ramp(length)));
    std::atomic<std::uint64_t> missed{0};

    const auto readAbout = [&](unsigned int seed) {
        std::mt19937 random(seed);
        const auto check = [&](auto reader, std::int64_t step, bool wait) {
            for (int i = 0; i < 200; ++i, ++reader) {
                const float expected = expectedAt(reader.position(), length);
                const float sample = *reader;
                if (sample != expected && !wait && sample == 0.0F)
                    ++missed;
                else
                    ASSERT_EQ(sample, expected) << reader.position() << " step " << step;
            }
        };
        for (int i = 0; i < 60; ++i) {
            const Cookie cookie = cookieOf(static_cast<std::uint16_t>(random() % 3));
            const std::int64_t position = static_cast<std::int64_t>(random() % (length + 100)) - 50;
            const ReaderOptions options{.wait = random() % 4 != 0,
                                        .extra = static_cast<unsigned int>(random() % 3)};
            if (random() % 2 == 0)
                check(forwardReader(cache, cookie, position, options), 1, options.wait);
            else
                check(reverseReader(cache, cookie, position, options), -1, options.wait);
        }
    };
    {
        std::vector<std::jthread> threads;
        for (unsigned int seed = 1; seed <= 4; ++seed)
            threads.emplace_back(readAbout, seed);
        for (int i = 0; i < 100; ++i) {
            cache.add(cookieOf(9), std::make_shared<MemorySource>(ramp(100)));
            auto reader = forwardReader(cache, cookieOf(9), 90);
            cache.remove(cookieOf(9));
            take(reader, 20);
        }
    }
    std::uint64_t counted = 0;
    for (std::uint16_t channel = 0; channel < 3; ++channel)
        counted += cache.remove(cookieOf(channel)).underrunSamples;
    EXPECT_EQ(counted, missed.load());
}

} // namespace
} // namespace audlmd::test
