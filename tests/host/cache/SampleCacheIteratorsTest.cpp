#include "tests/host/cache/NoMemory.hpp"
#include "tests/host/cache/TestMaterial.hpp"

#include <future>
#include <map>
#include <optional>
#include <random>
#include <thread>

namespace audlmd::test {
namespace {

using testing::Each;
using testing::Pair;

/// Fails, and leaves no memory for the reason.
class SourceWithoutMemory final : public SampleSource {
public:
    std::int64_t length() const override { return 1; }
    void read(std::int64_t, std::span<float>) override {
        const std::runtime_error failure("a text that is too long for a string without memory of its own");
        failNextAllocation();
        throw failure;
    }
};

TEST(SampleCacheIterators, FindEverySampleFromAnyPositionWithOthersAtWork) {
    for (const std::int32_t segmentLength : {1, 2, 3, 7, 64, 1000})
        for (const std::int64_t length : {0, 1, 2, 6, 7, 8, 150, 3000}) {
            MaterialCache cache({.segmentLength = segmentLength, .memoryBudget = 100});
            addRamp(cache, length);
            const auto readAbout = [&cache, segmentLength, length](unsigned int seed) {
                std::mt19937 random(seed);
                std::uniform_int_distribution<std::int64_t> anyPosition(-10, length + 10);
                for (int i = 0; i < 10; ++i) {
                    const std::int64_t position = anyPosition(random);
                    const ReaderOptions options{.reverse = random() % 2 == 1,
                                                .extra = static_cast<unsigned int>(random() % 4),
                                                .gearing = static_cast<double>(random() % 3)};
                    ASSERT_EQ(read(cache, position, 180, options),
                              expectedRead(length, position, 180, options.reverse))
                        << "from " << position << " of " << length << " in segments of " << segmentLength
                        << ", seed " << seed;
                }
            };
            std::vector<std::jthread> threads;
            for (const unsigned int seed : {1U, 2U, 3U})
                threads.emplace_back(readAbout, seed);
            for (int i = 0; i < 10; ++i) {
                addRamp(cache, 100, 1);
                auto reader = forwardReader(cache, 90, {.channel = 1});
                cache.remove(cookieOf(1));
                take(reader, 20);
            }
            threads.clear();
            ASSERT_EQ(cache.statistics(cookieOf(0)).underrunSamples, 0U);
        }
}

TEST(SampleCacheIterators, FindTheirSamplesOnceTheyArriveAndWakeIfTheyWait) {
    MaterialCache cache({.segmentLength = 4});
    const auto source = addRamp(cache, 10);
    std::unique_lock held(source->gate);
    const auto realTime = forwardReader(cache, 0, {.wait = false});
    EXPECT_EQ(*realTime, 0.0F);
    auto waiting = std::async(std::launch::async, [&] { return read(cache, 0, 3); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    held.unlock();
    EXPECT_EQ(waiting.get(), ramp(3));
    EXPECT_EQ(*realTime, 1.0F);
    EXPECT_EQ(cache.statistics(cookieOf(0)).underrunSamples, 1U);
}

TEST(SampleCacheIterators, LearnOfTheSamplesThroughTheStatusAlone) {
    MaterialCache cache({.segmentLength = 4, .loaderThreads = 1});
    addRamp(cache, 4);
    const auto reader = forwardReader(cache, 0, {.wait = false});
    // Takes no lock from here on: under the thread sanitizer, samples that the status does not order are a
    // race.
    while (*reader == 0.0F)
        std::this_thread::yield();
    EXPECT_EQ(*reader, 1.0F);
}

TEST(SampleCacheIterators, ThatDoNotWaitCountWhatTheyMissInEpisodes) {
    MaterialCache cache({.segmentLength = 16});
    const auto source = addRamp(cache, 2000);
    const std::lock_guard held(source->gate);
    const auto missedAfter = [&cache](std::int64_t position, std::size_t count, bool reverse) {
        EXPECT_THAT(read(cache, position, count, {.reverse = reverse, .wait = false}), Each(0.0F));
        const MaterialStatistics statistics = cache.statistics(cookieOf(0));
        return std::pair(statistics.underrunSamples, statistics.underrunEpisodes);
    };
    EXPECT_THAT(missedAfter(-5, 25, false), Pair(20, 1));
    EXPECT_THAT(missedAfter(1990, 30, false), Pair(30, 2));
    EXPECT_THAT(missedAfter(10, 20, true), Pair(40, 3));

    // From the last sample missed to the next one in the reader's direction; the episodes that this begins.
    const std::map<std::int64_t, std::uint64_t> episodesByAdvance{{-4, 1}, {-3, 1}, {-2, 0}, {-1, 0}, {0, 0},
                                                                  {1, 0},  {2, 1},  {3, 1},  {4, 1}};
    std::int64_t last = 0;
    for (const bool reverse : {false, true})
        for (const auto& [advance, more] : episodesByAdvance) {
            last += 100;
            // A reverse reader is made at the end, exclusive, of what it reads.
            const auto [samples, episodes] = missedAfter(reverse ? last + 6 : last - 5, 6, reverse);
            const std::int64_t next = reverse ? last + 1 - advance : last + advance;
            EXPECT_THAT(missedAfter(next, 3, reverse), Pair(samples + 3, episodes + more))
                << "advance " << advance << (reverse ? ", reverse" : "");
        }
}

TEST(SampleCacheIterators, OfMaterialThatFailsRenderSilenceAndNeverBlock) {
    std::vector<float> expected = expectedRead(40, 0, 45);
    std::fill_n(expected.begin() + 16, 16, 0.0F);
    for (const char* failure : {"the tape is torn", ""}) {
        MaterialCache cache({.segmentLength = 16});
        const auto source = addRamp(cache, 40);
        source->failingPosition = 16;
        source->failure = failure;
        for (const unsigned int pass : {1U, 2U}) {
            EXPECT_EQ(read(cache, 0, 45), expected);
            const MaterialStatistics statistics = cache.statistics(cookieOf(0));
            EXPECT_EQ(statistics.underrunSamples, 16 * pass);
            EXPECT_EQ(statistics.failedSegments, 1U);
            EXPECT_EQ(statistics.firstFailure, failure);
            EXPECT_EQ(cache.usage().residentBytes, 24 * sizeof(float));
        }
    }
}

TEST(SampleCacheIterators, OfMaterialThatFailsWithoutMemoryForTheReason) {
    MaterialCache cache({.segmentLength = 16});
    cache.add(cookieOf(0), std::make_shared<SourceWithoutMemory>());
    EXPECT_EQ(read(cache, 0, 1), std::vector<float>{0.0F});
    EXPECT_EQ(cache.statistics(cookieOf(0)).firstFailure, "out of memory");
}

TEST(SampleCacheIterators, OutliveTheirMaterialAndTheirCache) {
    std::optional<MaterialCache> cache(MaterialCacheOptions{.segmentLength = 16, .loaderThreads = 1});
    const auto source = addRamp(*cache, 64);
    addRamp(*cache, 64, 1);
    std::unique_lock held(source->gate);
    // Material 0 keeps the only loader busy, so that material 1 stays requested.
    auto waitsForLoader = forwardReader(*cache, 5);
    source->awaitReads(1);
    auto waitsInQueue = forwardReader(*cache, 0, {.channel = 1});
    auto beforeTheStart = forwardReader(*cache, -2, {.channel = 1, .extra = 2});
    auto pastTheEnd = reverseReader(*cache, 66, {.channel = 1});
    auto queued = std::async(std::launch::async, [&] { return take(waitsInQueue, 70); });
    auto loading = std::async(std::launch::async, [&] { return take(waitsForLoader, 3); });
    EXPECT_EQ(queued.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);

    cache->remove(cookieOf(1));
    EXPECT_THAT(queued.get(), Each(0.0F));
    auto closing = std::async(std::launch::async, [&] { cache.reset(); });
    held.unlock();
    closing.get();
    // The read that was in hand is finished.
    EXPECT_EQ(loading.get(), expectedRead(64, 5, 3));
    EXPECT_EQ(take(waitsForLoader, 47).back(), 0.0F);
    EXPECT_THAT(take(beforeTheStart, 70), Each(0.0F));
    EXPECT_THAT(take(pastTheEnd, 70), Each(0.0F));
}

} // namespace
} // namespace audlmd::test
