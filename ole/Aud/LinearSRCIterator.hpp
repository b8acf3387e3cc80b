#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/SubSamplePos.hpp"

namespace Aud::Render {

/// Changes the speed by straight lines between neighbouring source samples. Cheap, at any speed; speeds above
/// 1 alias.
///
/// The position counts source samples from the one at which the layer below stood when the chain was made.
/// The position never passes the right neighbour's. An output at a whole position k, other than the very
/// first, yields the source value at k - 1: at speed 1 the outputs are s0, s0, s1, s2. This lag of one sample
/// is part of the contract with the host. Nothing persists from one render call to the next.
/// \snippet chain.cpp linear
template <WrappableLayer Inner>
class LinearSRCIterator {
public:
    /// Reads two source samples, then skips `start` if it is greater than zero. `step` is the speed, in
    /// source samples per output sample. A negative step never reads the source again.
    [[gnu::used]] LinearSRCIterator(const Inner& inner, SubSamplePos start, SubSamplePos step)
        : position_(0, 0), nextSamplePos_(1, 0), step_(0, 0), inner_(inner) {
        prevSample_ = *inner_;
        ++inner_;
        nextSample_ = *inner_;
        if (start > zeroSubSamplePos)
            advance(start);
        step_ = step;
    }

    /// The left neighbour times (1 - w) plus the right one times w, where w is the position's fraction. The
    /// left term is computed in double precision, the right one in single, the sum in double.
    [[gnu::always_inline]] float operator*() const {
        // 2^-30, although a sample has 2^30 - 1 fractions.
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
        // At a whole position the sample there stays the right neighbour.
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
