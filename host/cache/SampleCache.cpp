#include "contract/SampleCache.hpp"

#include "contract/SampleCacheSegment.hpp"
#include "host/cache/CacheCore.hpp"
#include "host/cache/CachedSegment.hpp"
#include "host/cache/MaterialCache.hpp"
#include "ole/Aud/Wrapping.hpp"
#include "ole/Orv/Ptr.hpp"

#include <algorithm>
#include <utility>

#define AUDLMD_HOST_OPERATION
#include "host/cache/SampleCacheSegment.ipp"

namespace Aud {
namespace {

/// The segment that all empty handles point to, so that no operation has to test for a null pointer. Made
/// with one holder that never goes, so that nobody deletes it.
constinit SampleCacheSegmentAccess::Body noSegment(eSegmentEmpty, 0);

using Render::Direction;

/// hostMaterial is set when the reader is made, and is valid while the reader holds a segment of the
/// material.
audlmd::Material& materialBehind(void* hostMaterial) {
    return *static_cast<audlmd::Material*>(hostMaterial);
}

} // namespace

void SampleCacheSegmentAccess::release(Body* body) noexcept {
    // Acquire and release: the holder that deletes sees all that the others did to the segment.
    if (body->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete static_cast<audlmd::CachedSegment*>(body);
}

SampleCacheSegment::SampleCacheSegment() : body_(&noSegment) {
    SampleCacheSegmentAccess::hold(body_);
}

SampleCacheSegment& SampleCacheSegment::operator=(const SampleCacheSegment& other) {
    SampleCacheSegment copy(other);
    std::swap(body_, copy.body_);
    return *this;
}

ThreadEventPtr SampleCacheSegment::getRequestCompletedEvent() const {
    return ThreadEventPtr(body_->requestCompleted);
}

// The host's half of the readers: making them and walking their segments. Reading and stepping inside a
// segment are compiled into the render functions.
//
// A reader keeps its material alive through its current segment. A reader that starts outside the material
// stands on an empty segment of its own until it enters. A reader that has left the material never enters it
// again.

SampleCache::ForwardIterator::ForwardIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, unsigned int extra, bool,
                                              const Orv::OutputGearing& gearing)
    : identity(cookie), cachePosition(position), waitForSegment(flag) {
    hostFlags = 0;
    audlmd::CacheCore& core = *static_cast<audlmd::MaterialCache&>(cache).core_;
    hostReach = core.reach(gearing, extra);
    // More than that the budget could not hold.
    hostSegmentsAhead = std::min(extra, hostReach);
    hostHeldSegments.resize(hostSegmentsAhead);

    const audlmd::CacheCore::Standing standing =
        core.stand(cookie, cachePosition, {Direction::forward, hostReach, hostHeldSegments});
    hostMaterial = standing.material;
    materialLength = standing.materialLength;
    currentSegment = standing.segment;
    hostSegmentNumber = standing.number;
    segmentIndex = standing.index;
}

SampleCache::ForwardIterator::~ForwardIterator() = default;

void SampleCache::ForwardIterator::internal_inc_hitFirstSegment() {
    audlmd::Material& material = materialBehind(hostMaterial);
    // Material without samples is entered too, but has no segment to stand on.
    if (materialLength == 0)
        return;
    segmentIndex = 0;
    hostSegmentNumber = 0;
    material.core->enter(material, 0, {Direction::forward, hostReach, hostHeldSegments}, currentSegment);
}

void SampleCache::ForwardIterator::internal_inc_moveToNextSegment() {
    audlmd::Material& material = materialBehind(hostMaterial);
    segmentIndex = 0;
    ++hostSegmentNumber;
    material.core->enter(material, hostSegmentNumber, {Direction::forward, hostReach, hostHeldSegments},
                         currentSegment);
}

void SampleCache::ForwardIterator::internal_incrementAudioUnderrunCounter() const {
    materialBehind(hostMaterial).countUnderrun(cachePosition, Direction::forward);
}

SampleCache::ReverseIterator::ReverseIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, bool, const Orv::OutputGearing& gearing)
    : identity(cookie), cachePosition(wrappingSum(std::int64_t{position}, std::int64_t{-1})),
      waitForSegment(flag) {
    hostFlags = 0;
    audlmd::CacheCore& core = *static_cast<audlmd::MaterialCache&>(cache).core_;
    hostReach = core.reach(gearing, 0);

    // A reverse reader holds no segments ahead: the renderer gives it no number of them.
    const audlmd::CacheCore::Standing standing =
        core.stand(cookie, cachePosition, {Direction::reverse, hostReach, {}});
    hostMaterial = standing.material;
    materialLength = standing.materialLength;
    currentSegment = standing.segment;
    hostSegmentNumber = standing.number;
    segmentIndex = standing.index;
}

SampleCache::ReverseIterator::~ReverseIterator() = default;

void SampleCache::ReverseIterator::internal_inc_hitLastSegment() {
    audlmd::Material& material = materialBehind(hostMaterial);
    if (materialLength == 0)
        return;
    hostSegmentNumber = static_cast<std::uint32_t>(material.segmentCount() - 1);
    segmentIndex = material.lengthOf(hostSegmentNumber) - 1;
    material.core->enter(material, hostSegmentNumber, {Direction::reverse, hostReach, {}}, currentSegment);
}

void SampleCache::ReverseIterator::internal_inc_moveToNextSegment() {
    audlmd::Material& material = materialBehind(hostMaterial);
    --hostSegmentNumber;
    segmentIndex = material.segmentLength - 1;
    material.core->enter(material, hostSegmentNumber, {Direction::reverse, hostReach, {}}, currentSegment);
}

void SampleCache::ReverseIterator::internal_incrementAudioUnderrunCounter() const {
    materialBehind(hostMaterial).countUnderrun(cachePosition, Direction::reverse);
}

} // namespace Aud
