#pragma once

#include "host/ThreadEvent.hpp"

#include <cstdint>

namespace Aud {

/// What the renderer tells apart about a segment. A host may use further values: all of them mean "not
/// ready".
enum eSegmentStatus : std::int32_t {
    eSegmentEmpty = 0,
    eSegmentReady = 1,
    eSegmentRequestOutstanding = 2,
    /// length() means nothing, and a forward reader stays on the segment for as long as it is inside the
    /// material.
    eSegmentOfUnknownLength = 7,
};

/// A handle to one segment of cached samples. Copies share the segment; each is one holder of it.
class SampleCacheSegment {
public:
    /// A handle to no segment: its status is never eSegmentReady or eSegmentRequestOutstanding.
    SampleCacheSegment();
    SampleCacheSegment(const SampleCacheSegment&);
    SampleCacheSegment& operator=(const SampleCacheSegment&);
    ~SampleCacheSegment();

    /// May change between two calls, because requests complete on other threads.
    eSegmentStatus status() const;

    /// The first sample. Valid while the status is eSegmentReady and a handle is held.
    const float* pSamples() const;

    /// In samples.
    std::int32_t length() const;

    /// The event of the outstanding request; never empty while the status is eSegmentRequestOutstanding.
    ThreadEventPtr getRequestCompletedEvent() const;

private:
    friend class SampleCacheSegmentAccess;
    class Body;
    Body* body_;
};

} // namespace Aud
