#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/FilteringSRCState.hpp"
#include "ole/Aud/SpeedLimit.hpp"
#include "ole/Aud/SubSamplePos.hpp"

#include <libresample.h>

#include <cstdint>

namespace Aud::Render {

/// Varispeed by band-limited interpolation (libresample), one output sample per call of the resampler.
///
/// The resampler, the samples read ahead and the current output belong to the host's state record. Each
/// render call starts with the output that the call before it prepared, and leaves, when it ends, the
/// position at which the host must let the next one start reading. Not copyable: every destruction records
/// that position.
template <WrappableLayer Inner>
class FilteringSRCIterator {
public:
    /// Opens and primes the resampler on a record's first use. Only then does `start` count: a positive one
    /// is skipped by one resampler step of that length. `speed` is in source samples per output sample.
    FilteringSRCIterator(const Inner& inner, FilteringSRCState* srcState, const SubSamplePos& start,
                         float speed)
        : srcState_(srcState), inner_(inner), minFactor_(1.0 / cfgAudioPlaybackSpeedLimit) {
        if (srcState_->opened == 0) {
            // The contract stores the handle without a test.
            srcState_->handle = resample_open(lowQuality, minFactor_, maxFactor_);
            refillSourceBuffer();
            // Before the start offset: a failure from there on finds the record opened.
            srcState_->opened = 1;
            if (start > zeroSubSamplePos) {
                const double offset = static_cast<double>(start.sample) +
                                      start.fraction / static_cast<double>(SubSamplePos::fractionsPerSample);
                srcState_->factor = bound(1.0 / offset);
                resampleOne();
            }
        }
        srcState_->factor = bound(1.0 / static_cast<double>(speed));
    }
    FilteringSRCIterator(const FilteringSRCIterator&) = delete;
    FilteringSRCIterator& operator=(const FilteringSRCIterator&) = delete;

    /// Runs also when an exception leaves the render loop, but not when one leaves the constructor.
    ~FilteringSRCIterator() {
        srcState_->nextSourcePos = sourceOf(inner_).position();
        srcState_->positionRecorded = 1;
    }

    [[gnu::always_inline]] float operator*() const { return srcState_->outSample; }

    [[gnu::always_inline]] FilteringSRCIterator& operator++() {
        resampleOne();
        return *this;
    }

    const Inner& inner() const { return inner_; }

    /// Reads one whole block from the inner layer.
    [[gnu::used, gnu::noinline]] void refillSourceBuffer() {
        for (float& sample : srcState_->sourceBlock) {
            sample = *inner_;
            ++inner_;
        }
        srcState_->readIndex = 0;
    }

private:
    static constexpr int lowQuality = 0;

    /// A NaN passes.
    double bound(double factor) const {
        const double atMost = maxFactor_ < factor ? maxFactor_ : factor;
        return minFactor_ > atMost ? minFactor_ : atMost;
    }

    /// Where the resampler gives no output yet, the previous output stands and is repeated.
    [[gnu::always_inline]] void resampleOne() {
        FilteringSRCState& state = *srcState_;
        int used = 0;
        resample_process(state.handle, state.factor, state.sourceBlock + state.readIndex,
                         static_cast<int>(FilteringSRCState::blockLength - state.readIndex), 0, &used,
                         &state.outSample, 1);
        const std::uint32_t taken = state.readIndex + static_cast<std::uint32_t>(used);
        if (taken >= FilteringSRCState::blockLength)
            refillSourceBuffer();
        else
            state.readIndex = taken;
    }

    FilteringSRCState* srcState_;
    Inner inner_;
    double minFactor_;
    double maxFactor_ = 1024.0;
};

} // namespace Aud::Render
