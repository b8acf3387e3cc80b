#pragma once

#include "host/cache/CachedSegment.hpp"
#include "host/cache/SampleSource.hpp"
#include "loop_modes/ModeCode.hpp"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace audlmd {

class CacheCore;

/// What a reader adds to its position to reach its next sample, or to a segment's number to reach the next
/// segment.
constexpr std::int64_t step(Aud::Render::Direction direction) {
    return direction == Aud::Render::Direction::forward ? 1 : -1;
}

/// One material that a cache knows, its segments and its statistics.
///
/// The first five members never change. The counters of underruns are atomic, because readers count without a
/// lock.
struct Material : std::enable_shared_from_this<Material> {
    /// Both lengths are in samples.
    Material(std::shared_ptr<CacheCore> itsCore, std::shared_ptr<SampleSource> itsSource,
             std::int64_t samples, std::int32_t samplesPerSegment)
        : core(std::move(itsCore)), source(std::move(itsSource)), inFrames(source->inFrames()),
          length(samples), segmentLength(samplesPerSegment) {}

    std::int64_t segmentCount() const { return (length + segmentLength - 1) / segmentLength; }

    /// The position of the segment's first sample.
    std::int64_t start(std::uint32_t number) const { return std::int64_t{number} * segmentLength; }

    /// In samples. The last segment may be shorter than the others.
    std::int32_t lengthOf(std::uint32_t number) const {
        return static_cast<std::int32_t>(std::min<std::int64_t>(segmentLength, length - start(number)));
    }

    /// Counts one sample that a reader missed. Takes no lock.
    ///
    /// The sample belongs to the current episode if it is the next one in the reader's direction. It also
    /// does if it is the last sample missed or up to two before it: a converter reads those again where a
    /// render call continues from the one before. Any other sample starts a new episode.
    void countUnderrun(std::int64_t position, Aud::Render::Direction direction) noexcept {
        underrunSamples.fetch_add(1, std::memory_order_relaxed);
        const std::int64_t previous = lastUnderrun.exchange(position, std::memory_order_relaxed);
        const std::int64_t advance = (position - previous) * step(direction);
        if (advance < -2 || advance > 1)
            underrunEpisodes.fetch_add(1, std::memory_order_relaxed);
    }

    const std::shared_ptr<CacheCore> core;
    const std::shared_ptr<SampleSource> source;
    const SampleSource::InFrames inFrames;
    const std::int64_t length;
    const std::int32_t segmentLength;

    std::atomic<std::uint64_t> underrunSamples{0};
    std::atomic<std::uint64_t> underrunEpisodes{0};
    /// Starts far from every position, so that the first underrun starts an episode.
    std::atomic<std::int64_t> lastUnderrun{-1000};

    /// The segments that the cache lists, by number.
    std::unordered_map<std::uint32_t, CachedSegment*> segments AUDLMD_GUARDED_BY(cacheLock);
    /// All channels of the same frames and recording that the cache holds, this one included. Null where
    /// there are no frames.
    std::vector<Material*>* together AUDLMD_GUARDED_BY(cacheLock) = nullptr;
    /// Set when the cache forgets the material. Readers find silence from their next segment on.
    bool removed AUDLMD_GUARDED_BY(cacheLock) = false;
    std::uint64_t failedSegments AUDLMD_GUARDED_BY(cacheLock) = 0;
    std::string firstFailure AUDLMD_GUARDED_BY(cacheLock);
};

} // namespace audlmd
