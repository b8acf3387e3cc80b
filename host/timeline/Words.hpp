#pragma once

#include "host/signal/Equaliser.hpp"
#include "host/signal/Fade.hpp"
#include "host/signal/StripPlayer.hpp"

#include <array>
#include <string_view>
#include <utility>

namespace audlmd::timeline {

// How the values of enumerations are written in files and in the list.

/// Pairs of a word and its value. One table serves reading and writing, so both know the same words.
template <class Value, std::size_t count>
using Words = std::array<std::pair<std::string_view, Value>, count>;

inline constexpr Words<FadeCurve, 3> curveWords{
    {{"linear", FadeCurve::linear}, {"log", FadeCurve::log}, {"power", FadeCurve::power}}};

inline constexpr Words<Converter, 3> converterWords{
    {{"none", Converter::none}, {"linear", Converter::linear}, {"filtering", Converter::filtering}}};

inline constexpr Words<BandKind, 5> bandWords{{{"peak", BandKind::peak},
                                               {"lowshelf", BandKind::lowShelf},
                                               {"highshelf", BandKind::highShelf},
                                               {"highpass", BandKind::highPass},
                                               {"lowpass", BandKind::lowPass}}};

/// The word of a value that the table holds.
template <class Value, std::size_t count>
std::string_view wordOf(const Words<Value, count>& words, Value value) {
    for (const auto& [word, named] : words)
        if (named == value)
            return word;
    return words.front().first;
}

} // namespace audlmd::timeline
