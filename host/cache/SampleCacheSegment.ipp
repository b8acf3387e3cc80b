// The operations of a segment handle that render functions call per sample or per copy of a reader. See
// host/inlined/HostOperations.hpp for who includes this file, and how.

#include "host/cache/SegmentBody.hpp"

namespace Aud {

AUDLMD_HOST_OPERATION SampleCacheSegment::SampleCacheSegment(const SampleCacheSegment& other)
    : body_(other.body_) {
    SampleCacheSegmentAccess::hold(body_);
}

AUDLMD_HOST_OPERATION SampleCacheSegment::~SampleCacheSegment() {
    SampleCacheSegmentAccess::release(body_);
}

AUDLMD_HOST_OPERATION eSegmentStatus SampleCacheSegment::status() const {
    // Pairs with the cache's release: whoever sees a new status sees the fields written before it.
    return body_->status.load(std::memory_order_acquire);
}

AUDLMD_HOST_OPERATION const float* SampleCacheSegment::pSamples() const {
    return body_->samples;
}

AUDLMD_HOST_OPERATION std::int32_t SampleCacheSegment::length() const {
    return body_->length;
}

} // namespace Aud
