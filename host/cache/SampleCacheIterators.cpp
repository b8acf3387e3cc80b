#include "contract/SampleCache.hpp"
#include "host/cache/CacheCore.hpp"
#include "host/cache/MaterialCache.hpp"
#include "ole/Aud/Wrapping.hpp"

#include <algorithm>

// The host's half of the readers: making them and walking their segments. Reading and stepping inside a
// segment are compiled into the render functions.
//
// A reader keeps its material alive through its current segment. A reader that starts outside the material
// stands on an empty segment of its own until it enters. A reader that has left the material never enters it
// again.

namespace Aud {
namespace {

using Render::Direction;

/// hostMaterial is set when the reader is made, and is valid while the reader holds a segment of the
/// material.
audlmd::Material& materialBehind(void* hostMaterial) {
    return *static_cast<audlmd::Material*>(hostMaterial);
}

} // namespace

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
    const audlmd::Lock lock(material.core->mutex());
    segmentIndex = 0;
    hostSegmentNumber = 0;
    currentSegment = material.core->enter(material, 0, {Direction::forward, hostReach, hostHeldSegments});
}

void SampleCache::ForwardIterator::internal_inc_moveToNextSegment() {
    audlmd::Material& material = materialBehind(hostMaterial);
    const audlmd::Lock lock(material.core->mutex());
    segmentIndex = 0;
    ++hostSegmentNumber;
    currentSegment =
        material.core->enter(material, hostSegmentNumber, {Direction::forward, hostReach, hostHeldSegments});
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
    const audlmd::Lock lock(material.core->mutex());
    hostSegmentNumber = static_cast<std::uint32_t>(material.segmentCount() - 1);
    segmentIndex = material.lengthOf(hostSegmentNumber) - 1;
    currentSegment = material.core->enter(material, hostSegmentNumber, {Direction::reverse, hostReach, {}});
}

void SampleCache::ReverseIterator::internal_inc_moveToNextSegment() {
    audlmd::Material& material = materialBehind(hostMaterial);
    const audlmd::Lock lock(material.core->mutex());
    --hostSegmentNumber;
    segmentIndex = material.segmentLength - 1;
    currentSegment = material.core->enter(material, hostSegmentNumber, {Direction::reverse, hostReach, {}});
}

void SampleCache::ReverseIterator::internal_incrementAudioUnderrunCounter() const {
    materialBehind(hostMaterial).countUnderrun(cachePosition, Direction::reverse);
}

} // namespace Aud
