#pragma once

#include <span>

namespace audlmd::sound {

/// A sine found in a signal, and what is left beside it.
struct SineFit {
    /// In cycles per sample.
    double frequency;
    double amplitude;
    /// Root mean square of the signal less the sine and the mean.
    double residual;
};

/// The sine of exactly that frequency, in cycles per sample, that leaves the least beside it: a linear fit of
/// sine, cosine and mean (the three-parameter fit of IEEE Std 1057).
SineFit fitSineOfKnownFrequency(std::span<const float> signal, double frequency);

/// As above, with the frequency fitted too, from a guess within about half a cycle over the whole signal (the
/// four-parameter fit of IEEE Std 1057). The frequency is right to better than 1e-9 where the signal is a
/// sine.
SineFit fitSine(std::span<const float> signal, double guess);

} // namespace audlmd::sound
