#pragma once

#include "contract/SampleCache.hpp"

#include <cstdint>
#include <optional>
#include <span>

namespace audlmd {

struct StripSettings;

/// Reads a material forwards, straight on, and gives the samples where they lie in the cache. Keeps its
/// reader from call to call, which spares a lock and a search for each. For the stand-alone host's cache
/// alone, see Aud::Render::ReadySpan.
class StraightReader {
public:
    /// All arguments must outlive this object.
    StraightReader(Aud::SampleCache& cache, const StripSettings& settings, const Orv::OutputGearing& gearing)
        : cache_(cache), settings_(settings), gearing_(gearing) {}

    /// As many samples as `room` has, from a position on. They lie in one segment, which is held until the
    /// next call, or else are copied into `room`. Nothing if one of them is not ready, after a wait where the
    /// settings want that. Throws UnknownMaterial, and what a wait throws.
    std::span<const float> read(std::int64_t position, std::span<float> room);

private:
    void stand(std::int64_t position);

    Aud::SampleCache& cache_;
    const StripSettings& settings_;
    const Orv::OutputGearing& gearing_;
    /// On the last sample that was given.
    std::optional<Aud::SampleCache::ForwardIterator> reader_;
};

} // namespace audlmd
