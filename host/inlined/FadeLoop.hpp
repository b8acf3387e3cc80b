#pragma once

#include "host/signal/BlockLoops.hpp"
#include "ole/Aud/EnvelopeTraits.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace audlmd {

/// Multiplies samples by gains on one curve, whose u-value moves by `step` behind each sample. Returns the
/// u-value after the last step.
template <Aud::GainCurve::eCurveType CurveType>
float rampOn(std::span<float> samples, float uValue, float step) {
    for (float& sample : samples) {
        sample = Aud::GainCurve::Curve<CurveType>::mapUValueToMagnitude(uValue) * sample;
        uValue += step;
    }
    return uValue;
}

/// The same on the curve of a shape: one loop for each curve, so that no sample calls it or decides on it.
/// Out of line, because all chains share it.
[[gnu::noinline]] inline float ramp(const Aud::Render::EnvelopeTraits::Phase& phase,
                                    std::span<float> samples) {
    using namespace Aud::GainCurve;
    if (phase.curve == &Curve<eMixerStyleLog>::mapUValueToMagnitude)
        return rampOn<eMixerStyleLog>(samples, phase.uValue, phase.step);
    if (phase.curve == &Curve<eConstantPower>::mapUValueToMagnitude)
        return rampOn<eConstantPower>(samples, phase.uValue, phase.step);
    return rampOn<eLinear>(samples, phase.uValue, phase.step);
}

/// Multiplies samples by the gains of a shape, and advances the shape past them. The arithmetic is the
/// shape's own, in its order.
template <class Shape>
void fade(Shape& shape, std::span<float> samples) {
    while (!samples.empty()) {
        const Aud::Render::EnvelopeTraits::Phase phase = shape.phase();
        const std::size_t count = std::min<std::size_t>(samples.size(), phase.length);
        const std::span<float> together = samples.first(count);
        float uValue = phase.uValue;
        if (phase.holds)
            multiply(together, phase.curve(uValue));
        else
            uValue = ramp(phase, together);
        shape.skip(static_cast<std::uint32_t>(count), uValue);
        samples = samples.subspan(count);
    }
}

} // namespace audlmd
