#pragma once

#include "host/signal/BlockEqualiser.hpp"
#include "host/signal/BlockLoops.hpp"
#include "host/signal/ReadySpan.hpp"
#include "ole/Aud/Aud__RenderIterators"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <type_traits>

namespace audlmd {

/// Whether a chain is rendered by the span of samples that its source has ready, not by the sample: all
/// chains without a converter.
template <class Layer>
inline constexpr bool isRenderedBySpan = false;
template <>
inline constexpr bool isRenderedBySpan<Aud::SampleCache::ForwardIterator> = true;
template <>
inline constexpr bool isRenderedBySpan<Aud::SampleCache::ReverseIterator> = true;
template <class Inner>
inline constexpr bool isRenderedBySpan<Aud::Render::NullIterator<Inner>> = isRenderedBySpan<Inner>;
template <class Inner>
inline constexpr bool isRenderedBySpan<Aud::Render::MultiBandBiquadApplyingIterator<Inner>> = true;
template <class Inner>
inline constexpr bool isRenderedBySpan<Aud::Render::FixedLevelApplyingIterator<Inner>> =
    isRenderedBySpan<Inner>;
template <class Inner, class Shape>
inline constexpr bool isRenderedBySpan<Aud::Render::EnvelopeApplyingIterator<Inner, Shape>> =
    isRenderedBySpan<Inner>;

template <class Inner>
inline constexpr bool
    isRenderedBySpan<Aud::DynamicLevelControl::ForwardsDynamicLevelApplyingIterator<Inner>> =
        isRenderedBySpan<Inner>;
template <class Inner>
inline constexpr bool isRenderedBySpan<Aud::DynamicLevelControl::ReverseDynamicLevelApplyingIterator<Inner>> =
    isRenderedBySpan<Inner>;

/// Samples in the order in which a source reads them.
struct SourceSamples {
    const float* first;
    bool forward;

    SourceSamples(const Aud::SampleCache::ForwardIterator&, const float* samples)
        : first(samples), forward(true) {}
    SourceSamples(const Aud::SampleCache::ReverseIterator&, const float* samples)
        : first(samples), forward(false) {}

    const float* at(std::size_t place) const { return forward ? first + place : first - place; }

    void copyTo(std::span<float> out, std::size_t from) const {
        if (forward)
            std::copy_n(at(from), out.size(), out.begin());
        else
            copyReversed(at(from), out);
    }
};

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

/// An automation as a shape that goes on from node to node, so that fade() can follow it.
template <class Layer>
class AutomationShape {
public:
    explicit AutomationShape(Layer& layer) : layer_(layer), state_(layer.state()) {}

    Aud::Render::EnvelopeTraits::Phase phase() const {
        using Aud::Render::EnvelopeTraits::Phase;
        const bool holds = state_.stationary != 0;
        const bool isEndless = holds || state_.samplesToNextNode == 0;
        return {&Aud::GainCurve::Curve<Aud::GainCurve::eMixerStyleLog>::mapUValueToMagnitude, state_.uValue,
                state_.uValueStep, holds, isEndless ? Phase::forever : state_.samplesToNextNode};
    }
    void skip(std::uint32_t count, float uValue) {
        if (state_.stationary != 0)
            return;
        state_.uValue = uValue;
        state_.samplesToNextNode -= count;
        if (state_.samplesToNextNode == 0)
            layer_.moveToNextNode();
    }

private:
    Layer& layer_;
    Aud::DynamicLevelControl::DynamicLevelApplyingIteratorState& state_;
};

/// The layer below, to be changed: a chain holds its layers by value.
template <class Layer>
auto& innerOf(Layer& layer) {
    return const_cast<std::remove_cvref_t<decltype(layer.inner())>&>(layer.inner());
}

/// Renders `out` as the layer would sample by sample, from the inside out. `samples` must hold out.size() + 1
/// samples, because the equaliser reads one ahead. Steps everything but the source, which the caller steps.
template <class Layer>
void renderBlock(Layer& layer, const SourceSamples& samples, std::span<float> out) {
    if constexpr (requires { layer.equaliser(); }) {
        // The equaliser is one sample ahead.
        out.front() = layer.equaliser().getLastProcessSampleResult();
        samples.copyTo(out.subspan(1), 1);
        filterBlock(layer.equaliser(), out.subspan(1));
        layer.equaliser().processSample(*samples.at(out.size()));
    } else if constexpr (requires { layer.inner(); }) {
        renderBlock(innerOf(layer), samples, out);
        if constexpr (requires { layer.gain(); })
            multiply(out, layer.gain());
        else if constexpr (requires { layer.envelope(); })
            fade(layer.envelope(), out);
        else if constexpr (requires { layer.state(); }) {
            AutomationShape<Layer> automation(layer);
            fade(automation, out);
        }
    } else {
        samples.copyTo(out, 0);
    }
}

/// Renders up to `out.size()` samples that the source has ready, and steps the chain as often. Returns how
/// many; 0: the chain must render its next sample itself.
template <class Chain>
std::size_t renderSpan(Chain& chain, std::span<float> out) {
    // The chain holds its source by value, and is not constant.
    auto& source = const_cast<std::remove_cvref_t<decltype(Aud::Render::sourceOf(chain))>&>(
        Aud::Render::sourceOf(chain));
    const Aud::Render::ReadySpan span(source);
    const auto count = static_cast<std::size_t>(std::clamp<std::int64_t>(span.length, 0, std::ssize(out)));
    if (count == 0)
        return 0;
    renderBlock(chain, {source, span.samples}, out.first(count));
    Aud::Render::ReadySpan::advance(source, static_cast<std::int64_t>(count));
    return count;
}

} // namespace audlmd
