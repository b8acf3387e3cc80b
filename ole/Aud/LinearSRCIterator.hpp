#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/SubSamplePos.hpp"

namespace Aud::Render {

/// Varispeed by straight lines between neighbouring source samples.
///
/// The position counts source samples from the one at which the inner layer stood, and never passes the right
/// neighbour's. An output at a whole position k (other than the very first) yields the inner value at k - 1:
/// this lag of one sample is part of the contract with the host. Nothing persists from one render call to the
/// next.
template <WrappableLayer Inner>
class LinearSRCIterator {
public:
    /// Reads two source samples, then skips `start` if it is positive. `step` is the speed, in source samples
    /// per output sample.
    [[gnu::used]] LinearSRCIterator(const Inner& inner, SubSamplePos start, SubSamplePos step)
        : position_(0, 0), nextSamplePos_(1, 0), step_(0, 0), inner_(inner) {
        prevSample_ = *inner_;
        ++inner_;
        nextSample_ = *inner_;
        if (start > zeroSubSamplePos)
            advance(start);
        step_ = step;
    }

    /// Linear interpolation by the position's fraction. The left term is computed in double precision, the
    /// right one in single.
    [[gnu::always_inline]] float operator*() const {
        // 2^-30, although the scale of the fraction is 2^30 - 1.
        constexpr float weightPerFraction = 0x1p-30F;
        const float weight = static_cast<float>(position_.fraction) * weightPerFraction;
        const double left = (1.0 - static_cast<double>(weight)) * static_cast<double>(prevSample_);
        const float right = weight * nextSample_;
        return static_cast<float>(left + static_cast<double>(right));
    }

    [[gnu::always_inline]] LinearSRCIterator& operator++() {
        advance(step_);
        return *this;
    }

    const Inner& inner() const { return inner_; }

private:
    [[gnu::always_inline]] void advance(const SubSamplePos& distance) {
        position_ += distance;
        // Where the position is whole, the sample at it stays to the right.
        const std::int64_t right = wrappingSum(position_.sample, std::int64_t{position_.fraction != 0});
        for (; nextSamplePos_.sample < right; ++nextSamplePos_.sample) {
            prevSample_ = nextSample_;
            ++inner_;
            nextSample_ = *inner_;
        }
    }

    float prevSample_;
    float nextSample_;
    SubSamplePos position_;
    SubSamplePos nextSamplePos_;
    SubSamplePos step_;
    Inner inner_;
};

} // namespace Aud::Render
