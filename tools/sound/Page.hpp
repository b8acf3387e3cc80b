#pragma once

#include "tools/sound/Conversion.hpp"

#include <array>
#include <string>
#include <vector>

/// What docs/sound.md says in figures, and how it is written there.
namespace audlmd::sound {

inline constexpr std::array measuredSpeeds{0.5, 0.75, 1.1, 1.5, 2.0};
inline constexpr std::array measuredTones{1000.0, 6000.0, 15000.0};
/// Close below half the sample rate, where an alias or image is hardest to keep out.
inline constexpr double highTone = 23000.0;

/// Ratios above, in dB, are the resolution of 32-bit floats, not of a converter, and not told apart.
inline constexpr double resolution = 140.0;

inline const char* nameOf(Converter converter) {
    return converter == Converter::linear ? "linear" : "filtering";
}

/// All conversions of the page, in its order.
std::vector<Conversion> measuredConversions();

/// The beginning of a conversion's row in the table of figures, up to the first figure: what finds it again.
std::string rowHead(const Conversion& conversion);

/// Measures everything.
std::string measuredTable();

} // namespace audlmd::sound
