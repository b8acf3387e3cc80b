#pragma once

#include "ole/Aud/SampleFormats.hpp"
#include "ole/Aud/SummingOutputSampleIterator.hpp"

#include <cstddef>
#include <tuple>

namespace Aud::Render {

template <class P>
using Summing = SummingOutputSampleIterator<P>;

/// The types that samples are delivered through, in the order in which each mode is registered for them.
using OutputTypes =
    std::tuple<SampleF32*, SampleS16*, SampleS24*, SampleS8*, SampleU8*, SampleS24In32*, SampleS32*,
               Summing<SampleF32*>, Summing<SampleS16*>, Summing<SampleS24*>, Summing<SampleS8*>,
               Summing<SampleU8*>, Summing<SampleS24In32*>, Summing<SampleS32*>>;

inline constexpr std::size_t outputTypeCount = std::tuple_size_v<OutputTypes>;

} // namespace Aud::Render
