#pragma once

#include "contract/SampleCache.hpp"
#include "host/cache/SampleSource.hpp"
#include "loop_modes/ModeCode.hpp"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace audlmd {

class CacheCore;

/// The status of a segment that the source could not deliver. Such a segment renders as silence for as long
/// as the cache holds the material. To try again, remove the material and add it anew.
inline constexpr auto eSegmentFailed = static_cast<Aud::eSegmentStatus>(3);

struct MaterialCacheOptions {
    /// In samples: 1 to 2147483647. Short segments arrive sooner; long ones need fewer reads and locks.
    std::int32_t segmentLength = 65536;
    /// The memory for samples, in bytes. A segment on which a reader stands is loaded even where the budget
    /// has no room; a segment that is only wanted ahead is not.
    std::size_t memoryBudget = std::size_t{256} << 20;
    /// How many threads read from sources: at least 1. More of them help where reads wait for disks, or
    /// decode several files.
    unsigned int loaderThreads = 2;
    /// How many segments beyond its own a reader requests, at the speed of the recording or slower.
    std::uint32_t segmentsAhead = 2;
};

/// What went wrong with one material since it was added.
struct MaterialStatistics {
    /// Samples inside the material that were rendered as silence because their segment was not ready. A
    /// sample that is read twice counts twice.
    std::uint64_t underrunSamples = 0;
    /// How often underruns began. Neighbouring samples that a reader missed one after another are one
    /// episode, which goes on where the next render call continues from the one before. The trap: two readers
    /// that miss samples of one material at the same time interrupt each other's episodes.
    std::uint64_t underrunEpisodes = 0;
    /// Segments that the source could not deliver.
    std::uint64_t failedSegments = 0;
    /// The text of the exception that the source threw for the first of them. Empty if none failed,
    /// or if the exception had no text.
    std::string firstFailure;
};

/// What a cache has used since it was made.
struct MaterialCacheUsage {
    /// The memory of the samples that the cache holds, in bytes. Segments that only readers still hold do not
    /// count.
    std::size_t residentBytes = 0;
    /// The most that residentBytes ever was.
    std::size_t peakBytes = 0;
    /// Segments that loader threads began to read, those that failed included.
    std::uint64_t segmentsLoaded = 0;
};

/// A cookie under which the cache holds nothing. The text names the cookie.
class UnknownMaterial : public std::out_of_range {
public:
    explicit UnknownMaterial(const Cookie& cookie);
};

/// The stand-alone host's sample cache, which the `cache` of a render record points to.
///
/// The host adds each material once, under a cookie, with the source that delivers the samples. The cache
/// cuts the material into segments. Each render call makes a reader, which requests segments: the one that it
/// stands on, and those ahead of it in its direction. Loader threads read the requested segments from the
/// source, those that readers stand on first. When the samples exceed the budget, the cache drops the
/// segments that were used longest ago and that no reader holds. So material of any length is rendered in
/// constant memory.
///
/// The renderer makes the reader with these values from the record, whose meaning is the host's choice. This
/// cache has chosen:
///
/// - `flag` (the record's `requestFlag`): true to wait, as for a file. A read then blocks until its segment
///   is loaded. False not to wait, as for a loudspeaker: a sample that is not there yet is silence and counts
///   as an underrun. Both request the same segments.
/// - `notFlag`: the negation of `flag`. This cache ignores it.
/// - `extra` (the record's `forwardArgument`; forward readers only): how many segments beyond its own the
///   reader holds, so that the budget cannot drop them before the reader arrives. The reader requests at
///   least as many, also where segmentsAhead is smaller.
/// - `gearing`: the speed. A magnitude above 1 multiplies the number of segments that are requested ahead.
///   Requests ahead take at most half the budget; one segment is always allowed.
/// - `position`: where the reader starts. A forward reader made at p reads sample p first. A reverse reader
///   made at p reads sample p - 1 first: p is the end of what the reader reads, exclusive.
///
/// The host passes these start positions, where s is the sample to be read first:
///
/// - Without the filtering converter: `startPosition` = s, in both directions. The renderer itself adds 1 for
///   a reverse reader.
/// - With the filtering converter, forward: `forwardFilteringStartPosition` = s. To continue a stream, pass
///   the `nextSourcePos` that the converter recorded.
/// - With the filtering converter, reverse: `reverseFilteringStartPosition` = s + 1. To continue a stream,
///   pass `nextSourcePos` + 1. The renderer adds nothing here: a host that forgets the 1 loses a sample at
///   every call.
///
/// Making a reader takes one lock for a short time, and so does the step into another segment. Neither waits
/// for a source or allocates samples. Reading and stepping inside a segment take no lock. To have segments
/// loaded before they are needed, call request().
///
/// All operations are thread safe. Material may be removed, and the cache destroyed, while readers exist:
/// readers that wait are woken, and all find silence from their next segment on. The cache must still
/// exist when a render call begins, because making a reader needs it.
/// \snippet cache.cpp cache
class MaterialCache final : public Aud::SampleCache {
public:
    /// Starts the loader threads. Throws std::invalid_argument for an option out of range.
    explicit MaterialCache(const MaterialCacheOptions& options = {});
    /// Removes all material. Waits for the reads that loader threads have begun.
    ~MaterialCache();
    MaterialCache(const MaterialCache&) = delete;
    MaterialCache& operator=(const MaterialCache&) = delete;

    /// Makes a material known under a cookie. Reads nothing yet. Throws std::invalid_argument if the cookie
    /// is taken, or if the source is null, has a negative length or makes more than 4294967295 segments.
    void add(const Cookie& cookie, std::shared_ptr<SampleSource> source);
    /// Forgets a material; the cookie may then be used again. Returns the final statistics. Throws
    /// UnknownMaterial.
    /// \snippet cache.cpp forget
    MaterialStatistics remove(const Cookie& cookie);

    /// Has the segment of a sample loaded, and those that a reader wants which goes on from there at the
    /// gearing's speed and holds so many segments ahead: use this before a render call that must not wait.
    /// Returns the sample's segment at once; its event tells when the samples are there. Outside the material
    /// the segment returned is empty or never ready. Throws UnknownMaterial.
    Aud::SampleCacheSegment request(const Cookie& cookie, std::int64_t sample,
                                    Aud::Render::Direction direction, const Orv::OutputGearing& gearing,
                                    std::uint32_t held = 0);

    /// Ends all loading, to end a render call that waits: readers that wait are woken, and all find silence
    /// from their next segment on. Reads that have begun go on. The cookies stay known.
    void callOff();

    /// The statistics so far. Throws UnknownMaterial.
    MaterialStatistics statistics(const Cookie& cookie) const;
    /// The memory and the reads so far, of all material together.
    MaterialCacheUsage usage() const;

private:
    friend class Aud::SampleCache::ForwardIterator;
    friend class Aud::SampleCache::ReverseIterator;

    /// Shared with the materials, which readers may keep alive for longer than the cache.
    std::shared_ptr<CacheCore> core_;
    /// Declared last: the threads end before anything that they use.
    std::vector<std::jthread> loaders_;
};

} // namespace audlmd
