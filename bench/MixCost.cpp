// audlmd-bench-mix FOLDER: mixes a timeline of 2,016 clips with crossfades on 24 tracks, then renders the
// same strips alone, one after another, and prints the processor time of both, in seconds. FOLDER is for the
// sound files, 280 MB.

#include "bench/NoiseFile.hpp"
#include "bench/ProcessorTime.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/mix/Mixer.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace audlmd;
using bench::processorTime;

constexpr int sampleRate = 48000;
constexpr std::size_t fileCount = 8;
constexpr std::int64_t fileFrames = std::int64_t{90} * sampleRate;
constexpr std::size_t trackCount = 24;
constexpr std::int64_t clipsOnATrack = 84;
constexpr std::int64_t clipLength = std::int64_t{5} * sampleRate;
constexpr std::int64_t fadeLength = sampleRate / 2;
constexpr std::size_t block = 4096;
constexpr int rounds = 3;

Timeline makeTimeline(const std::filesystem::path& folder) {
    Timeline timeline;
    timeline.sampleRate = sampleRate;
    timeline.length = clipsOnATrack * (clipLength - fadeLength) + fadeLength;
    std::minstd_rand random(1);
    for (std::size_t track = 0; track < trackCount; ++track) {
        TimelineTrack& strips = timeline.tracks.emplace_back();
        for (std::int64_t clip = 0; clip < clipsOnATrack; ++clip) {
            TimelineStrip& strip = strips.strips.emplace_back();
            strip.media = folder / (std::to_string(track % fileCount) + ".wav");
            strip.at = clip * (clipLength - fadeLength);
            strip.length = clipLength;
            strip.settings.from = static_cast<std::int64_t>(random() % (fileFrames - clipLength));
            strip.settings.to = strip.settings.from + clipLength;
            strip.settings.fade = {.fadeInSamples = fadeLength,
                                   .fadeOutSamples = fadeLength,
                                   .fadeInCurve = FadeCurve::power,
                                   .fadeOutCurve = FadeCurve::power};
        }
    }
    return timeline;
}

/// The sum of all samples, by which the two ways are compared.
double mixed(const Timeline& timeline) {
    Mixer mixer(timeline, &openSoundFile, {.threads = 1, .block = block});
    std::vector<std::vector<float>> channels(timeline.channels, std::vector<float>(block));
    const std::vector<std::span<float>> spans(channels.begin(), channels.end());
    double sum = 0.0;
    for (std::int64_t position = 0; position < timeline.length; position += block) {
        mixer.render(position, spans);
        for (const std::vector<float>& channel : channels)
            for (const float sample : channel)
                sum += static_cast<double>(sample);
    }
    return sum;
}

double renderedAlone(const TimelineStrip& strip) {
    const Media media = openSoundFile(strip.media);
    MaterialCache cache({.segmentLength = 16384, .memoryBudget = std::size_t{4} << 20});
    StripSettings settings = strip.settings;
    std::vector<float> samples(block);
    double sum = 0.0;
    std::vector<std::unique_ptr<StripPlayer>> players;
    for (const auto& channel : media.channels) {
        settings.cookie.channel = static_cast<std::uint16_t>(players.size());
        cache.add(settings.cookie, channel);
        players.push_back(std::make_unique<StripPlayer>(cache, settings));
    }
    // Side by side, because the file is decoded for both channels at once.
    for (std::uint64_t count = 1; count != 0;)
        for (const auto& player : players) {
            count = player->render(samples);
            for (std::size_t i = 0; i < count; ++i)
                sum += static_cast<double>(samples[i]);
        }
    return sum;
}

double allAlone(const Timeline& timeline) {
    double sum = 0.0;
    for (const TimelineTrack& track : timeline.tracks)
        for (const TimelineStrip& strip : track.strips)
            sum += renderedAlone(strip);
    return sum;
}

struct Cost {
    double seconds = INFINITY;
    double sum = 0.0;

    template <class Work>
    void measure(Work work) {
        const double before = processorTime();
        sum = work();
        seconds = std::min(seconds, processorTime() - before);
    }
};

int run(const std::filesystem::path& folder) {
    for (unsigned int file = 0; file < fileCount; ++file)
        bench::writeNoise(folder / (std::to_string(file) + ".wav"), file + 1, fileFrames);
    const Timeline timeline = makeTimeline(folder);
    Cost mix;
    Cost alone;
    for (int round = 0; round < rounds; ++round) {
        mix.measure([&] { return mixed(timeline); });
        alone.measure([&] { return allAlone(timeline); });
    }
    // The sums are those of two orders of addition.
    if (std::abs(mix.sum - alone.sum) > 1e-4 * std::abs(alone.sum)) {
        std::fprintf(stderr, "audlmd-bench-mix: the mix is not the sum of its strips: %g, %g\n", mix.sum,
                     alone.sum);
        return 1;
    }
    std::printf("%.3f %.3f\n", mix.seconds, alone.seconds);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "audlmd-bench-mix: takes one argument, a folder for sound files\n");
        return 2;
    }
    try {
        return run(argv[1]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "audlmd-bench-mix: %s\n", error.what());
        return 1;
    }
}
