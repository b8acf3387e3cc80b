#pragma once

#include "host/mix/Mixer.hpp"

#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::test {

using Channels = std::vector<std::vector<float>>;

/// A sound with many frequencies that rises and falls, different for every number.
inline std::vector<float> soundNumber(int number, std::size_t length) {
    std::vector<float> samples(length);
    for (std::size_t i = 0; i < length; ++i) {
        const double t = static_cast<double>(i);
        samples[i] = static_cast<float>(0.4 * std::sin(t * (0.05 + 0.01 * number)) +
                                        0.3 * std::sin(t * t * 1e-5 + number));
    }
    return samples;
}

/// Media in memory, by name.
class TestMedia {
public:
    void add(const std::string& name, Channels channels, int sampleRate = 48000) {
        Media media{.channels = {}, .sampleRate = sampleRate};
        for (std::vector<float>& channel : channels)
            media.channels.push_back(std::make_shared<MemorySource>(std::move(channel)));
        media_[name] = std::move(media);
    }

    OpenMedia opener() const {
        return [media = media_](const std::string& name) {
            const auto found = media.find(name);
            if (found == media.end())
                throw std::runtime_error("no medium '" + name + "'");
            return found->second;
        };
    }

private:
    std::map<std::string, Media> media_;
};

class BrokenSource final : public SampleSource {
public:
    std::int64_t length() const override { return 9600; }
    void read(std::int64_t, std::span<float>) override { throw std::runtime_error("bad sector"); }
};

/// A strip that plays all of a medium, or the first samples.
inline TimelineStrip stripOf(const std::string& media, std::int64_t at, std::int64_t length) {
    TimelineStrip strip;
    strip.name = "strip of " + media;
    strip.media = media;
    strip.at = at;
    strip.length = length;
    strip.settings.to = length;
    return strip;
}

/// On one track.
inline Timeline timelineOf(std::vector<TimelineStrip> strips, std::size_t channels = 1) {
    Timeline timeline;
    timeline.channels = channels;
    timeline.tracks.push_back({.name = "track", .strips = std::move(strips)});
    return timeline;
}

/// With `stems`, which the mixer must give, those behind the mix.
inline Channels mixed(Mixer& mixer, std::int64_t position, std::size_t frames, bool stems = false) {
    const std::size_t parts = stems ? 1 + mixer.timeline().tracks.size() : 1;
    Channels channels(parts * outputLayout(mixer.timeline()).size(), std::vector<float>(frames, NAN));
    const std::vector<std::span<float>> spans(channels.begin(), channels.end());
    mixer.render(position, spans);
    return channels;
}

} // namespace audlmd::test
