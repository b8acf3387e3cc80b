#pragma once

#include "host/GainCurveNodes.hpp"

#include <bit>
#include <cstdint>
#include <xmmintrin.h>

namespace Aud::GainCurve {

/// How a u-value, the float control value of every level, becomes a linear gain.
enum eCurveType : unsigned int {
    /// The gain is the u-value itself, unclamped.
    eLinear = 1,
    /// A mixer's fader law over u-values 0 to 1.5.
    eMixerStyleLog = 2,
    /// A constant-power law over u-values 0 to 1.0.
    eConstantPower = 3,
};

/// Where a piecewise linear curve's nodes lie.
struct NodeGrid {
    /// U-values above read as this one, through node `limitIndex`.
    float limit;
    std::int64_t limitIndex;
    /// U-value between two nodes.
    float spacing;
};

// A u-value above the limit reads as the limit, through the node that the limit itself finds: 1499, because
// 1.5F / 0.001F lies just below 1500, but 100 in the other curve.
inline constexpr NodeGrid mixerStyleLogGrid{1.5F, 1499, 0.001F};
inline constexpr NodeGrid constantPowerGrid{1.0F, 100, 0.01F};

/// The magnitude at `u`, by linear interpolation from the node at or below it. A negative u-value reads as 0;
/// a NaN gives NaN.
///
/// The index is a true division by the spacing: a product with its reciprocal picks other nodes.
[[gnu::always_inline]] inline float lookUp(const CurveNode* nodes, const NodeGrid& grid, float u) {
    std::int64_t index = 0;
    // One comparison, because the bits of a negative u-value and of a NaN, as a number, exceed any limit's.
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

/// The two with nodes start a line of the instruction cache, because the stored shapes call them for every
/// sample through a pointer.
template <eCurveType CurveType>
struct Curve;

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
