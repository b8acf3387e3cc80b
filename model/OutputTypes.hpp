#pragma once

#include "ole/Aud/SampleFormats.hpp"
#include "ole/Aud/SummingOutputSampleIterator.hpp"

#include <cstddef>
#include <tuple>

namespace Test {

template <unsigned int Bits, unsigned int Bytes, int Alignment, int Signed, int Representation>
using Format =
    Aud::Sample<Bits, Bytes, static_cast<Aud::eDataAlignment>(Alignment),
                static_cast<Aud::eDataSigned>(Signed), static_cast<Aud::eDataRepresentation>(Representation)>;

// The formats by their numbers, spelled out here so that a wrong alias in the library shows.
using F32 = Format<32, 4, 1, 1, 2>;
using S16 = Format<16, 2, 1, 1, 1>;
using S24 = Format<24, 3, 1, 1, 1>;
using S8 = Format<8, 1, 1, 1, 1>;
using U8 = Format<8, 1, 1, 2, 1>;
using S24In32 = Format<24, 4, 3, 1, 1>;
using S32 = Format<32, 4, 1, 1, 1>;

template <class T>
using Summing = Aud::Render::SummingOutputSampleIterator<T*>;

/// The output types in the order of registration.
using OutputTypes = std::tuple<F32*, S16*, S24*, S8*, U8*, S24In32*, S32*, Summing<F32>, Summing<S16>,
                               Summing<S24>, Summing<S8>, Summing<U8>, Summing<S24In32>, Summing<S32>>;
inline constexpr std::size_t outputTypeCount = 14;
static_assert(std::tuple_size_v<OutputTypes> == outputTypeCount);

inline constexpr const char* outputTypeNames[outputTypeCount] = {
    "F32",    "S16",    "S24",    "S8",    "U8",    "S24In32",    "S32",
    "SumF32", "SumS16", "SumS24", "SumS8", "SumU8", "SumS24In32", "SumS32"};

} // namespace Test
