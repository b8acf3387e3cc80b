#pragma once

#include "bench/sound/Conversion.hpp"
#include "host/words/StripWords.hpp"

#include <array>
#include <string>
#include <vector>

/// The table of figures in docs/sound.md.
namespace audlmd::sound {

/// In source samples per output sample.
inline constexpr std::array measuredSpeeds{0.5, 0.75, 1.1, 1.5, 2.0};
/// In hertz.
inline constexpr std::array measuredTones{1000.0, 6000.0, 15000.0};
/// In hertz, just below half the sample rate: aliases and images are hardest to keep out there.
inline constexpr double highTone = 23000.0;

/// In dB. 32-bit floats resolve no larger ratio of signal to noise, so the page says "> 140 dB" for any
/// larger one.
inline constexpr double resolution = 140.0;

inline std::string nameOf(Converter converter) {
    return std::string(words::wordOf(words::converterWords, converter));
}

/// All conversions of the page, in the order of the rows.
std::vector<Conversion> measuredConversions();

/// The beginning of a conversion's row, up to the first figure. The test finds the row by this text.
std::string rowHead(const Conversion& conversion);

/// Measures all conversions and writes the table in Markdown. Takes a few seconds.
std::string measuredTable();

} // namespace audlmd::sound
