#pragma once

#include "contract/Biquad.hpp"

#include <cstddef>
#include <span>

namespace audlmd {

/// What a band does. Peaks and shelves have a gain; pass filters have none. Pass filters fall by 12 dB per
/// octave.
enum class BandKind { lowShelf, peak, highShelf, highPass, lowPass };

/// One band of an equaliser, in the terms of the user.
struct EqualiserBand {
    BandKind kind = BandKind::peak;
    /// In hertz: the centre of a peak, the midpoint of a shelf, the corner of a pass filter.
    double frequency = 1000.0;
    /// In decibels, for peaks and shelves, at most mostBandGainDb up or down.
    double gainDb = 0.0;
    /// The quality factor, from leastBandQ to mostBandQ. The default is 1/sqrt(2): a pass filter or a shelf
    /// without a bump.
    double q = 0.70710678118654752;
};

/// Beyond these limits the sections' coefficients need not be numbers, and five bands lead a sample beyond
/// the largest float: an infinity, and silence of it no number.
inline constexpr double mostBandGainDb = 120.0;
inline constexpr double leastBandQ = 1e-6;
inline constexpr double mostBandQ = 1e6;

/// The number of bands in the renderer's cascade.
inline constexpr std::size_t equaliserBandCount = 5;

/// The section of one band, after R. Bristow-Johnson, "Cookbook formulae for audio equalizer biquad filter
/// coefficients": the bilinear transform of an analogue prototype, with the frequency prewarped.
///
/// Throws std::invalid_argument unless the sample rate is above 0 and up to 1e9 Hz, the frequency above
/// 0 and below half the sample rate, and gain and Q within their limits. Trap: close to half the sample rate
/// the transform squeezes the curve, so a band there is narrower than its Q says.
/// \snippet signal.cpp equaliser
Aud::Filter::Biquad::Coefficients sectionOf(const EqualiserBand& band, double sampleRate);

/// Sets the sections of an equaliser from bands, the first section from the first band. Sections without a
/// band pass samples through. All sections forget the samples that they have filtered. Throws
/// std::invalid_argument for more than five bands, and as sectionOf() does. Use this before the first sample
/// or after a jump. Trap: in the middle of a sound the forgotten samples are heard as a click.
/// \snippet signal.cpp equaliser
void setBands(Aud::Filter::MultiBandBiquad<5U>& equaliser, std::span<const EqualiserBand> bands,
              double sampleRate);

/// Undoes the most recent sample in every section, for a host that reads a sample twice. A section remembers
/// one state only: a second call in a row changes nothing.
/// \snippet signal.cpp equaliser
void stepBack(Aud::Filter::MultiBandBiquad<5U>& equaliser);

} // namespace audlmd
