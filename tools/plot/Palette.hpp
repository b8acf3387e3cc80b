#pragma once

#include <array>

namespace audlmd::plot {

/// Red, green and blue, each 0 to 1.
struct Colour {
    double red;
    double green;
    double blue;
};

/// 0xRRGGBB.
constexpr Colour fromHex(unsigned int rgb) {
    return {(rgb >> 16 & 255) / 255.0, (rgb >> 8 & 255) / 255.0, (rgb & 255) / 255.0};
}

/// Colours that people with any kind of colour blindness can distinguish (Okabe and Ito, "Color Universal
/// Design", 2008). Their yellow is left out: it is too pale for a line on white.
namespace Palette {
inline constexpr Colour blue = fromHex(0x0072B2);
inline constexpr Colour vermillion = fromHex(0xD55E00);
inline constexpr Colour green = fromHex(0x009E73);
inline constexpr Colour purple = fromHex(0xCC79A7);
inline constexpr Colour orange = fromHex(0xE69F00);
inline constexpr Colour skyBlue = fromHex(0x56B4E9);
inline constexpr Colour black = fromHex(0x000000);

/// For what went wrong. Darker than every other colour but black, so that it also stands out in grey.
inline constexpr Colour alarm = fromHex(0xC00000);

/// For lines of equal rank, in this order.
inline constexpr std::array<Colour, 6> lines{blue, vermillion, green, purple, orange, skyBlue};

inline constexpr Colour text = fromHex(0x222222);
inline constexpr Colour outline = fromHex(0x666666);
inline constexpr Colour grid = fromHex(0xDDDDDD);
inline constexpr Colour paper = fromHex(0xFFFFFF);
} // namespace Palette

/// The colour of a value from 0 (dark) to 1 (light). A value outside takes the nearer end, a NaN the dark
/// end. Lightness grows evenly, so that the picture also reads in grey (the "inferno" map of Smith and van
/// der Walt, 2015).
constexpr Colour heatColour(double value) {
    constexpr std::array<Colour, 9> stops{fromHex(0x000004), fromHex(0x1F0C48), fromHex(0x550F6D),
                                          fromHex(0x88226A), fromHex(0xBA3655), fromHex(0xE35933),
                                          fromHex(0xF98C0A), fromHex(0xF9C932), fromHex(0xFCFFA4)};
    // The comparisons send a NaN to the dark end.
    const double position = value > 0.0 ? (value < 1.0 ? value : 1.0) * (stops.size() - 1) : 0.0;
    const auto index = position < stops.size() - 1 ? static_cast<unsigned int>(position)
                                                   : static_cast<unsigned int>(stops.size() - 2);
    const double weight = position - index;
    const Colour& from = stops[index];
    const Colour& to = stops[index + 1];
    const auto mix = [weight](double a, double b) { return a + weight * (b - a); };
    return {mix(from.red, to.red), mix(from.green, to.green), mix(from.blue, to.blue)};
}

} // namespace audlmd::plot
