#include "tests/cache/TestMaterial.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <optional>
#include <random>

namespace audlmd::test {
namespace {

using testing::Each;
using testing::ElementsAre;

/// Reads a stretch, changing over to a copy now and then, and compares every sample.
template <class Reader>
void expectRamp(Reader made, std::int64_t length, int count, int step, std::mt19937& random) {
    std::optional<Reader> reader(std::in_place, made);
    std::int64_t position = made.position();
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(reader->position(), position);
        ASSERT_EQ(**reader, expectedAt(position, length)) << "at " << position << " of " << length;
        if (random() % 8 == 0) {
            const Reader copy(*reader);
            reader.emplace(copy);
        }
        ++*reader;
        position += step;
    }
}

TEST(Reader, FindsEverySampleFromAnyPositionInBothDirections) {
    std::mt19937 random(2);
    for (const std::int32_t segmentLength : {1, 2, 3, 7, 64, 1000})
        for (const std::int64_t length : {0, 1, 2, 6, 7, 8, 150}) {
            const std::size_t budget = 4 * sizeof(float) * static_cast<std::size_t>(segmentLength);
            MaterialCache cache({.segmentLength = segmentLength, .memoryBudget = budget});
            cache.add(cookieOf(0), std::make_shared<MemorySource>(ramp(length)));
            std::uniform_int_distribution<std::int64_t> anyPosition(-10, length + 10);
            for (int i = 0; i < 10; ++i) {
                const ReaderOptions options{.extra = static_cast<unsigned int>(random() % 4),
                                            .gearing = static_cast<double>(random() % 3)};
                const std::int64_t position = anyPosition(random);
                const auto forward = forwardReader(cache, cookieOf(0), position, options);
                ASSERT_EQ(forward.position(), position);
                expectRamp(forward, length, 180, 1, random);
                const auto reverse = reverseReader(cache, cookieOf(0), position, options);
                ASSERT_EQ(reverse.position(), position - 1);
                expectRamp(reverse, length, 180, -1, random);
            }
            ASSERT_EQ(cache.statistics(cookieOf(0)).underrunSamples, 0U);
        }
}

TEST(Reader, WakesWhenItsSegmentArrives) {
    const auto source = std::make_shared<ScriptedSource>(10);
    source->hold();
    MaterialCache cache({.segmentLength = 4});
    cache.add(cookieOf(0), source);
    auto reading = std::async(std::launch::async, [&] {
        auto reader = forwardReader(cache, cookieOf(0), 0);
        return take(reader, 3);
    });
    source->awaitReads(1);
    EXPECT_EQ(reading.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
    source->letGo();
    EXPECT_THAT(reading.get(), ElementsAre(1.0F, 2.0F, 3.0F));
    EXPECT_EQ(cache.statistics(cookieOf(0)).underrunSamples, 0U);
}

TEST(Reader, ThatDoesNotWaitCountsWhatIsMissing) {
    const auto source = std::make_shared<ScriptedSource>(100);
    source->hold();
    MaterialCache cache({.segmentLength = 16});
    cache.add(cookieOf(0), source);
    const ReaderOptions noWaiting{.wait = false};
    const auto expectUnderruns = [&](std::uint64_t samples, std::uint64_t episodes) {
        EXPECT_EQ(cache.statistics(cookieOf(0)).underrunSamples, samples);
        EXPECT_EQ(cache.statistics(cookieOf(0)).underrunEpisodes, episodes);
    };
    const auto readForward = [&](std::int64_t position, std::size_t count) {
        auto reader = forwardReader(cache, cookieOf(0), position, noWaiting);
        EXPECT_THAT(take(reader, count), Each(0.0F));
    };

    readForward(-5, 25);
    expectUnderruns(20, 1);
    readForward(20, 10);
    expectUnderruns(30, 1);
    // As a converter does that needs the last two samples once more.
    readForward(27, 6);
    expectUnderruns(36, 1);
    auto backwards = reverseReader(cache, cookieOf(0), 33, noWaiting);
    EXPECT_THAT(take(backwards, 13), Each(0.0F));
    auto furtherBackwards = reverseReader(cache, cookieOf(0), 23, noWaiting);
    EXPECT_THAT(take(furtherBackwards, 3), Each(0.0F));
    expectUnderruns(52, 1);
    readForward(50, 2);
    expectUnderruns(54, 2);
    readForward(90, 30);
    expectUnderruns(64, 3);
    source->letGo();
}

TEST(Reader, FindsItsSamplesOnceTheyAreThereWithoutWaiting) {
    const auto source = std::make_shared<ScriptedSource>(32);
    source->hold();
    MaterialCache cache({.segmentLength = 16, .loaderThreads = 1, .segmentsAhead = 1});
    cache.add(cookieOf(0), source);
    auto realTime = forwardReader(cache, cookieOf(0), 0, {.wait = false});
    EXPECT_EQ(*realTime, 0.0F);
    source->letGo();
    // The one loader has filled the first segment once it has filled the second, which it was asked for
    // later.
    EXPECT_EQ(*forwardReader(cache, cookieOf(0), 16), 17.0F);
    EXPECT_EQ(*realTime, 1.0F);
}

TEST(Reader, OfMaterialThatFailsRendersSilenceAndNeverBlocks) {
    const auto source = std::make_shared<ScriptedSource>(40);
    source->failAt(16);
    MaterialCache cache({.segmentLength = 16});
    cache.add(cookieOf(0), source);
    for (int pass = 1; pass <= 2; ++pass) {
        auto reader = forwardReader(cache, cookieOf(0), 0);
        for (std::int64_t position = 0; position < 45; ++position, ++reader)
            ASSERT_EQ(*reader, position / 16 == 1 ? 0.0F : expectedAt(position, 40)) << position;
        const MaterialStatistics statistics = cache.statistics(cookieOf(0));
        EXPECT_EQ(statistics.underrunSamples, 16U * static_cast<unsigned int>(pass));
        EXPECT_EQ(statistics.underrunEpisodes, static_cast<unsigned int>(pass));
        EXPECT_EQ(statistics.failedSegments, 1U);
        EXPECT_EQ(statistics.firstFailure, "the tape is torn");
        EXPECT_EQ(cache.usage().residentBytes, 24 * sizeof(float));
    }
}

TEST(Reader, OfUnknownMaterialCannotBeMade) {
    MaterialCache cache;
    try {
        forwardReader(cache, cookieOf(7), 0);
        FAIL();
    } catch (const UnknownMaterial& unknown) {
        EXPECT_THAT(unknown.what(), testing::HasSubstr("channel 7"));
    }
    EXPECT_THROW(reverseReader(cache, cookieOf(7), 0), UnknownMaterial);
}

TEST(Reader, OutlivesItsMaterialAndItsCache) {
    const auto source = std::make_shared<ScriptedSource>(64);
    source->hold();
    auto cache =
        std::make_unique<MaterialCache>(MaterialCacheOptions{.segmentLength = 16, .loaderThreads = 1});
    cache->add(cookieOf(0), source);
    cache->add(cookieOf(1), std::make_shared<MemorySource>(ramp(64)));
    // Material 0 keeps the only loader busy, so that material 1 stays requested.
    auto waitsForLoader = forwardReader(*cache, cookieOf(0), 5);
    source->awaitReads(1);
    auto waitsInQueue = forwardReader(*cache, cookieOf(1), 0);
    auto beforeTheStart = forwardReader(*cache, cookieOf(1), -2, {.extra = 2});
    auto pastTheEnd = reverseReader(*cache, cookieOf(1), 66);
    auto queued = std::async(std::launch::async, [&] { return take(waitsInQueue, 70); });
    auto loading = std::async(std::launch::async, [&] { return take(waitsForLoader, 20); });
    EXPECT_EQ(queued.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);

    cache->remove(cookieOf(1));
    EXPECT_THAT(queued.get(), Each(0.0F));
    EXPECT_THROW(forwardReader(*cache, cookieOf(1), 0), UnknownMaterial);
    auto closing = std::async(std::launch::async, [&] { cache.reset(); });
    source->letGo();
    closing.get();
    // The read that was in hand is finished; whether the one after it is, depends.
    std::vector<float> firstSegment = loading.get();
    firstSegment.resize(3);
    EXPECT_THAT(firstSegment, ElementsAre(6.0F, 7.0F, 8.0F));
    EXPECT_EQ(take(waitsForLoader, 30).back(), 0.0F);
    EXPECT_THAT(take(beforeTheStart, 70), Each(0.0F));
    EXPECT_THAT(take(pastTheEnd, 70), Each(0.0F));
}

} // namespace
} // namespace audlmd::test
