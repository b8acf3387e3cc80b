#include "host/SampleCacheSegment.hpp"

#include "ole/Orv/Ptr.hpp"
#include "standalone/cache/CachedSegment.hpp"

#include <utility>

namespace Aud {
namespace {

/// What an empty handle refers to, so that no operation has to test for one. Its own hold is never given up.
constinit SampleCacheSegmentAccess::Body noSegment(eSegmentEmpty, 0);

} // namespace

void SampleCacheSegmentAccess::release(Body* body) noexcept {
    if (body->holders.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete static_cast<audlmd::CachedSegment*>(body);
}

SampleCacheSegment::SampleCacheSegment() : body_(&noSegment) {
    SampleCacheSegmentAccess::hold(body_);
}

SampleCacheSegment::SampleCacheSegment(const SampleCacheSegment& other) : body_(other.body_) {
    SampleCacheSegmentAccess::hold(body_);
}

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
    return ThreadEventPtr(body_->requestCompleted);
}

} // namespace Aud
