#pragma once

#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/GainCurves.hpp"
#include "ole/Orv/Exception.hpp"

#include <cstdint>

/// What the stored shapes check of their parameters. The host matches messages, file and lines, misspellings
/// included, wherever the checks stand.
namespace Aud::Render::EnvelopeTraits {

/// The gain curve of a stored shape. The pointer is resolved once, when the chain is made, so that no sample
/// decides on the curve.
/// \snippet chain.cpp curves
using CurveFunction = float (*)(float);

inline constexpr const char* sourceFile = "ole/Aud/Aud__RenderIterators";

inline CurveFunction resolveCurve(std::uint32_t curveType) {
    constexpr int unexpectedCurveLine = 304;
    switch (curveType) {
    case GainCurve::eLinear:
        return &GainCurve::Curve<GainCurve::eLinear>::mapUValueToMagnitude;
    case GainCurve::eMixerStyleLog:
        return &GainCurve::Curve<GainCurve::eMixerStyleLog>::mapUValueToMagnitude;
    case GainCurve::eConstantPower:
        return &GainCurve::Curve<GainCurve::eConstantPower>::mapUValueToMagnitude;
    }
    throw Orv::Exception::RuntimeError("Unexpected Aud::GainCurve type!", sourceFile, unexpectedCurveLine);
}

/// Throws unless the parameters describe the shape that the mode names. Tested before the curves.
inline void requireType(const EnvelopeParameters& params, eEnvelopeType type, int line) {
    if (params.type != type)
        throw Orv::Exception::RuntimeError("Mismatched EnvelopePrameters type!", sourceFile, line);
}

} // namespace Aud::Render::EnvelopeTraits
