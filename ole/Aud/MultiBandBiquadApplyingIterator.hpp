#pragma once

#include "contract/Biquad.hpp"
#include "ole/Aud/ChainLayer.hpp"

namespace Aud {

/// Runs a sample through the sections in band order, each fed with the result of the one before. Every
/// section runs for every sample: a band without effect needs pass-through coefficients.
///
/// Written out instead of as a loop, because the compilers keep a loop of calls.
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

/// Runs the source through the host's five-band equaliser, directly over the source.
///
/// The equaliser is one sample ahead: reading returns its last result, and stepping filters the next source
/// sample. Making the iterator filters nothing. The first sample of a call is therefore the result that the
/// call before left in the equaliser, which makes contiguous calls seamless; after a jump the host primes the
/// equaliser with the new first sample. The equaliser belongs to the host, and copies of the iterator share
/// it.
/// \snippet chain.cpp equaliser
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
    Filter::MultiBandBiquad<5U>& equaliser() const { return *equaliser_; }

private:
    Source source_;
    Filter::MultiBandBiquad<5U>* equaliser_;
};

} // namespace Render
} // namespace Aud
