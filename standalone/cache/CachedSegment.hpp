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

/// What a handle refers to: all that is asked for once per sample. Whatever a reader may look at without the
/// cache's lock is fixed before the status says that it is there.
class alignas(64) SampleCacheSegment::Body {
public:
    constexpr Body(eSegmentStatus initialStatus, std::int32_t segmentLength)
        : status(initialStatus), length(segmentLength) {}

    std::atomic<eSegmentStatus> status;
    const std::int32_t length;
    const float* samples = nullptr;
    iThreadEvent* requestCompleted = nullptr;
    /// Handles, and the cache itself while it knows the segment.
    std::atomic<std::int32_t> holders{1};
};

/// The cache's way into the handles.
class SampleCacheSegmentAccess {
public:
    using Body = SampleCacheSegment::Body;

    /// A handle that takes over one holder's place.
    static SampleCacheSegment adopt(Body* body) {
        SampleCacheSegment segment;
        release(segment.body_);
        segment.body_ = body;
        return segment;
    }

    /// One more handle.
    static SampleCacheSegment share(Body& body) {
        hold(&body);
        return adopt(&body);
    }

    static void hold(Body* body) noexcept { body->holders.fetch_add(1, std::memory_order_relaxed); }
    static void release(Body* body) noexcept;
};

} // namespace Aud

namespace audlmd {

/// A segment of a material. The members of this class belong to the cache and are touched under its lock.
class CachedSegment final : public Aud::SampleCacheSegmentAccess::Body {
public:
    /// Where it is on its way. A cache keeps one list of segments for each.
    enum Stage {
        /// A reader stands on it and has no samples.
        eUrgent,
        /// Requested by a reader that has not arrived.
        eAhead,
        eLoading,
        /// In order of use, the least recent first.
        eReady,
        eFailed,
        stageCount
    };

    CachedSegment(Aud::eSegmentStatus initialStatus, std::int32_t segmentLength,
                  std::shared_ptr<Material> itsMaterial, std::uint32_t itsNumber)
        : Body(initialStatus, segmentLength), material(std::move(itsMaterial)), number(itsNumber) {}

    std::size_t bytes() const { return static_cast<std::size_t>(length) * sizeof(float); }

    /// Keeps the material alive for as long as a reader stands on one of its segments.
    const std::shared_ptr<Material> material;
    const std::uint32_t number;
    EventPtr completed;
    std::unique_ptr<float[]> storage;
    Stage stage = eFailed;
    std::list<CachedSegment*>::iterator place;
};

} // namespace audlmd
