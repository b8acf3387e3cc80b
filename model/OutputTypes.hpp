#pragma once

#include "loop_modes/IteratorCreationParams.hpp"
#include "ole/Aud/SampleFormats.hpp"
#include "ole/Aud/SummingOutputSampleIterator.hpp"

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <utility>

/// The library's fourteen output types, by their numbers in the order of registration.
namespace audlmd::model {

template <unsigned int Bits, unsigned int Bytes, int Alignment, int Signed, int Representation>
using Numbered =
    Aud::Sample<Bits, Bytes, static_cast<Aud::eDataAlignment>(Alignment),
                static_cast<Aud::eDataSigned>(Signed), static_cast<Aud::eDataRepresentation>(Representation)>;

// The formats by their numbers, spelled out here so that a wrong alias in the library shows.
using F32 = Numbered<32, 4, 1, 1, 2>;
using S16 = Numbered<16, 2, 1, 1, 1>;
using S24 = Numbered<24, 3, 1, 1, 1>;
using S8 = Numbered<8, 1, 1, 1, 1>;
using U8 = Numbered<8, 1, 1, 2, 1>;
using S24In32 = Numbered<24, 4, 3, 1, 1>;
using S32 = Numbered<32, 4, 1, 1, 1>;

template <class Format>
using Summing = Aud::Render::SummingOutputSampleIterator<Format*>;

using OutputTypes = std::tuple<F32*, S16*, S24*, S8*, U8*, S24In32*, S32*, Summing<F32>, Summing<S16>,
                               Summing<S24>, Summing<S8>, Summing<U8>, Summing<S24In32>, Summing<S32>>;
inline constexpr std::size_t outputTypeCount = 14;
static_assert(std::tuple_size_v<OutputTypes> == outputTypeCount);

/// Calls `use.template operator()<Out>(number)` for every output type.
template <class Use>
void forEachOutputType(Use use) {
    [&use]<std::size_t... Number>(std::index_sequence<Number...>) {
        (use.template operator()<std::tuple_element_t<Number, OutputTypes>>(Number), ...);
    }
    (std::make_index_sequence<outputTypeCount>());
}

inline constexpr const char* outputTypeNames[outputTypeCount] = {
    "F32",    "S16",    "S24",    "S8",    "U8",    "S24In32",    "S32",
    "SumF32", "SumS16", "SumS24", "SumS8", "SumU8", "SumS24In32", "SumS32"};

/// Where a render call has its output position, for whoever looks at it during the call.
struct OutputWatch {
    const void* out = nullptr;
    const std::uint8_t* (*positionOf)(const void* out) = nullptr;
};

/// Calls the function that the despatch table of the output type holds for the code, and moves `position` as
/// the function moves its output, also when the function throws. Throws std::out_of_range if there is no
/// function. `watch` is valid while the function runs, and empty afterwards.
void renderThroughTable(std::size_t outputType, unsigned int code,
                        Aud::Render::IteratorCreationParams& params, std::uint8_t*& position,
                        unsigned int count, OutputWatch* watch = nullptr);

} // namespace audlmd::model
