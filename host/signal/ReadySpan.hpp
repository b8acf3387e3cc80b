#pragma once

#include "contract/SampleCache.hpp"
#include "ole/Orv/Ptr.hpp"

#include <algorithm>
#include <cstdint>

namespace Aud::Render {

/// Neighbouring samples that a reader can take without asking again: those of its segment, if the segment is
/// ready, but for the last one.
///
/// The contract has the segment asked for every sample, because a host may take a segment away. The
/// stand-alone host promises more: a segment that is ready stays ready while a handle is held. The samples
/// and the places of the reader are those of SampleReader, see ole/Aud/SampleCacheIterators.hpp.
struct ReadySpan {
    /// The sample that the reader stands on. Later ones follow in the direction of reading.
    const float* samples = nullptr;
    /// How many steps stay inside the segment. If 0, read one sample through the reader.
    std::int64_t length = 0;

    explicit ReadySpan(const SampleCache::ForwardIterator& it) {
        if (!isReady(it))
            return;
        samples = it.currentSegment.pSamples() + it.segmentIndex;
        length = std::min(it.currentSegment.length() - std::int64_t{it.segmentIndex},
                          it.materialLength - it.cachePosition) -
                 1;
    }

    explicit ReadySpan(const SampleCache::ReverseIterator& it) {
        if (!isReady(it))
            return;
        samples = it.currentSegment.pSamples() + it.segmentIndex;
        length = std::min(std::int64_t{it.segmentIndex}, it.cachePosition);
    }

    /// Steps a reader `count` times, at most the length of its span.
    static void advance(SampleCache::ForwardIterator& it, std::int64_t count) {
        it.cachePosition += count;
        it.segmentIndex += static_cast<std::int32_t>(count);
    }

    static void advance(SampleCache::ReverseIterator& it, std::int64_t count) {
        it.cachePosition -= count;
        it.segmentIndex -= static_cast<std::int32_t>(count);
    }

    /// Waits for the segment, if the reader waits at all.
    static void await(const SampleCache::ForwardIterator& it) {
        if (it.waitForSegment && it.currentSegment.status() == eSegmentRequestOutstanding)
            it.currentSegment.getRequestCompletedEvent()->wait(iThreadEvent::noTimeLimit);
    }

private:
    /// A reader outside the material stands on no segment that is ready.
    template <class Iterator>
    static bool isReady(const Iterator& it) {
        return it.cachePosition >= 0 && it.cachePosition < it.materialLength &&
               it.currentSegment.status() == eSegmentReady;
    }
};

} // namespace Aud::Render
