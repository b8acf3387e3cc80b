#pragma once

#include "host/signal/Equaliser.hpp"
#include "host/signal/Fade.hpp"
#include "host/signal/StripSettings.hpp"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace audlmd::words {

// How the settings of a strip are written: on the command line, in timelines and in lists.

/// Pairs of a word and its value. One table serves reading and writing, so both know the same words.
template <class Value, std::size_t count>
using Words = std::array<std::pair<std::string_view, Value>, count>;

inline constexpr Words<FadeCurve, 3> curveWords{
    {{"linear", FadeCurve::linear}, {"log", FadeCurve::log}, {"power", FadeCurve::power}}};

inline constexpr Words<Converter, 4> converterWords{{{"none", Converter::none},
                                                     {"linear", Converter::linear},
                                                     {"filtering", Converter::filtering},
                                                     {"best", Converter::best}}};

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

/// The value that a word stands for. Nothing for a word that is not in the table.
template <class Value, std::size_t count>
std::optional<Value> valueOf(const Words<Value, count>& words, std::string_view word) {
    for (const auto& [known, value] : words)
        if (known == word)
            return value;
    return std::nullopt;
}

/// Reads decibels (-3 or -3dB), at most +10, or "-inf" for silence. Returns the u-value of the mixer-style
/// curve. Use this for levels, not for the gain of an equaliser band, which is a plain number of decibels.
/// Throws std::invalid_argument, which says what is wrong with the text.
float levelIn(std::string_view text);

/// Reads `kind:frequency[:gain][:q]`: peak, lowshelf and highshelf with a gain, highpass and lowpass without.
/// A frequency may be written as 1.5k, see requireHertz(), a gain as 3dB. The equaliser checks the ranges of
/// the numbers. Frequencies are in hertz, gains in decibels; q is 1/sqrt(2) where it is left out. Throws
/// std::invalid_argument, which says what is wrong with the text.
EqualiserBand bandIn(std::string_view text);

/// A band in the form that bandIn() reads, with its q.
std::string bandText(const EqualiserBand& band);

} // namespace audlmd::words
