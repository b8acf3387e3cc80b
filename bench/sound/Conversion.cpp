#include "bench/sound/Conversion.hpp"

#include "bench/sound/SineFit.hpp"
#include "host/cache/MaterialCache.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/signal/BestConverter.hpp"
#include "host/signal/GainLaws.hpp"

#include <cmath>
#include <cstddef>
#include <memory>
#include <numbers>
#include <span>
#include <utility>

namespace audlmd::sound {
namespace {

/// Of the sine; lengths are in samples.
constexpr double toneAmplitude = 0.5;
constexpr std::size_t toneLength = 144000;
/// Left out at either end, where the converters start and stop.
constexpr std::size_t unsteady = 12000;

std::vector<float> sine(double hertz) {
    std::vector<float> samples(toneLength);
    for (std::size_t i = 0; i < toneLength; ++i)
        samples[i] = static_cast<float>(
            toneAmplitude * std::sin(2.0 * std::numbers::pi * hertz / sampleRate * static_cast<double>(i)));
    return samples;
}

/// Relative to the sine that goes in.
double decibelsOfTone(double rootMeanSquare) {
    return decibelsOfGain(rootMeanSquare * std::numbers::sqrt2 / toneAmplitude);
}

} // namespace

Converted convert(std::vector<float> material, const Conversion& conversion) {
    MaterialCache cache;
    StripSettings settings;
    settings.to = std::ssize(material);
    settings.reverse = conversion.reverse;
    settings.converter = conversion.converter;
    settings.speed = conversion.speed;
    cache.add(settings.cookie,
              materialAtNormalSpeed(std::make_shared<MemorySource>(std::move(material)), settings));
    StripPlayer player(cache, atNormalSpeed(settings));
    Converted converted{std::vector<float>(player.outputLength()), StripPlan(settings).speedInForce};
    player.render(converted.samples);
    return converted;
}

ToneMeasurement measureTone(const Conversion& conversion, double hertz) {
    const Converted converted = convert(sine(hertz), conversion);
    const std::span<const float> steady =
        std::span(converted.samples).subspan(unsteady, converted.samples.size() - 2 * unsteady);
    const double asked = hertz / sampleRate * conversion.speed;
    if (asked >= 0.5) {
        double squares = 0.0;
        for (const float sample : steady)
            squares += static_cast<double>(sample) * static_cast<double>(sample);
        return {{}, decibelsOfTone(std::sqrt(squares / static_cast<double>(steady.size()))), {}};
    }
    const SineFit fit = fitSineOfKnownFrequency(steady, hertz / sampleRate * converted.speedInForce);
    return {decibelsOfTone(fit.amplitude / std::numbers::sqrt2), decibelsOfTone(fit.residual),
            fitSine(steady, asked).frequency / asked - 1.0};
}

} // namespace audlmd::sound
