#pragma once

#include "standalone/cache/CachedSegment.hpp"
#include "standalone/cache/SampleSource.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>

namespace audlmd {

class CacheCore;

/// The direction in which a reader steps.
enum class Direction : std::int32_t { reverse = -1, forward = 1 };

/// One strip that a cache knows.
struct Material : std::enable_shared_from_this<Material> {
    Material(std::shared_ptr<CacheCore> itsCore, std::shared_ptr<SampleSource> itsSource,
             std::int64_t samples, std::int32_t samplesPerSegment)
        : core(std::move(itsCore)), source(std::move(itsSource)), length(samples),
          segmentLength(samplesPerSegment) {}

    std::int64_t segmentCount() const { return (length + segmentLength - 1) / segmentLength; }

    std::int64_t start(std::uint32_t number) const { return std::int64_t{number} * segmentLength; }

    std::int32_t lengthOf(std::uint32_t number) const {
        return static_cast<std::int32_t>(std::min<std::int64_t>(segmentLength, length - start(number)));
    }

    /// A converter reads up to two samples again where a render call continues from the one before it: that
    /// is still the same episode.
    void countUnderrun(std::int64_t position, Direction direction) noexcept {
        underrunSamples.fetch_add(1, std::memory_order_relaxed);
        const std::int64_t previous = lastUnderrun.exchange(position, std::memory_order_relaxed);
        const std::int64_t advance = (position - previous) * static_cast<std::int64_t>(direction);
        if (advance < -2 || advance > 1)
            underrunEpisodes.fetch_add(1, std::memory_order_relaxed);
    }

    const std::shared_ptr<CacheCore> core;
    const std::shared_ptr<SampleSource> source;
    const std::int64_t length;
    const std::int32_t segmentLength;

    std::atomic<std::uint64_t> underrunSamples{0};
    std::atomic<std::uint64_t> underrunEpisodes{0};
    /// Far from every position.
    std::atomic<std::int64_t> lastUnderrun{-1000};

    // Under the cache's lock:
    std::unordered_map<std::uint32_t, CachedSegment*> segments;
    bool removed = false;
    std::uint64_t failedSegments = 0;
    std::string firstFailure;
};

} // namespace audlmd
