#pragma once

namespace Aud::GainCurve {

/// One straight piece of a gain curve, from `uValue` up to the next node's.
struct CurveNode {
    float uValue;
    float magnitude;
    /// Change of magnitude per unit of u-value.
    float slope;
    /// The host's; the lookup never reads it.
    float reserved;
};

/// A mixer-style fader law: node i starts at u = i x 0.001.
namespace MixerStyleLog1_Private {
inline constexpr int nodeCount = 1502;
extern const CurveNode UVal2Mag_CurveNodes[nodeCount];
} // namespace MixerStyleLog1_Private

/// A constant-power law: node i starts at u = i x 0.01.
namespace ConstantPower1_Private {
inline constexpr int nodeCount = 101;
extern const CurveNode UVal2Mag_CurveNodes[nodeCount];
} // namespace ConstantPower1_Private

} // namespace Aud::GainCurve
