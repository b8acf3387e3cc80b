#pragma once

#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/GainCurves.hpp"
#include "ole/Orv/Exception.hpp"

#include <cstdint>

/// What the stored shapes check of their parameters. The host matches messages, file and lines, misspellings
/// included, wherever the checks stand.
namespace Aud::Render::EnvelopeTraits {

/// The gain curve of a stored shape, resolved once, when the chain is made. Null stands for the linear curve,
/// which has no nodes.
using StoredCurve = const GainCurve::NodeCurve*;

/// Looks the gain up in line: a call of the curve's function would be one more call for each sample.
[[gnu::always_inline]] inline float gainOn(StoredCurve curve, float uValue) {
    return curve == nullptr ? uValue : GainCurve::lookUp(*curve, uValue);
}

inline constexpr const char* sourceFile = "ole/Aud/Aud__RenderIterators";

inline StoredCurve resolveCurve(std::uint32_t curveType) {
    constexpr int unexpectedCurveLine = 304;
    switch (curveType) {
    case GainCurve::eLinear:
        return nullptr;
    case GainCurve::eMixerStyleLog:
        return &GainCurve::mixerStyleLogCurve;
    case GainCurve::eConstantPower:
        return &GainCurve::constantPowerCurve;
    }
    throw Orv::Exception::RuntimeError("Unexpected Aud::GainCurve type!", sourceFile, unexpectedCurveLine);
}

/// Throws unless the parameters describe the shape that the mode names. Tested before the curves.
inline void requireType(const EnvelopeParameters& params, eEnvelopeType type, int line) {
    if (params.type != type)
        throw Orv::Exception::RuntimeError("Mismatched EnvelopePrameters type!", sourceFile, line);
}

} // namespace Aud::Render::EnvelopeTraits
