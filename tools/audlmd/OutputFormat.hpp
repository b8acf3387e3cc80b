#pragma once

#include "loop_modes/OutputTypes.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace audlmd::command {

/// A sample format that the library delivers, in the order in which the output types are registered. The
/// summing types stand in the same order after the plain ones.
enum class FormatId { f32, s16, s24, s8, u8, s24in32, s32 };

struct OutputFormat {
    FormatId id;
    std::string_view name;
    /// Of one container.
    std::size_t bytes;
    /// The type as the library writes it.
    std::string_view typeName;
};

inline constexpr std::array<OutputFormat, 7> outputFormats{{
    {FormatId::f32, "f32", sizeof(Aud::SampleF32), "Aud::Sample<32, 4, ePacked, eSigned, eFloat>"},
    {FormatId::s16, "s16", sizeof(Aud::SampleS16), "Aud::Sample<16, 2, ePacked, eSigned, eInteger>"},
    {FormatId::s24, "s24", sizeof(Aud::SampleS24), "Aud::Sample<24, 3, ePacked, eSigned, eInteger>"},
    {FormatId::s8, "s8", sizeof(Aud::SampleS8), "Aud::Sample<8, 1, ePacked, eSigned, eInteger>"},
    {FormatId::u8, "u8", sizeof(Aud::SampleU8), "Aud::Sample<8, 1, ePacked, eUnsigned, eInteger>"},
    {FormatId::s24in32, "s24in32", sizeof(Aud::SampleS24In32),
     "Aud::Sample<24, 4, eLowBytes, eSigned, eInteger>"},
    {FormatId::s32, "s32", sizeof(Aud::SampleS32), "Aud::Sample<32, 4, ePacked, eSigned, eInteger>"},
}};

inline const OutputFormat& outputFormat(FormatId id) {
    return outputFormats[static_cast<std::size_t>(id)];
}

/// Its place among the fourteen output types, from 0.
inline std::size_t outputTypeIndex(FormatId id, bool summing) {
    return static_cast<std::size_t>(id) + (summing ? outputFormats.size() : 0);
}

/// The type as the library writes it.
std::string outputTypeName(FormatId id, bool summing);

namespace detail {
template <std::size_t... Index, class Visitor>
void withOutputType(std::size_t wanted, Visitor&& visitor, std::index_sequence<Index...>) {
    using Types = Aud::Render::OutputTypes;
    ((Index == wanted ? visitor(std::type_identity<std::tuple_element_t<Index, Types>>()) : void()), ...);
}
} // namespace detail

/// Calls `visitor` with a std::type_identity of the output type.
template <class Visitor>
void withOutputType(FormatId id, bool summing, Visitor&& visitor) {
    detail::withOutputType(outputTypeIndex(id, summing), visitor,
                           std::make_index_sequence<Aud::Render::outputTypeCount>());
}

} // namespace audlmd::command
