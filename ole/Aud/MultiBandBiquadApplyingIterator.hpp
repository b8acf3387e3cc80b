#pragma once

#include "host/Biquad.hpp"
#include "ole/Aud/ChainLayer.hpp"

namespace Aud {

/// A serial cascade. Every section runs for every sample: one that is to have no effect has the pass-through
/// coefficients.
template <unsigned int Bands>
[[gnu::always_inline]] inline float Filter::MultiBandBiquad<Bands>::processSample(float x) {
    static_assert(Bands == 5, "the cascade is written out for five bands");
    const float y0 = bands_[0].processSample(x);
    const float y1 = bands_[1].processSample(y0);
    const float y2 = bands_[2].processSample(y1);
    const float y3 = bands_[3].processSample(y2);
    return bands_[4].processSample(y3);
}

namespace Render {

/// Runs the source through the host's five-band equaliser.
///
/// The filter is one sample ahead of what is delivered: making the iterator filters nothing, and reading
/// returns the equaliser's last result, which the previous call (or the host, after a jump) left there. The
/// equaliser outlives the iterator, and copies of the iterator share it.
template <WrappableLayer Source>
class MultiBandBiquadApplyingIterator {
public:
    MultiBandBiquadApplyingIterator(const Source& source, Filter::MultiBandBiquad<5U>* equaliser)
        : source_(source), equaliser_(equaliser) {}

    [[gnu::always_inline]] float operator*() const { return equaliser_->getLastProcessSampleResult(); }

    [[gnu::always_inline]] MultiBandBiquadApplyingIterator& operator++() {
        ++source_;
        equaliser_->processSample(*source_);
        return *this;
    }

    const Source& inner() const { return source_; }

private:
    Source source_;
    Filter::MultiBandBiquad<5U>* equaliser_;
};

} // namespace Render
} // namespace Aud
