#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace audlmd {

/// How samples become what a format holds.
enum class Rounding {
    /// To the nearest step of an integer format. A step is as wide as readers of sound files take it for:
    /// 1/128 of full scale in 8 bits, signed or not, up to 2^-31 in 32 bits. So samples that were read from a
    /// file of the format are stored as they were. Floats stay as they are, and are not clipped.
    nearest,
    /// The same, behind the noise of TriangularNoise: what would be distortion becomes noise that does not
    /// change with the signal.
    dithered,
    /// As the library stores: toward zero, and clipped in the float format, too.
    truncated
};

/// Where a block lies in the output. Dither depends on that, so that all blocks of an output fit.
struct OutputPlace {
    /// Counted from 0.
    std::size_t channel = 0;
    /// The first sample.
    std::int64_t position = 0;
};

/// Stores samples as containers of one of the formats of Aud::Render::OutputTypes. Integer formats clip what
/// lies beyond their limits, and store a NaN as silence. Use this once, on what leaves the program; blocks of
/// any size give the same bytes.
/// \snippet deliver.cpp delivery
template <class Format>
void storeBlock(std::span<const float> samples, Format* containers, Rounding rounding, OutputPlace place);

/// Adds the samples to what the containers hold, and stores the sums. Afterwards `samples` are the sums
/// before they were rounded and clipped. In 32 bits they are summed in double precision, so that silence
/// changes nothing.
/// \snippet deliver.cpp delivery
template <class Format>
void addBlock(std::span<float> samples, Format* containers, Rounding rounding, OutputPlace place);

} // namespace audlmd
