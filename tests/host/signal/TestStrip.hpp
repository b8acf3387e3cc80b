#pragma once

#include "host/cache/MaterialCache.hpp"
#include "host/signal/StripPlayer.hpp"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace audlmd::test {

/// A cache with one strip of samples in it, in segments short enough to be crossed often.
class TestStrip {
public:
    explicit TestStrip(std::vector<float> samples) : length_(static_cast<std::int64_t>(samples.size())) {
        cache_.add(Cookie{}, std::make_shared<MemorySource>(std::move(samples)));
    }

    Aud::SampleCache& cache() { return cache_; }

    /// All of it, as it is.
    StripSettings settings() const {
        StripSettings settings;
        settings.to = length_;
        return settings;
    }

    /// Renders everything in calls of `block` samples.
    std::vector<float> render(const StripSettings& settings, std::uint64_t block = ~std::uint64_t{0}) {
        StripPlayer player(cache_, settings);
        return render(player, block);
    }

    static std::vector<float> render(StripPlayer& player, std::uint64_t block = ~std::uint64_t{0}) {
        std::vector<float> samples(static_cast<std::size_t>(player.outputLength() - player.position()));
        std::span<float> rest(samples);
        while (const auto count = player.render(rest.first(std::min(block, rest.size()))))
            rest = rest.subspan(count);
        samples.resize(samples.size() - rest.size());
        return samples;
    }

private:
    MaterialCache cache_{{.segmentLength = 509}};
    std::int64_t length_;
};

} // namespace audlmd::test
