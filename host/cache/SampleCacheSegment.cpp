#include "contract/SampleCacheSegment.hpp"

#include "host/cache/CachedSegment.hpp"
#include "ole/Orv/Ptr.hpp"

#define AUDLMD_HOST_OPERATION
#include "host/cache/SampleCacheSegment.ipp"

#include <utility>

namespace Aud {
namespace {

/// The segment that all empty handles point to, so that no operation has to test for a null pointer. Made
/// with one holder that never goes, so that nobody deletes it.
constinit SampleCacheSegmentAccess::Body noSegment(eSegmentEmpty, 0);

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

} // namespace Aud
