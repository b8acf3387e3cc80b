#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/FilteringSRCState.hpp"
#include "ole/Aud/SpeedLimit.hpp"
#include "ole/Aud/SubSamplePos.hpp"

#include <libresample.h>

#include <cstdint>

namespace Aud::Render {

/// Changes the speed by band-limited interpolation (libresample), one output sample per call of the
/// resampler. Clean, at speeds up to cfgAudioPlaybackSpeedLimit.
///
/// The resampler, the source samples read ahead and the current output belong to the host's state record. A
/// render call begins with the output that the call before prepared, and ends by recording the position from
/// which the host must let the next call read. Not copyable, because every destruction records that position.
/// \snippet chain.cpp filtering
template <WrappableLayer Inner>
class FilteringSRCIterator {
public:
    /// `speed` is in source samples per output sample. Opens the resampler on a record's first use and reads
    /// the first block. `start` is used only then: if above zero, one resampler step of that length skips it,
    /// within the bounds of the factor.
    FilteringSRCIterator(const Inner& inner, FilteringSRCState* srcState, const SubSamplePos& start,
                         float speed)
        : srcState_(srcState), inner_(inner), minFactor_(1.0 / cfgAudioPlaybackSpeedLimit) {
        if (srcState_->opened == 0) {
            // The handle is stored untested, by contract.
            srcState_->handle = resample_open(lowQuality, minFactor_, maxFactor_);
            refillSourceBuffer();
            // Set before the start offset is skipped: a failure while skipping leaves the record opened.
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

    /// Records the next source position, also when an exception leaves the render loop, but not when one
    /// leaves the constructor.
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

    /// Limits a factor to 1 / cfgAudioPlaybackSpeedLimit .. 1024. A NaN passes both comparisons.
    double bound(double factor) const {
        const double atMost = maxFactor_ < factor ? maxFactor_ : factor;
        return minFactor_ > atMost ? minFactor_ : atMost;
    }

    /// Calls the resampler once, whatever it returns: where it gives no output, the output before is
    /// repeated.
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
