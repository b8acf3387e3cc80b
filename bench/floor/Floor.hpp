#pragma once

#include "bench/Request.hpp"

namespace Bench {

/// The floor of a mode: makes the host calls that the contract demands for `count` output samples, in the
/// order in which a render function makes them, and does nothing else.
///
/// A source sample is two `status` and one `pSamples`, forwards also one `status` and one `length`; with the
/// equaliser five sections, each fed with the one before, and the read-back of the last. The linear converter
/// reads `speed` source samples per output sample. The filtering one calls the resampler as the library does.
///
/// In a library of its own, as the render functions are: calls out of a program are slower, because it lies
/// too far from the libraries for the processor's branch prediction.
class Floor {
public:
    explicit Floor(Request& request);
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

} // namespace Bench
