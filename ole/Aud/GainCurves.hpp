#pragma once

#include "host/GainCurveNodes.hpp"

#include <bit>
#include <cstdint>
#include <xmmintrin.h>

namespace Aud::GainCurve {

/// How a u-value becomes a linear gain. The u-value is the control value of every level, like the position of
/// a fader.
enum eCurveType : unsigned int {
    /// The gain is the u-value itself, unclamped.
    eLinear = 1,
    /// A mixer's fader law over u-values 0 to 1.5.
    eMixerStyleLog = 2,
    /// A constant-power law over u-values 0 to 1.0.
    eConstantPower = 3,
};

/// Where the nodes of a curve lie.
struct NodeGrid {
    /// Higher u-values read as this one, through node `limitIndex`.
    float limit;
    std::int64_t limitIndex;
    /// U-value between two nodes.
    float spacing;
};

// The index is that of the node which the limit itself finds: 1499, because 1.5F / 0.001F lies just below
// 1500, but 100 in the other curve.
inline constexpr NodeGrid mixerStyleLogGrid{1.5F, 1499, 0.001F};
inline constexpr NodeGrid constantPowerGrid{1.0F, 100, 0.01F};

/// The magnitude at `u`, on the straight line from the node at or below. A negative u-value reads as 0, a NaN
/// gives NaN.
///
/// The node is found by a true division by the spacing: the product with the reciprocal picks other nodes for
/// some u-values.
[[gnu::always_inline]] inline float lookUp(const CurveNode* nodes, const NodeGrid& grid, float u) {
    std::int64_t index = 0;
    // One comparison serves for both ends: read as an unsigned number, the bits of a negative u-value and of
    // a NaN exceed the bits of any limit.
    if (std::bit_cast<std::uint32_t>(u) <= std::bit_cast<std::uint32_t>(grid.limit)) [[likely]] {
        index = _mm_cvttss_si64(_mm_set_ss(u / grid.spacing));
    } else if (u > grid.limit) {
        u = grid.limit;
        index = grid.limitIndex;
    } else if (u < 0.0F) {
        u = 0.0F;
    }
    const CurveNode& node = nodes[index];
    return (u - node.uValue) * node.slope + node.magnitude;
}

/// Maps a u-value to a gain. The table curves start a cache line because stored-shape envelopes call them
/// through a pointer for every sample.
template <eCurveType CurveType>
struct Curve;

/// Does not clamp: a linear fade that runs on goes below 0 or beyond 1.
template <>
struct Curve<eLinear> {
    [[gnu::always_inline]] static float mapUValueToMagnitude(float uValue) { return uValue; }
};

template <>
struct Curve<eMixerStyleLog> {
    [[gnu::always_inline, gnu::aligned(64)]] static float mapUValueToMagnitude(float uValue) {
        return lookUp(MixerStyleLog1_Private::UVal2Mag_CurveNodes, mixerStyleLogGrid, uValue);
    }
};

template <>
struct Curve<eConstantPower> {
    [[gnu::always_inline, gnu::aligned(64)]] static float mapUValueToMagnitude(float uValue) {
        return lookUp(ConstantPower1_Private::UVal2Mag_CurveNodes, constantPowerGrid, uValue);
    }
};

} // namespace Aud::GainCurve
