#pragma once

#include "host/cache/CachedSegment.hpp"
#include "host/cache/MaterialCache.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <vector>

namespace audlmd {

/// The segments of one cache, listed by the stage of their loading, with an account of their memory.
///
/// Operations that drop segments append them to `taken` instead of deleting them: the cache deletes them
/// after it has given up the lock, because that takes long.
class SegmentLists {
public:
    using List = std::list<CachedSegment*>;
    /// As many segments may be loaded by one loader at a time.
    static constexpr std::size_t mostTogether = 16;

    /// `memoryBudget` is in bytes. Room is made for `loaderThreads` segments that are loaded at the same
    /// time.
    SegmentLists(std::size_t memoryBudget, unsigned int loaderThreads);

    /// Lists a new segment. `node` is a list of this segment alone, made by the caller so that nothing can
    /// fail here.
    void add(CachedSegment::Stage stage, List& node) noexcept AUDLMD_REQUIRES(cacheLock);

    /// Notes that a reader wants a listed segment: eUrgent if the reader stands on it, eAhead if not.
    void want(CachedSegment::Stage stage, CachedSegment& segment) noexcept AUDLMD_REQUIRES(cacheLock);

    /// The segment to be loaded first: the oldest request of a reader that stands on its segment; else the
    /// latest of all requests, because readers that have jumped no longer need what they wanted before. Null
    /// if none is requested whose resource is free. Thousands of requests may wait: each is looked at a few
    /// times in all, not in every call.
    CachedSegment* nextRequest() AUDLMD_REQUIRES(cacheLock);

    /// Makes room for a requested segment and marks it as loading. Where the budget has no room, a segment
    /// that is urgent is loaded all the same; one that is only wanted ahead is taken, and the result is
    /// false.
    bool startLoading(CachedSegment& segment, List& taken) AUDLMD_REQUIRES(cacheLock);

    /// Ends what startLoading started. The samples of a segment that failed no longer count as memory.
    void finishLoading(CachedSegment& segment, CachedSegment::Stage result) noexcept
        AUDLMD_REQUIRES(cacheLock);

    /// Takes a segment out of its list and out of its material's table, and appends it to `taken`. A segment
    /// that is loading can only be taken by its loader, once it has finished.
    void take(CachedSegment& segment, List& taken) noexcept AUDLMD_REQUIRES(cacheLock);

    MaterialCacheUsage usage() const AUDLMD_REQUIRES(cacheLock) { return usage_; }

private:
    bool isBusy(const void* resource) const AUDLMD_REQUIRES(cacheLock);
    bool canLoad(const CachedSegment& segment) const AUDLMD_REQUIRES(cacheLock);
    /// Lists an urgent segment that no reader stands on any more by its number among those that are wanted
    /// ahead.
    void demote(CachedSegment& segment) noexcept AUDLMD_REQUIRES(cacheLock);
    void moveTo(CachedSegment::Stage stage, CachedSegment& segment) noexcept AUDLMD_REQUIRES(cacheLock);
    /// Takes segments that no reader holds, the least recently used first, until `bytes` fit the budget.
    /// Returns whether they do.
    bool makeRoom(std::size_t bytes, List& taken) noexcept AUDLMD_REQUIRES(cacheLock);

    const std::size_t memoryBudget_;
    std::uint64_t requests_ AUDLMD_GUARDED_BY(cacheLock) = 0;
    /// Those of eUrgent and eAhead are in the order of the request numbers.
    std::array<List, CachedSegment::stageCount> lists_ AUDLMD_GUARDED_BY(cacheLock);
    /// One for each segment that is loading, null where the source needs none.
    std::vector<const void*> busyResources_ AUDLMD_GUARDED_BY(cacheLock);
    /// As long as these resources are busy, no request up to this number can be loaded.
    std::vector<const void*> blockedBy_ AUDLMD_GUARDED_BY(cacheLock);
    std::uint64_t blockedUpTo_ AUDLMD_GUARDED_BY(cacheLock) = 0;
    MaterialCacheUsage usage_ AUDLMD_GUARDED_BY(cacheLock);
};

} // namespace audlmd
