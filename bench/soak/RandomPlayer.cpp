#include "bench/soak/RandomPlayer.hpp"

#include "bench/soak/Sources.hpp"

#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::soak {

Timeline randomTimeline(std::mt19937& random) {
    // Strips that fail are silent.
    constexpr const char* names[] = {"fast", "fast", "fast", "fast", "slow", "slow", "failing", "missing"};
    Timeline timeline;
    timeline.channels = 2;
    for (int track = 0; track < 3; ++track) {
        timeline.tracks.push_back({.name = std::to_string(track), .strips = {}});
        for (std::int64_t at = 0; at < mediumLength;) {
            const auto samples = static_cast<std::int64_t>(48000 + random() % 144000);
            TimelineStrip strip;
            strip.media = names[random() % std::size(names)];
            strip.at = at;
            strip.length = samples;
            strip.settings.to = samples;
            strip.settings.reverse = random() % 3 == 0;
            timeline.tracks.back().strips.push_back(std::move(strip));
            at += samples - 12000;
        }
    }
    for (const TimelineStrip& strip : timeline.tracks.front().strips)
        timeline.length = std::max<std::int64_t>(timeline.length, (strip.at + strip.length).number());
    return timeline;
}

std::unique_ptr<LivePlayer> randomPlayer(std::mt19937& random) {
    LiveOptions options;
    options.latency = 0.01 + 0.001 * static_cast<double>(random() % 200);
    options.fade = 0.001 + 0.001 * static_cast<double>(random() % 20);
    // Half of the caches have no room for all that is played.
    if (random() % 2 == 0)
        options.cache.memoryBudget = std::size_t{65536} * (2 + random() % 20);
    switch (random() % 3) {
    case 0:
        return std::make_unique<LivePlayer>(openMedium("fast"), StripSettings{}, options);
    case 1:
        return std::make_unique<LivePlayer>(openMedium("slow"), StripSettings{}, options);
    default:
        return std::make_unique<LivePlayer>(randomTimeline(random), &openMedium, options);
    }
}

} // namespace audlmd::soak
