#pragma once

#include "host/Biquad.hpp"

#include <cstddef>
#include <span>

namespace audlmd {

enum class BandKind { lowShelf, peak, highShelf, highPass, lowPass };

/// One band of an equaliser, in the terms of its user.
struct EqualiserBand {
    BandKind kind = BandKind::peak;
    /// In hertz: a peak's centre, a shelf's midpoint, a pass filter's corner.
    double frequency = 1000.0;
    /// Of peaks and shelves.
    double gainDb = 0.0;
    double q = 0.70710678118654752;
};

/// The bands of the renderer's cascade.
inline constexpr std::size_t equaliserBandCount = 5;

/// The section of one band, after R. Bristow-Johnson, "Cookbook formulae for audio equalizer biquad filter
/// coefficients" (the bilinear transform of analogue prototypes, with the frequency prewarped).
///
/// Throws std::invalid_argument unless every number is finite, the sample rate positive, the frequency above
/// 0 and below half the sample rate, and Q positive.
Aud::Filter::Biquad::Coefficients sectionOf(const EqualiserBand& band, double sampleRate);

/// The magnitude of one section's frequency response, in decibels.
double responseDb(const Aud::Filter::Biquad::Coefficients& section, double frequency, double sampleRate);

/// The same of bands in series. Throws as sectionOf does.
double responseDb(std::span<const EqualiserBand> bands, double frequency, double sampleRate);

/// Gives the bands to the sections from the first on; the others pass samples through. Forgets all samples.
/// Throws std::invalid_argument for more than five bands, or as sectionOf does.
void setBands(Aud::Filter::MultiBandBiquad<5U>& equaliser, std::span<const EqualiserBand> bands,
              double sampleRate);

} // namespace audlmd
