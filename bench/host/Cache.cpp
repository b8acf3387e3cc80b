#include "bench/host/BenchHost.hpp"
#include "contract/ThreadEvent.hpp"
#include "ole/Orv/Ptr.hpp"

#include <atomic>
#include <cstddef>
#include <utility>

namespace Aud {

class SampleCacheSegment::Body {
public:
    std::atomic<eSegmentStatus> status = eSegmentEmpty;
    std::int32_t length = 0;
    const float* samples = nullptr;
    std::atomic<std::uint32_t> holders = 1;
};

/// The way into a segment, for the cache that makes it.
class SampleCacheSegmentAccess {
public:
    using Body = SampleCacheSegment::Body;

    static SampleCacheSegment make(const float* samples, std::int32_t length) {
        SampleCacheSegment segment;
        segment.body_ = new Body{eSegmentReady, length, samples, 1};
        return segment;
    }

    static Body* empty() {
        static constinit Body body;
        return &body;
    }

    static Body* hold(Body* body) {
        if (body != empty())
            body->holders.fetch_add(1, std::memory_order_relaxed);
        return body;
    }

    static void release(Body* body) {
        if (body != empty() && body->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete body;
    }
};

SampleCacheSegment::SampleCacheSegment() : body_(SampleCacheSegmentAccess::empty()) {}

SampleCacheSegment::SampleCacheSegment(const SampleCacheSegment& other)
    : body_(SampleCacheSegmentAccess::hold(other.body_)) {}

SampleCacheSegment& SampleCacheSegment::operator=(const SampleCacheSegment& other) {
    SampleCacheSegment copy(other);
    std::swap(body_, copy.body_);
    return *this;
}

SampleCacheSegment::~SampleCacheSegment() {
    SampleCacheSegmentAccess::release(body_);
}

eSegmentStatus SampleCacheSegment::status() const {
    return body_->status.load(std::memory_order_acquire);
}

const float* SampleCacheSegment::pSamples() const {
    return body_->samples;
}

std::int32_t SampleCacheSegment::length() const {
    return body_->length;
}

ThreadEventPtr SampleCacheSegment::getRequestCompletedEvent() const {
    return {}; // no request is ever outstanding
}

namespace {

std::atomic<std::uint64_t> underrunCount = 0;

const audlmd::bench::Cache& benchCache(void* hostMaterial) {
    return *static_cast<const audlmd::bench::Cache*>(hostMaterial);
}

} // namespace

SampleCache::ForwardIterator::ForwardIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, unsigned int extra, bool,
                                              const Orv::OutputGearing&)
    : identity(cookie),
      segmentIndex(static_cast<std::int32_t>(position % audlmd::bench::Cache::segmentLength)),
      cachePosition(position), materialLength(static_cast<audlmd::bench::Cache&>(cache).length()),
      currentSegment(static_cast<audlmd::bench::Cache&>(cache).segmentAt(position)), hostMaterial(&cache),
      waitForSegment(flag), hostSegmentsAhead(extra), hostFlags(0), hostSegmentNumber(0), hostReach(0) {}

SampleCache::ForwardIterator::~ForwardIterator() = default;

void SampleCache::ForwardIterator::internal_inc_hitFirstSegment() {
    currentSegment = benchCache(hostMaterial).segmentAt(0);
    segmentIndex = 0;
}

void SampleCache::ForwardIterator::internal_inc_moveToNextSegment() {
    currentSegment = benchCache(hostMaterial).segmentAt(cachePosition);
    segmentIndex = 0;
}

void SampleCache::ForwardIterator::internal_incrementAudioUnderrunCounter() const {
    underrunCount.fetch_add(1, std::memory_order_relaxed);
}

SampleCache::ReverseIterator::ReverseIterator(const Cookie& cookie, long position, bool flag,
                                              SampleCache& cache, bool, const Orv::OutputGearing&)
    : identity(cookie),
      segmentIndex(static_cast<std::int32_t>(position % audlmd::bench::Cache::segmentLength)),
      cachePosition(position), materialLength(static_cast<audlmd::bench::Cache&>(cache).length()),
      currentSegment(static_cast<audlmd::bench::Cache&>(cache).segmentAt(position)), hostMaterial(&cache),
      waitForSegment(flag), hostFlags(0), hostSegmentNumber(0), hostReach(0) {}

SampleCache::ReverseIterator::~ReverseIterator() = default;

void SampleCache::ReverseIterator::internal_inc_hitLastSegment() {
    internal_inc_moveToNextSegment();
}

void SampleCache::ReverseIterator::internal_inc_moveToNextSegment() {
    currentSegment = benchCache(hostMaterial).segmentAt(cachePosition);
    segmentIndex = static_cast<std::int32_t>(cachePosition % audlmd::bench::Cache::segmentLength);
}

void SampleCache::ReverseIterator::internal_incrementAudioUnderrunCounter() const {
    underrunCount.fetch_add(1, std::memory_order_relaxed);
}

} // namespace Aud

namespace audlmd::bench {

Cache::Cache(std::vector<float> material) : material_(std::move(material)) {
    for (std::size_t first = 0; first < material_.size(); first += segmentLength) {
        const std::size_t left = material_.size() - first;
        segments_.push_back(Aud::SampleCacheSegmentAccess::make(
            &material_[first], static_cast<std::int32_t>(left < segmentLength ? left : segmentLength)));
    }
}

Cache::~Cache() = default;

const Aud::SampleCacheSegment& Cache::segmentAt(std::int64_t position) const {
    static const Aud::SampleCacheSegment none;
    if (position < 0 || position >= length())
        return none;
    return segments_[static_cast<std::size_t>(position / segmentLength)];
}

} // namespace audlmd::bench
