#include "host/cache/SegmentLists.hpp"

#include "host/cache/Material.hpp"

#include <algorithm>
#include <iterator>

namespace audlmd {
namespace {

/// By a reader. Under the lock a segment that only the cache holds cannot get another holder; and as the
/// acquire meets the release of the last handle, what that reader has read is read before its memory is used
/// again.
bool isHeld(const CachedSegment& segment) AUDLMD_REQUIRES(cacheLock) {
    return segment.holders.load(std::memory_order_acquire) > 1;
}

} // namespace

SegmentLists::SegmentLists(std::size_t memoryBudget, unsigned int loaderThreads)
    : memoryBudget_(memoryBudget) {
    busyResources_.reserve(loaderThreads * mostTogether);
    blockedBy_.reserve(loaderThreads * mostTogether);
}

void SegmentLists::add(CachedSegment::Stage stage, List& node) noexcept {
    CachedSegment& segment = *node.front();
    segment.stage = stage;
    segment.requestNumber = ++requests_;
    segment.entry = node.begin();
    lists_[stage].splice(lists_[stage].end(), node);
}

void SegmentLists::want(CachedSegment::Stage stage, CachedSegment& segment) noexcept {
    // Move it to the end of its list; among ready segments that means most recently used.
    if (segment.stage == CachedSegment::eReady)
        moveTo(CachedSegment::eReady, segment);
    else if (segment.stage == CachedSegment::eAhead ||
             (segment.stage == CachedSegment::eUrgent && !isHeld(segment))) {
        segment.requestNumber = ++requests_;
        moveTo(std::min(stage, segment.stage), segment);
    }
}

CachedSegment* SegmentLists::nextRequest() {
    List& urgent = lists_[CachedSegment::eUrgent];
    for (auto next = urgent.begin(); next != urgent.end();) {
        CachedSegment& segment = **next++;
        if (!isHeld(segment))
            demote(segment);
        else if (canLoad(segment))
            return &segment;
    }
    const bool isBlocked = std::ranges::all_of(
        blockedBy_, [this](const void* resource) AUDLMD_REQUIRES(cacheLock) { return isBusy(resource); });
    const List& ahead = lists_[CachedSegment::eAhead];
    for (auto latest = ahead.rbegin(); latest != ahead.rend(); ++latest) {
        if (isBlocked && (*latest)->requestNumber <= blockedUpTo_)
            break;
        if (canLoad(**latest))
            return *latest;
    }
    // All that wait now are for busy resources: the earlier ones for those of before, the later ones seen to
    // be.
    blockedBy_ = busyResources_;
    blockedUpTo_ = requests_;
    return nullptr;
}

bool SegmentLists::isBusy(const void* resource) const {
    return std::ranges::find(busyResources_, resource) != busyResources_.end();
}

bool SegmentLists::canLoad(const CachedSegment& segment) const {
    const void* const resource = segment.material->source->exclusiveResource();
    return resource == nullptr || !isBusy(resource);
}

void SegmentLists::demote(CachedSegment& segment) noexcept {
    List& ahead = lists_[CachedSegment::eAhead];
    auto behind = ahead.end();
    while (behind != ahead.begin() && (*std::prev(behind))->requestNumber > segment.requestNumber)
        --behind;
    ahead.splice(behind, lists_[CachedSegment::eUrgent], segment.entry);
    segment.stage = CachedSegment::eAhead;
}

bool SegmentLists::startLoading(CachedSegment& segment, List& taken) {
    if (!makeRoom(segment.bytes(), taken) && segment.stage == CachedSegment::eAhead) {
        take(segment, taken);
        return false;
    }
    moveTo(CachedSegment::eLoading, segment);
    usage_.residentBytes += segment.bytes();
    usage_.peakBytes = std::max(usage_.peakBytes, usage_.residentBytes);
    ++usage_.segmentsLoaded;
    busyResources_.push_back(segment.material->source->exclusiveResource());
    return true;
}

void SegmentLists::finishLoading(CachedSegment& segment, CachedSegment::Stage result) noexcept {
    busyResources_.erase(std::ranges::find(busyResources_, segment.material->source->exclusiveResource()));
    if (result == CachedSegment::eFailed)
        usage_.residentBytes -= segment.bytes();
    moveTo(result, segment);
}

void SegmentLists::take(CachedSegment& segment, List& taken) noexcept {
    if (segment.stage == CachedSegment::eReady)
        usage_.residentBytes -= segment.bytes();
    else if (segment.stage != CachedSegment::eFailed)
        // Nobody will load the segment: readers must not wait for it again.
        segment.status.store(Aud::eSegmentEmpty, std::memory_order_release);
    segment.material->segments.erase(segment.number);
    taken.splice(taken.end(), lists_[segment.stage], segment.entry);
}

void SegmentLists::moveTo(CachedSegment::Stage stage, CachedSegment& segment) noexcept {
    lists_[stage].splice(lists_[stage].end(), lists_[segment.stage], segment.entry);
    segment.stage = stage;
}

bool SegmentLists::makeRoom(std::size_t bytes, List& taken) noexcept {
    List& ready = lists_[CachedSegment::eReady];
    const auto fits = [&]() AUDLMD_REQUIRES(cacheLock) {
        return usage_.residentBytes <= memoryBudget_ && bytes <= memoryBudget_ - usage_.residentBytes;
    };
    for (auto next = ready.begin(); next != ready.end() && !fits();) {
        CachedSegment& segment = **next++;
        if (!isHeld(segment))
            take(segment, taken);
    }
    return fits();
}

} // namespace audlmd
