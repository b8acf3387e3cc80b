#include "bench/soak/Stress.hpp"

#include "bench/soak/RandomPlayer.hpp"
#include "bench/soak/Sources.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/mix/Mixer.hpp"
#include "ole/Aud/SampleCacheIterators.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>

namespace audlmd::soak {
namespace {

constexpr std::array media{"fast", "slow", "failing"};

Cookie cookieOf(std::size_t medium) {
    return {.material = {}, .channel = static_cast<std::uint16_t>(medium), .kind = 0};
}

/// Of the first channel of every medium, and 0 outside.
float sampleAt(std::int64_t position) {
    float sample = 0.0F;
    if (position >= 0 && position < mediumLength)
        openMedium("fast").channels[0]->read(position, {&sample, 1});
    return sample;
}

/// Reads on from a place, as one render call does.
template <class Reader>
void readOn(Reader reader, std::size_t count, std::int64_t at, std::int64_t step) {
    for (std::size_t i = 0; i < count; ++i, ++reader, at += step) {
        const float sample = *reader; // once: it may become ready at any time
        if (sample != 0.0F && sample != sampleAt(at))
            throw std::runtime_error("sample " + std::to_string(at) + " is " + std::to_string(sample));
    }
}

void readAtRandom(MaterialCache& cache, std::mt19937 random) {
    for (int call = 0; call < 12; ++call) {
        const Cookie cookie = cookieOf(random() % media.size());
        const auto at = static_cast<std::int64_t>(random() % (mediumLength + 2000)) - 1000;
        const std::size_t count = 1 + random() % 4000;
        const bool wait = random() % 4 != 0;
        const auto ahead = static_cast<unsigned int>(random() % 3);
        const double speed = 0.5 + static_cast<double>(random() % 8);
        try {
            if (random() % 2 == 0)
                readOn(Aud::SampleCache::ForwardIterator(cookie, at, wait, cache, ahead, !wait, {speed}),
                       count, at, 1);
            else
                readOn(Aud::SampleCache::ReverseIterator(cookie, at, wait, cache, !wait, {speed}), count,
                       at - 1, -1);
        } catch (const UnknownMaterial&) {
            // It is just being added again.
        }
    }
}

using Channels = std::array<std::vector<float>, 2>;

void render(Mixer& mixer, std::int64_t from, Channels& output, std::size_t stretch) {
    for (std::size_t done = 0; done < output[0].size(); done += stretch) {
        const std::size_t length = std::min(stretch, output[0].size() - done);
        const std::array parts{std::span(output[0]).subspan(done, length),
                               std::span(output[1]).subspan(done, length)};
        mixer.render(from + static_cast<std::int64_t>(done), parts);
    }
}

} // namespace

void stressCache(unsigned int seed, StressTotals& totals) {
    std::mt19937 random(seed);
    MaterialCache cache({.segmentLength = 1000,
                         .memoryBudget = 8000,
                         .loaderThreads = 1 + static_cast<unsigned int>(random() % 3)});
    const auto add = [&](std::size_t medium) {
        cache.add(cookieOf(medium), openMedium(media[medium]).channels[0]);
    };
    for (std::size_t medium = 0; medium < media.size(); ++medium)
        add(medium);
    std::atomic<std::uint64_t> failed{0};
    runTogether(5, [&](std::size_t task) {
        std::mt19937 own(seed + 7919U * static_cast<unsigned int>(task));
        if (task != 0)
            return readAtRandom(cache, own);
        for (int times = 0; times < 20; ++times) {
            std::this_thread::sleep_for(std::chrono::milliseconds(own() % 20));
            const std::size_t medium = own() % media.size();
            failed += cache.remove(cookieOf(medium)).failedSegments;
            add(medium);
        }
    });
    totals.failedReads += failed;
    ++totals.rounds;
}

void stressMixer(unsigned int seed, StressTotals& totals) {
    std::mt19937 random(seed);
    const Timeline timeline = randomTimeline(random);
    Mixer mixer(timeline, &openMedium,
                {.threads = 1 + random() % 4,
                 .block = std::size_t{16} << random() % 9,
                 .memoryBudget = random() % 400'000});
    const auto from = static_cast<std::int64_t>(random() % 900'000);
    const std::size_t length = 1 + random() % 60'000;
    Channels output{std::vector<float>(length), std::vector<float>(length)};
    const bool isCalledOff = random() % 4 == 0;
    const auto calledOffAfter = std::chrono::microseconds(random() % 50'000);
    runTogether(isCalledOff ? 2 : 1, [&](std::size_t task) {
        if (task == 0)
            return render(mixer, from, output, 1 + random() % 5000);
        std::this_thread::sleep_for(calledOffAfter);
        mixer.callOff();
    });
    const MixReport report = mixer.report();
    totals.samples += 2 * length;
    totals.failedReads += static_cast<std::uint64_t>(std::ranges::count_if(
        report.strips, [](const StripReport& strip) { return !strip.failure.empty(); }));
    ++totals.rounds;
    if (isCalledOff ||
        std::ranges::any_of(report.strips, [](const StripReport& strip) { return !strip.silent.empty(); }))
        return;
    Channels expected = output;
    Mixer alone(timeline, &openMedium, {.threads = 1});
    render(alone, from, expected, length);
    if (alone.report().strips.empty() && expected != output)
        throw std::runtime_error("several threads mix other samples than one");
}

} // namespace audlmd::soak
