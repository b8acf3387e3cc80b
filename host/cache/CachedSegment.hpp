#pragma once

#include "host/cache/SegmentBody.hpp"
#include "host/services/Event.hpp"
#include "host/services/Threads.hpp"

#include <cstdint>
#include <list>
#include <memory>

namespace audlmd {

struct Material;

/// The name of a cache's mutex in declarations, see CacheCore::mutex(). One name for the mutexes of all
/// caches, because the compiler cannot know which cache a segment or a material belongs to.
class AUDLMD_CAPABILITY CacheLock {};
inline constexpr CacheLock cacheLock{};

/// A segment of a material. The cache alone uses the members declared here.
class CachedSegment final : public Aud::SampleCacheSegmentAccess::Body {
public:
    /// How far the segment's loading has come. The cache keeps one list of segments for each stage.
    enum Stage {
        /// Requested by a reader that stands on the segment. Loaded first, in the order of the requests, for
        /// as long as a reader holds the segment.
        eUrgent,
        /// Requested by a reader that has not arrived. Loaded when nothing is urgent, the last request first.
        eAhead,
        /// A loader thread reads the samples.
        eLoading,
        /// The samples are there. This list is in the order of use, the least recent first.
        eReady,
        /// The source could not deliver the samples.
        eFailed,
        stageCount
    };

    CachedSegment(Aud::eSegmentStatus initialStatus, std::int32_t segmentLength,
                  std::shared_ptr<Material> itsMaterial, std::uint32_t itsNumber)
        : Body(initialStatus, segmentLength), material(std::move(itsMaterial)), number(itsNumber) {}

    /// The memory that the samples take.
    std::size_t bytes() const { return static_cast<std::size_t>(length) * sizeof(float); }

    /// Keeps the material alive for as long as a reader stands on one of its segments.
    const std::shared_ptr<Material> material;
    /// Counted from 0 at the start of the material.
    const std::uint32_t number;
    /// Owns what requestCompleted points to. Set before the segment is listed.
    EventPtr completed;
    /// Owns what samples points to. In the hands of one thread at a time: of the loader that reads the
    /// segment, later of who drops it.
    std::unique_ptr<float[]> storage;
    Stage stage AUDLMD_GUARDED_BY(cacheLock) = eFailed;
    /// Counts the requests of a cache: greater for a later one.
    std::uint64_t requestNumber AUDLMD_GUARDED_BY(cacheLock) = 0;
    /// Where the segment stands in the list of its stage.
    std::list<CachedSegment*>::iterator entry AUDLMD_GUARDED_BY(cacheLock);
};

} // namespace audlmd
