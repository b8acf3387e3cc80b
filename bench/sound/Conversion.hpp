#pragma once

#include "host/signal/StripPlayer.hpp"

#include <optional>
#include <vector>

namespace audlmd::sound {

/// Of all material and output here, in samples per second.
inline constexpr double sampleRate = 48000.0;

/// One way of playing material at another speed.
struct Conversion {
    Converter converter = Converter::filtering;
    /// In source samples per output sample.
    double speed = 1.0;
    bool reverse = false;
};

/// The output of a conversion.
struct Converted {
    std::vector<float> samples;
    /// In source samples per output sample. Differs a little from the speed that was asked for.
    double speedInForce;
};

/// Plays all of the material through the library, or converted for it, into 32-bit floats.
Converted convert(std::vector<float> material, const Conversion& conversion);

/// How good a sine is after a conversion. Levels are in dB relative to the sine before the conversion.
struct ToneMeasurement {
    /// Of the sine in the output. Not set if the sine would lie at or above half the sample rate.
    std::optional<double> level;
    /// Of everything else in the output: noise, distortion, images and aliases together.
    double restLevel = 0.0;
    /// How far the frequency in the output is off, as a share of the right frequency. Not set without a sine.
    std::optional<double> frequencyError;

    /// In dB. Call this only if `level` is set.
    double signalToNoise() const { return *level - restLevel; }
};

/// Plays a sine of `hertz` at half of full scale, and fits a sine to the output without its first and last
/// quarter of a second. Level and rest come from a fit at the frequency that the speed in force gives. The
/// frequency error comes from a second fit, which also fits the frequency, compared with the speed that was
/// asked for.
ToneMeasurement measureTone(const Conversion& conversion, double hertz);

} // namespace audlmd::sound
