#pragma once

#include "contract/GainCurveNodes.hpp"
#include "ole/Aud/Instructions.hpp"

#include <bit>
#include <cstddef>
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

/// A curve of straight lines between the host's nodes.
struct NodeCurve {
    const CurveNode* nodes;
    /// Higher u-values read as this one.
    float limit;
    /// U-value between two nodes.
    float spacing;
};

// The limit finds node 1499 here, because 1.5F / 0.001F lies just below 1500, and node 100 in the other
// curve.
inline constexpr NodeCurve mixerStyleLogCurve{MixerStyleLog1_Private::UVal2Mag_CurveNodes, 1.5F, 0.001F};
inline constexpr NodeCurve constantPowerCurve{ConstantPower1_Private::UVal2Mag_CurveNodes, 1.0F, 0.01F};

/// The magnitude at `u`, on the straight line from the node at or below. A negative u-value reads as 0, a NaN
/// gives NaN.
///
/// The node is found by a true division by the spacing: the product with the reciprocal picks other nodes for
/// some u-values.
[[gnu::always_inline]] inline float lookUp(const NodeCurve& curve, float u) {
    // One comparison serves for both ends: read as an unsigned number, the bits of a negative u-value and of
    // a NaN exceed the bits of any limit.
    if (std::bit_cast<std::uint32_t>(u) > std::bit_cast<std::uint32_t>(curve.limit)) [[unlikely]]
        u = Instructions::clip(u, 0.0F, curve.limit);
    const auto index = static_cast<std::uint32_t>(_mm_cvttss_si32(_mm_set_ss(u / curve.spacing)));
    // A NaN is truncated to -2^31, and finds node 0, because -2^31 times 16 bytes is 0 in 32 bits.
    static_assert(sizeof(CurveNode) == 16);
    const std::uint32_t offset = index * std::uint32_t{sizeof(CurveNode)};
    const auto& node =
        *reinterpret_cast<const CurveNode*>(reinterpret_cast<const std::byte*>(curve.nodes) + offset);
    return (u - node.uValue) * node.slope + node.magnitude;
}

/// Maps a u-value to a gain. The table curves start a cache line because stored-shape envelopes call them
/// through a pointer for every sample.
/// \snippet chain.cpp curves
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
        return lookUp(mixerStyleLogCurve, uValue);
    }
};

template <>
struct Curve<eConstantPower> {
    [[gnu::always_inline, gnu::aligned(64)]] static float mapUValueToMagnitude(float uValue) {
        return lookUp(constantPowerCurve, uValue);
    }
};

} // namespace Aud::GainCurve
