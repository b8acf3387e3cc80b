#pragma once

#include "standalone/signal/StripPlayer.hpp"

#include <optional>
#include <vector>

namespace audlmd::sound {

inline constexpr double sampleRate = 48000.0;

/// One way of playing at another speed.
struct Conversion {
    Converter converter = Converter::filtering;
    double speed = 1.0;
    bool reverse = false;
};

struct Converted {
    std::vector<float> samples;
    /// Source samples per output sample, as played.
    double speedInForce;
};

/// Plays all of the material through the library, into 32-bit float.
Converted convert(std::vector<float> material, const Conversion& conversion);

/// What a conversion makes of a sine. Levels are in dB relative to the sine that goes in.
struct ToneMeasurement {
    /// Of the sine that comes out. Not set where it would lie above half the sample rate.
    std::optional<double> level;
    /// Of all else together: noise, distortion, images and aliases.
    double restLevel = 0.0;
    /// Of the frequency that comes out, relative to the one that should. Not set without a sine.
    std::optional<double> frequencyError;

    /// In dB. Only with a sine.
    double signalToNoise() const { return *level - restLevel; }
};

/// Plays a sine of so many hertz and half of full scale, and fits a sine to the steady part of the output:
/// all but its first and last quarter of a second. The sine is fitted at the frequency that the speed in
/// force gives; its error is that of a second fit with free frequency, against the speed that was asked for.
ToneMeasurement measureTone(const Conversion& conversion, double hertz);

} // namespace audlmd::sound
