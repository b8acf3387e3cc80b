#pragma once

#include <concepts>

namespace Aud::Render {

/// What every layer of a chain offers: the current sample, and the step to the next one.
///
/// Beyond what the compiler checks: reading does not step, a copy reads and steps on its own (but shares the
/// host objects that its layers work on), and `inner()` is the layer below, by value in this one.
template <class Layer>
concept ChainLayer = requires(const Layer& layer, Layer& steppable) {
    { *layer } -> std::same_as<float>;
    { ++steppable } -> std::same_as<Layer&>;
};

/// A layer that another layer can copy into itself.
template <class Layer>
concept WrappableLayer = ChainLayer<Layer> && std::copy_constructible<Layer>;

/// The source at the bottom of a chain.
template <ChainLayer Layer>
const auto& sourceOf(const Layer& layer) {
    if constexpr (requires { layer.inner(); })
        return sourceOf(layer.inner());
    else
        return layer;
}

} // namespace Aud::Render
