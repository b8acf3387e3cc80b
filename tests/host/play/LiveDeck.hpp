#pragma once

#include "host/play/LiveOutput.hpp"
#include "host/play/LiveRenderer.hpp"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

namespace audlmd::test {

inline std::shared_ptr<SampleSource> sineSource(double hertz, std::size_t length, float amplitude = 0.5F) {
    std::vector<float> samples(length);
    for (std::size_t n = 0; n < length; ++n)
        samples[n] =
            amplitude *
            static_cast<float>(std::sin(2.0 * std::numbers::pi * hertz * static_cast<double>(n) / 48000.0));
    return std::make_shared<MemorySource>(std::move(samples));
}

inline StripSettings wholeStrip(std::int64_t length) {
    StripSettings settings;
    settings.to = length;
    return settings;
}

/// Both halves of a live player on one thread, so that nothing depends on time: before every few frames of
/// the device the renderer fills the ring.
class LiveDeck {
public:
    static constexpr std::size_t fadeFrames = 240;
    static constexpr LiveRenderer::Sizes sizes{
        .blockFrames = 50, .blocksAhead = 8, .fadeFrames = fadeFrames, .sampleRate = 48000};

    LiveDeck(const std::vector<std::shared_ptr<SampleSource>>& channels, StripSettings strip,
             LiveMix* mix = nullptr)
        : content(channels, std::move(strip), {.segmentLength = 4099}),
          output(ring, content.channels(), fadeFrames), renderer(content, mix, ring, sizes) {
        // The deck is faster than time, so all is loaded before.
        for (std::int64_t at = 0; at < content.length(); at += 4099)
            for (const double speed : {1.0, -1.0})
                content.awaitLoaded(static_cast<double>(at), speed, 1, [] { return true; });
    }

    void play(double speed) {
        order.plays = true;
        order.speed = speed;
        change();
    }
    void stop() {
        order.plays = false;
        change();
    }
    void seek(std::int64_t position) {
        output.startAt(position, order.generation + 1);
        change();
    }

    /// What the device gets: interleaved frames.
    std::vector<float> pull(std::size_t frames, bool renders = true) {
        std::vector<float> pulled(frames * content.channels());
        for (std::span<float> rest(pulled); !rest.empty();) {
            while (renders && renderer.follow(order, output.position())) {
            }
            const std::size_t count = std::min(rest.size(), 64 * content.channels());
            output.fill(rest.first(count));
            rest = rest.subspan(count);
        }
        return pulled;
    }

    LiveContent content;
    BlockRing ring{2 * sizes.blocksAhead + 2, 2 * sizes.blockFrames};
    LiveOutput output;
    LiveRenderer renderer;
    LiveOrder order;

private:
    void change() { output.turnTo(++order.generation); }
};

} // namespace audlmd::test
