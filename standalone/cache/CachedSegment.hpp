#pragma once

#include "host/SampleCacheSegment.hpp"
#include "standalone/services/Event.hpp"

#include <atomic>
#include <cstdint>
#include <list>
#include <memory>

namespace audlmd {
struct Material;
}

namespace Aud {

/// What a segment handle points to: the fields that readers ask for once per sample, on one cache line.
///
/// Readers use these fields without the cache's lock. Fields read without the lock are written before the
/// status is released. The status is stored with release order and loaded with acquire order, so a reader
/// that sees eSegmentReady also sees the samples.
class alignas(64) SampleCacheSegment::Body {
public:
    constexpr Body(eSegmentStatus initialStatus, std::int32_t segmentLength)
        : status(initialStatus), length(segmentLength) {}

    std::atomic<eSegmentStatus> status;
    /// In samples.
    const std::int32_t length;
    /// The first sample. Null until the status is eSegmentReady.
    const float* samples = nullptr;
    /// Signalled when the request ends, whether samples came or not. Null in a segment that was never
    /// requested.
    iThreadEvent* requestCompleted = nullptr;
    /// Counts the handles, and the cache as one more while the segment is listed there. The last holder to
    /// go deletes the segment.
    std::atomic<std::int32_t> holders{1};
};

/// Gives the cache access to the pointer inside a segment handle.
class SampleCacheSegmentAccess {
public:
    using Body = SampleCacheSegment::Body;

    /// Returns a handle that takes over one holder's place; the count stays the same.
    static SampleCacheSegment adopt(Body* body) {
        SampleCacheSegment segment;
        release(segment.body_);
        segment.body_ = body;
        return segment;
    }

    /// Returns one more handle.
    static SampleCacheSegment share(Body& body) {
        hold(&body);
        return adopt(&body);
    }

    static void hold(Body* body) noexcept { body->holders.fetch_add(1, std::memory_order_relaxed); }
    /// Deletes the segment if its last holder goes.
    static void release(Body* body) noexcept;
};

} // namespace Aud

namespace audlmd {

/// A segment of a material. The cache alone uses the members declared here, under its lock.
class CachedSegment final : public Aud::SampleCacheSegmentAccess::Body {
public:
    /// How far the segment's loading has come. The cache keeps one list of segments for each stage.
    enum Stage {
        /// Requested by a reader that stands on the segment. Loaded first, in the order of the requests.
        eUrgent,
        /// Requested by a reader that has not arrived. Loaded when nothing is urgent.
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
    /// Owns what requestCompleted points to.
    EventPtr completed;
    /// Owns what samples points to.
    std::unique_ptr<float[]> storage;
    Stage stage = eFailed;
    /// Where the segment stands in the list of its stage.
    std::list<CachedSegment*>::iterator place;
};

} // namespace audlmd
