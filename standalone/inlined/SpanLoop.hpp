#pragma once

#include "ole/Aud/Aud__RenderIterators"
#include "standalone/inlined/ReadySpan.hpp"
#include "standalone/signal/BlockLoops.hpp"

#include <algorithm>
#include <cstdint>
#include <span>

namespace audlmd {

/// Chains whose every sample is a sample of the source times fixed gains. They are rendered by the span, not
/// by the sample. The others are false here.
template <class Layer>
inline constexpr bool hasOnlyFixedGains = false;
template <>
inline constexpr bool hasOnlyFixedGains<Aud::SampleCache::ForwardIterator> = true;
template <>
inline constexpr bool hasOnlyFixedGains<Aud::SampleCache::ReverseIterator> = true;
template <class Inner>
inline constexpr bool hasOnlyFixedGains<Aud::Render::NullIterator<Inner>> = hasOnlyFixedGains<Inner>;
template <class Inner>
inline constexpr bool hasOnlyFixedGains<Aud::Render::FixedLevelApplyingIterator<Inner>> =
    hasOnlyFixedGains<Inner>;

/// Multiplies samples by the gains of a chain, one after another from the inside out, as the chain does.
template <class Layer>
void applyGains(const Layer& layer, std::span<float> samples) {
    if constexpr (requires { layer.inner(); })
        applyGains(layer.inner(), samples);
    if constexpr (requires { layer.gain(); })
        multiply(samples, layer.gain());
}

inline void copySpan(const Aud::SampleCache::ForwardIterator&, const float* samples, std::span<float> out) {
    std::copy_n(samples, out.size(), out.begin());
}

inline void copySpan(const Aud::SampleCache::ReverseIterator&, const float* samples, std::span<float> out) {
    copyReversed(samples, out);
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
    copySpan(source, span.samples, out.first(count));
    applyGains(chain, out.first(count));
    Aud::Render::ReadySpan::advance(source, static_cast<std::int64_t>(count));
    return count;
}

} // namespace audlmd
