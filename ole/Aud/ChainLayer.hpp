#pragma once

#include <concepts>

namespace Aud::Render {

/// A layer of a chain: `*layer` reads the current sample, `++layer` steps to the next one.
///
/// The compiler cannot check the rest. Reading does not step. A copy reads and steps on its own, but works on
/// the same host objects (equaliser, dynamic level, resampler). Every layer but the source has `inner()`, the
/// layer below, which it holds by value.
template <class Layer>
concept ChainLayer = requires(const Layer& layer, Layer& steppable) {
    { *layer } -> std::same_as<float>;
    { ++steppable } -> std::same_as<Layer&>;
};

/// A layer that another layer can copy into itself. All are but the filtering converter, which is always
/// outermost.
/// \snippet chain.cpp layer
template <class Layer>
concept WrappableLayer = ChainLayer<Layer> && std::copy_constructible<Layer>;

/// The source at the bottom of a chain, for whoever needs its position. Layers therefore forward nothing.
/// \snippet chain.cpp fixed
template <ChainLayer Layer>
const auto& sourceOf(const Layer& layer) {
    if constexpr (requires { layer.inner(); })
        return sourceOf(layer.inner());
    else
        return layer;
}

} // namespace Aud::Render
