#pragma once

#include "contract/SampleCache.hpp"
#include "ole/Aud/Wrapping.hpp"
#include "ole/Orv/Ptr.hpp"

#include <cstdint>

namespace Aud {
namespace Render {

/// How the two source iterators read and step. The rare paths are out of line.
///
/// Outside the material a source reads as silence and counts nothing. Inside the material a sample whose
/// segment is not ready reads as 0.0 and counts one underrun, unless the iterator was made to wait. The
/// host's segment walks are called only at the end of a segment and where the iterator enters the material.
/// \snippet cache.cpp reader
struct SampleReader {
    /// Asks for the status twice, before and after a possible wait, and afresh for every sample, because
    /// requests complete on other threads. Does not test the position while the segment is ready.
    template <class Iterator>
    [[gnu::always_inline]] static float read(const Iterator& it) {
        if (it.currentSegment.status() == eSegmentRequestOutstanding) [[unlikely]]
            waitForRequest(it);
        if (it.currentSegment.status() == eSegmentReady) [[likely]]
            return it.currentSegment.pSamples()[it.segmentIndex];
        return missingSample(it);
    }

    /// Inside a segment, asks for the segment's status and length.
    [[gnu::always_inline]] static void step(SampleCache::ForwardIterator& it) {
        it.cachePosition = wrappingSum(it.cachePosition, std::int64_t{1});
        if (it.cachePosition <= 0 || it.cachePosition >= it.materialLength) [[unlikely]]
            return stepAtBorder(it);
        it.segmentIndex = wrappingSum(it.segmentIndex, std::int32_t{1});
        if (it.currentSegment.status() == eSegmentOfUnknownLength) [[unlikely]]
            return;
        const std::int32_t length = it.currentSegment.length();
        if (it.segmentIndex >= length) [[unlikely]]
            it.internal_inc_moveToNextSegment();
    }

    /// Asks for neither the status nor the length of the segment, unlike the forward step. The difference is
    /// deliberate: each query is visible to the host.
    [[gnu::always_inline]] static void step(SampleCache::ReverseIterator& it) {
        const std::int64_t old = it.cachePosition;
        if (old < 1 || old >= it.materialLength) [[unlikely]]
            return stepAtBorder(it, old);
        it.cachePosition = old - 1;
        it.segmentIndex = wrappingSum(it.segmentIndex, std::int32_t{-1});
        if (it.segmentIndex < 0) [[unlikely]]
            stepAtSegmentEnd(it);
    }

private:
    /// Gives the handle of the event back, also when the wait throws.
    template <class Iterator>
    [[gnu::cold, gnu::noinline]] static void waitForRequest(const Iterator& it) {
        if (!it.waitForSegment)
            return;
        const ThreadEventPtr completed = it.currentSegment.getRequestCompletedEvent();
        completed->wait(iThreadEvent::noTimeLimit);
    }

    template <class Iterator>
    [[gnu::cold, gnu::noinline]] static float missingSample(const Iterator& it) {
        if (0 <= it.cachePosition && it.cachePosition < it.materialLength)
            it.internal_incrementAudioUnderrunCounter();
        return 0.0F;
    }

    /// Entering is tested before leaving: the step to position 0 enters even a material of length 0. Steps
    /// that stay outside change the position alone.
    [[gnu::cold, gnu::noinline]] static void stepAtBorder(SampleCache::ForwardIterator& it) {
        if (it.cachePosition < 0 || it.cachePosition > it.materialLength)
            return;
        if (it.cachePosition == 0)
            it.internal_inc_hitFirstSegment();
        else
            it.currentSegment = SampleCacheSegment();
    }

    [[gnu::cold, gnu::noinline]] static void stepAtBorder(SampleCache::ReverseIterator& it,
                                                          std::int64_t old) {
        it.cachePosition = wrappingSum(old, std::int64_t{-1});
        if (it.cachePosition < -1 || it.cachePosition >= it.materialLength)
            return;
        if (old == it.materialLength)
            it.internal_inc_hitLastSegment();
        else
            it.currentSegment = SampleCacheSegment();
    }

    /// A function of its own so that the step tests nothing but the sign, which its subtraction leaves.
    [[gnu::cold, gnu::noinline]] static void stepAtSegmentEnd(SampleCache::ReverseIterator& it) {
        if (it.segmentIndex == -1)
            it.internal_inc_moveToNextSegment();
    }
};

} // namespace Render

[[gnu::always_inline]] inline float SampleCache::ForwardIterator::operator*() const {
    return Render::SampleReader::read(*this);
}

[[gnu::always_inline]] inline SampleCache::ForwardIterator& SampleCache::ForwardIterator::operator++() {
    Render::SampleReader::step(*this);
    return *this;
}

[[gnu::always_inline]] inline float SampleCache::ReverseIterator::operator*() const {
    return Render::SampleReader::read(*this);
}

[[gnu::always_inline]] inline SampleCache::ReverseIterator& SampleCache::ReverseIterator::operator++() {
    Render::SampleReader::step(*this);
    return *this;
}

} // namespace Aud
