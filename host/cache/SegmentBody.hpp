#pragma once

#include "contract/SampleCacheSegment.hpp"

#include <atomic>
#include <cstdint>

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
