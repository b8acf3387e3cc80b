#pragma once

namespace Aud::GainCurve {

/// One straight piece of a gain curve, from `uValue` up to the next node's.
/// \snippet minimal_host.cpp curves
struct CurveNode {
    float uValue;
    float magnitude;
    /// Change of magnitude per unit of u-value.
    float slope;
    /// The host's own. The lookup never reads it.
    float reserved;
};

// The lookup finds a node by the u-value alone, so the nodes of a table must be equally spaced. A table may
// be longer than the lookup needs.

/// A mixer-style fader law: node i starts at u = i x 0.001.
namespace MixerStyleLog1_Private {
inline constexpr int nodesNeeded = 1502;
extern const CurveNode UVal2Mag_CurveNodes[];
} // namespace MixerStyleLog1_Private

/// A constant-power law: node i starts at u = i x 0.01.
namespace ConstantPower1_Private {
inline constexpr int nodesNeeded = 101;
extern const CurveNode UVal2Mag_CurveNodes[];
} // namespace ConstantPower1_Private

} // namespace Aud::GainCurve
