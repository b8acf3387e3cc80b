#pragma once

#include "contract/Identity.hpp"
#include "contract/SampleCacheSegment.hpp"

#include <cstdint>
#include <vector>

namespace Orv {

/// How fast the output consumes the material. A cache loads further ahead the faster it is.
///
/// The renderer passes a reference on to the sample cache, so what this holds is the host's alone.
struct OutputGearing {
    /// Source samples per output sample. Only the magnitude counts.
    double sourceSamplesPerOutputSample = 1.0;
};

} // namespace Orv

namespace audlmd {
struct IteratorInside;
}

namespace Aud {

namespace Render {
struct SampleReader;
struct ReadySpan;
} // namespace Render

/// The host's store of samples, cut into segments that the host loads on its own threads.
///
/// A host derives its own cache from this class. The renderer only hands a reference on to the iterators.
/// \snippet minimal_host.cpp cache
class SampleCache {
public:
    class ForwardIterator;
    class ReverseIterator;

protected:
    SampleCache() = default;
    ~SampleCache() = default;
};

/// Steps towards later samples. Positions outside the material are allowed and read as silence.
///
/// The host defines the constructor, the destructor and the operations named internal_inc_: it places an
/// iterator and walks its segments. The renderer defines the copy constructor, the read and the step. The
/// order of the members is part of the contract; the renderer copies those named host... as they are.
/// \snippet minimal_host.cpp readers
class SampleCache::ForwardIterator {
public:
    /// `flag` and `notFlag` are each other's negation. The host chooses which of them sets waitForSegment,
    /// and what `extra` and `gearing` mean.
    ForwardIterator(const Cookie& cookie, long position, bool flag, SampleCache& cache, unsigned int extra,
                    bool notFlag, const Orv::OutputGearing& gearing);
    ForwardIterator(const ForwardIterator&);
    ForwardIterator& operator=(const ForwardIterator&) = delete;
    ~ForwardIterator();

    float operator*() const;
    ForwardIterator& operator++();

    /// The index of the current sample in the material, counted from 0.
    std::int64_t position() const { return cachePosition; }

private:
    friend struct Render::SampleReader;
    friend struct Render::ReadySpan;
    friend struct audlmd::IteratorInside;

    /// Makes the segment that holds sample 0 current, with segmentIndex on that sample.
    void internal_inc_hitFirstSegment();
    /// Makes the following segment current, with segmentIndex on its first sample.
    [[gnu::cold]] void internal_inc_moveToNextSegment();
    /// Counts one sample that was read inside the material while its segment was not ready.
    void internal_incrementAudioUnderrunCounter() const;

    Cookie identity;
    /// Of the current sample in currentSegment.
    std::int32_t segmentIndex;
    /// Of the current sample in the material. Outside 0 .. materialLength - 1 the iterator stands outside.
    std::int64_t cachePosition;
    /// In samples.
    std::int64_t materialLength;
    SampleCacheSegment currentSegment;
    void* hostMaterial;
    /// Reading waits for a segment whose request is outstanding.
    bool waitForSegment;
    std::uint32_t hostSegmentsAhead;
    std::vector<SampleCacheSegment> hostHeldSegments;
    std::uint8_t hostFlags;
    std::uint32_t hostSegmentNumber;
    std::uint32_t hostReach;
};

/// Steps towards earlier samples. Otherwise like the forward iterator, with other host members at the end.
class SampleCache::ReverseIterator {
public:
    ReverseIterator(const Cookie& cookie, long position, bool flag, SampleCache& cache, bool notFlag,
                    const Orv::OutputGearing& gearing);
    ReverseIterator(const ReverseIterator&);
    ReverseIterator& operator=(const ReverseIterator&) = delete;
    ~ReverseIterator();

    float operator*() const;
    ReverseIterator& operator++();

    /// The index of the current sample in the material, counted from 0.
    std::int64_t position() const { return cachePosition; }

private:
    friend struct Render::SampleReader;
    friend struct Render::ReadySpan;
    friend struct audlmd::IteratorInside;

    /// Makes the segment that holds the last sample current, with segmentIndex on that sample.
    void internal_inc_hitLastSegment();
    /// Makes the preceding segment current, with segmentIndex on its last sample.
    [[gnu::cold]] void internal_inc_moveToNextSegment();
    void internal_incrementAudioUnderrunCounter() const;

    Cookie identity;
    std::int32_t segmentIndex;
    std::int64_t cachePosition;
    std::int64_t materialLength;
    SampleCacheSegment currentSegment;
    void* hostMaterial;
    bool waitForSegment;
    std::uint8_t hostFlags;
    std::uint32_t hostSegmentNumber;
    std::uint32_t hostReach;
};

} // namespace Aud
