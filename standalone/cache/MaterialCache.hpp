#pragma once

#include "host/SampleCache.hpp"
#include "standalone/cache/SampleSource.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace audlmd {

class CacheCore;

/// The status of a segment that could not be read. It renders as silence, and stays so: to have another try,
/// remove the material and add it again.
inline constexpr auto eSegmentFailed = static_cast<Aud::eSegmentStatus>(3);

struct MaterialCacheOptions {
    /// In samples: 1 to 2147483647.
    std::int32_t segmentLength = 65536;
    /// For samples, in bytes. Segments on which readers stand are kept beyond it; what is only loaded ahead
    /// is not.
    std::size_t memoryBudget = std::size_t{256} << 20;
    /// At least 1.
    unsigned int loaderThreads = 2;
    /// How many segments beyond its own a reader requests, at the speed of recording or slower.
    std::uint32_t segmentsAhead = 2;
};

/// What went wrong with one material since it was added.
struct MaterialStatistics {
    /// Samples that were read inside the material while they were not there, and rendered as silence.
    std::uint64_t underrunSamples = 0;
    /// The same as runs: neighbouring samples are one, in either direction and across render calls. Readers
    /// of one material at the same time are not told apart.
    std::uint64_t underrunEpisodes = 0;
    std::uint64_t failedSegments = 0;
    /// The source's words for the first segment that failed. Empty if none did.
    std::string firstFailure;
};

struct MaterialCacheUsage {
    /// Samples held by the cache, in bytes.
    std::size_t residentBytes = 0;
    /// The most that it ever was.
    std::size_t peakBytes = 0;
    /// Segments read from their sources, the failed ones included.
    std::uint64_t segmentsLoaded = 0;
};

/// A cookie under which the cache holds nothing.
class UnknownMaterial : public std::out_of_range {
public:
    explicit UnknownMaterial(const Cookie& cookie);
};

/// The stand-alone host's sample cache.
///
/// Material is cut into segments, which loader threads read from the material's source when a reader asks for
/// them: first those that readers stand on, then those ahead of them in their direction. Where the samples
/// exceed the budget, the least recently used segments that no reader holds are dropped, so that material of
/// any length is rendered in constant memory.
///
/// What the renderer leaves to its host is settled thus:
///
/// - `flag` (the record's requestFlag) set: reading waits for segments (waitForSegment). Clear: reading never
///   waits, and what is not there yet is silence and an underrun. Both kinds request the same segments.
/// - `extra` (the record's forwardArgument): how many segments beyond its own a forward reader also holds, so
///   that the budget cannot take them before it arrives. They are requested even where segmentsAhead is less.
/// - `gearing`: above 1, its magnitude multiplies the number of segments that are requested ahead. That is
///   never more than half the budget.
/// - A forward reader made at position p stands on sample p. A reverse reader is given the end, exclusive, of
///   what it reads: made at p, it stands on sample p - 1. So a reverse render call whose startPosition is s
///   begins with sample s, and the next one continues from s - count. With the filtering converter, where the
///   position is handed on without the plus one, reverseFilteringStartPosition is the recorded nextSourcePos
///   plus 1, and forwardFilteringStartPosition is nextSourcePos itself.
///
/// Making a reader, and taking one to another segment, takes one short lock and allocates no samples; reading
/// and stepping inside a segment take none. To have segments loaded before they are needed, make a reader and
/// drop it (a render call with a count of 0).
///
/// All operations are thread safe. The cache may be destroyed, and material removed, while readers exist:
/// whoever waits is woken, and the readers find silence. Only making a reader needs the cache itself.
class MaterialCache final : public Aud::SampleCache {
public:
    /// Throws std::invalid_argument for an option out of range.
    explicit MaterialCache(const MaterialCacheOptions& options = {});
    /// Waits for the reads in hand.
    ~MaterialCache();
    MaterialCache(const MaterialCache&) = delete;
    MaterialCache& operator=(const MaterialCache&) = delete;

    /// Throws std::invalid_argument if the cookie is taken, the source null or its length negative or beyond
    /// 4294967295 segments.
    void add(const Cookie& cookie, std::shared_ptr<SampleSource> source);
    /// Returns the final statistics. Throws UnknownMaterial.
    MaterialStatistics remove(const Cookie& cookie);

    /// Throws UnknownMaterial.
    MaterialStatistics statistics(const Cookie& cookie) const;
    MaterialCacheUsage usage() const;

private:
    friend class Aud::SampleCache::ForwardIterator;
    friend class Aud::SampleCache::ReverseIterator;

    std::shared_ptr<CacheCore> core_;
    std::vector<std::jthread> loaders_;
};

} // namespace audlmd
