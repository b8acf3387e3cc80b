#pragma once

#include "bench/Request.hpp"

/// The render functions are measured beside these. They lie in a library of their own, as the render
/// functions do: a call out of a program is slower, because a program lies too far from the libraries for the
/// processor's branch prediction.
namespace audlmd::bench {

/// The floor of a mode: makes the host calls that the contract demands for `count` output samples, in the
/// order in which a render function makes them, and does nothing else.
///
/// A source sample is two `status` and one `pSamples`, forwards also one `status` and one `length`; with the
/// equaliser five sections, each fed with the one before, and the read-back of the last. The linear converter
/// reads `speed` source samples per output sample. The filtering one calls the resampler as the library does.
class Floor {
public:
    /// `segment` is ready, and outlives the floor.
    Floor(Request& request, const Aud::SampleCacheSegment& segment);
    Floor(const Floor&) = delete;
    Floor& operator=(const Floor&) = delete;
    ~Floor();

    void run(unsigned int count);

private:
    Aud::Render::ModeFields fields_;
    double speed_;
    const Aud::SampleCacheSegment& segment_;
    Aud::Filter::MultiBandBiquad<5U> equaliser_;
    Aud::Render::FilteringSRCState resampler_;
};

using ChainBuilder = void (*)(const Aud::Render::IteratorCreationParams&);

/// Builds and drops, by hand, the same as a render call: the host's source iterator, and one copy of the
/// iterator for each of `layers` layers (0 to 4), each made from the one below, which is then destroyed.
ChainBuilder handMadeChain(bool forward, unsigned int layers);

} // namespace audlmd::bench
