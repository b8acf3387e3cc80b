#pragma once

#include <span>

namespace audlmd::sound {

/// The sine that fits a signal best, and how much of the signal it leaves.
struct SineFit {
    /// In cycles per sample.
    double frequency;
    double amplitude;
    /// Root mean square of what remains without the sine and the mean.
    double residual;
};

/// Fits a sine of a known frequency, in cycles per sample: the least squares fit of sine, cosine and mean
/// (the three-parameter fit of IEEE Std 1057).
SineFit fitSineOfKnownFrequency(std::span<const float> signal, double frequency);

/// Fits a sine and its frequency (the four-parameter fit of IEEE Std 1057). `guess` is in cycles per sample;
/// over the whole signal it may be off by about half a cycle. If the signal is a sine, the frequency is right
/// to 1e-9.
SineFit fitSine(std::span<const float> signal, double guess);

} // namespace audlmd::sound
