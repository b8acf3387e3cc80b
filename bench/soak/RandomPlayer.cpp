#include "bench/soak/RandomPlayer.hpp"

#include <chrono>
#include <cmath>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace audlmd::soak {
namespace {

constexpr std::int64_t length = 20 * 48000;

/// A read takes up to 20 ms, depending on the place.
class SlowSource final : public SampleSource {
public:
    explicit SlowSource(std::shared_ptr<SampleSource> source) : source_(std::move(source)) {}

    std::int64_t length() const override { return source_->length(); }
    void read(std::int64_t position, std::span<float> samples) override {
        std::this_thread::sleep_for(std::chrono::microseconds(position % 20011));
        source_->read(position, samples);
    }
    /// One thread reads at a time, as from a file.
    const void* exclusiveResource() const override { return this; }

private:
    std::shared_ptr<SampleSource> source_;
};

/// At 0.7 of full scale.
std::shared_ptr<SampleSource> tone(double samplesPerRadian) {
    std::vector<float> samples(length);
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<float>(0.7 * std::sin(static_cast<double>(i) / samplesPerRadian));
    return std::make_shared<MemorySource>(std::move(samples));
}

/// Made once, because all sessions may read the same samples.
const Media& fastMedia() {
    static const Media media{.channels = {tone(17.0), tone(23.0)}};
    return media;
}

Media slowMedia() {
    Media media = fastMedia();
    for (auto& channel : media.channels)
        channel = std::make_shared<SlowSource>(channel);
    return media;
}

/// Clips of one to four seconds that overlap, on three tracks.
Timeline randomTimeline(std::mt19937& random) {
    Timeline timeline;
    timeline.channels = 2;
    for (int track = 0; track < 3; ++track) {
        timeline.tracks.push_back({.name = std::to_string(track), .strips = {}});
        for (std::int64_t at = 0; at < length;) {
            const auto samples = static_cast<std::int64_t>(48000 + random() % 144000);
            TimelineStrip strip;
            strip.media = random() % 4 == 0 ? "slow" : "fast";
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

} // namespace

std::unique_ptr<LivePlayer> randomPlayer(std::mt19937& random) {
    LiveOptions options;
    options.latency = 0.01 + 0.001 * static_cast<double>(random() % 200);
    options.fade = 0.001 + 0.001 * static_cast<double>(random() % 20);
    switch (random() % 3) {
    case 0:
        return std::make_unique<LivePlayer>(fastMedia(), StripSettings{}, options);
    case 1:
        return std::make_unique<LivePlayer>(slowMedia(), StripSettings{}, options);
    default:
        return std::make_unique<LivePlayer>(
            randomTimeline(random),
            [](const std::string& name) { return name == "slow" ? slowMedia() : fastMedia(); }, options);
    }
}

} // namespace audlmd::soak
