#pragma once

#include "loop_modes/RegistrationOrder.hpp"

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace audlmd::command {

/// A sample format of the library. The numbers are the places of the plain types in Aud::Render::OutputTypes;
/// the summing types follow in the same order.
enum class FormatId { f32, s16, s24, s8, u8, s24in32, s32 };

inline constexpr std::size_t formatCount = Aud::Render::outputTypeCount / 2;

/// The place among the fourteen output types, from 0.
constexpr std::size_t outputTypeIndex(FormatId id, bool summing) {
    return static_cast<std::size_t>(id) + (summing ? formatCount : 0);
}

/// What users and files know of a sample format. The order of the table is that of FormatId.
struct OutputFormat {
    FormatId id;
    std::string_view name;
    /// In one container.
    std::size_t bytes;
};

namespace detail {

template <FormatId id, bool summing>
using OutputTypeAt = std::tuple_element_t<outputTypeIndex(id, summing), Aud::Render::OutputTypes>;

/// Does not compile if the library has another format at the place.
template <FormatId id, class Format>
constexpr OutputFormat entry(std::string_view name) {
    static_assert(std::is_same_v<OutputTypeAt<id, false>, Format*>);
    static_assert(std::is_same_v<OutputTypeAt<id, true>, Aud::Render::Summing<Format*>>);
    return {id, name, sizeof(Format)};
}

template <std::size_t... Index, class Visitor>
void withOutputType(std::size_t wanted, Visitor&& visitor, std::index_sequence<Index...>) {
    using Types = Aud::Render::OutputTypes;
    ((Index == wanted ? visitor(std::type_identity<std::tuple_element_t<Index, Types>>()) : void()), ...);
}

} // namespace detail

/// One entry for each plain type. A summing type has the same containers.
inline constexpr std::array<OutputFormat, formatCount> outputFormats{{
    detail::entry<FormatId::f32, Aud::SampleF32>("f32"),
    detail::entry<FormatId::s16, Aud::SampleS16>("s16"),
    detail::entry<FormatId::s24, Aud::SampleS24>("s24"),
    detail::entry<FormatId::s8, Aud::SampleS8>("s8"),
    detail::entry<FormatId::u8, Aud::SampleU8>("u8"),
    detail::entry<FormatId::s24in32, Aud::SampleS24In32>("s24in32"),
    detail::entry<FormatId::s32, Aud::SampleS32>("s32"),
}};

constexpr const OutputFormat& outputFormat(FormatId id) {
    return outputFormats[static_cast<std::size_t>(id)];
}

/// The format of that name. Throws CommandError, naming `option` and the known names, for any other text.
/// Names are written as in the table above, in lower case.
FormatId parseFormat(std::string_view text, std::string_view option);

/// Calls `visitor` with a std::type_identity of the output type. Use this to get from a format that the user
/// names to the template of a render function. Trap: the visitor is compiled for all fourteen types.
template <class Visitor>
void withOutputType(FormatId id, bool summing, Visitor&& visitor) {
    detail::withOutputType(outputTypeIndex(id, summing), visitor,
                           std::make_index_sequence<Aud::Render::outputTypeCount>());
}

/// The output type as the library's source code writes it. For people who look for the function in the
/// library.
std::string outputTypeName(FormatId id, bool summing);

} // namespace audlmd::command
