#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/GainCurves.hpp"

namespace Aud::Render {

/// Multiplies every sample by one gain, which is computed once, when the chain is made.
///
/// A chain holds up to two: the middle level directly over the envelope, and the outer level directly under
/// the converter. Gains of 0 and 1 are multiplied like any other, so a NaN or an infinity in the source stays
/// one.
/// \snippet chain.cpp fixed
template <WrappableLayer Inner>
class FixedLevelApplyingIterator {
public:
    /// `uValue` is mapped by the mixer-style curve, always.
    FixedLevelApplyingIterator(const Inner& inner, float uValue)
        : inner_(inner), gain_(GainCurve::Curve<GainCurve::eMixerStyleLog>::mapUValueToMagnitude(uValue)) {}

    [[gnu::always_inline]] float operator*() const { return *inner_ * gain_; }

    [[gnu::always_inline]] FixedLevelApplyingIterator& operator++() {
        ++inner_;
        return *this;
    }

    const Inner& inner() const { return inner_; }
    float gain() const { return gain_; }

private:
    Inner inner_;
    float gain_;
};

} // namespace Aud::Render
