#pragma once

#include "contract/ThreadEvent.hpp"

#include <cstdint>

namespace Aud {

/// The states of a segment that the renderer tells apart. A host may use further values: each of them means
/// "not ready", which inside the material reads as silence and counts as an underrun.
enum eSegmentStatus : std::int32_t {
    eSegmentEmpty = 0,
    eSegmentReady = 1,
    eSegmentRequestOutstanding = 2,
    /// Not ready either. A forward reader does not ask for length() and stays on the segment to the
    /// material's end.
    eSegmentOfUnknownLength = 7,
};

/// A handle to one segment of cached samples. Copies share the segment; each is one holder of it.
/// \snippet minimal_host.cpp segments
class SampleCacheSegment {
public:
    /// A handle to no segment: its status is never eSegmentReady or eSegmentRequestOutstanding.
    SampleCacheSegment();
    SampleCacheSegment(const SampleCacheSegment&);
    SampleCacheSegment& operator=(const SampleCacheSegment&);
    ~SampleCacheSegment();

    /// May change between two calls, because requests complete on other threads. Whoever reads eSegmentReady
    /// must also see the samples.
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
