#pragma once

#include "ole/Aud/ChainLayer.hpp"
#include "ole/Aud/GainCurves.hpp"

namespace Aud::Render {

/// Multiplies every sample by one gain, set when the chain is made. The multiply is made for gains of 0 and 1
/// too.
template <WrappableLayer Inner>
class FixedLevelApplyingIterator {
public:
    /// The u-value always goes through the mixer-style curve.
    FixedLevelApplyingIterator(const Inner& inner, float uValue)
        : inner_(inner), gain_(GainCurve::Curve<GainCurve::eMixerStyleLog>::mapUValueToMagnitude(uValue)) {}

    [[gnu::always_inline]] float operator*() const { return *inner_ * gain_; }

    [[gnu::always_inline]] FixedLevelApplyingIterator& operator++() {
        ++inner_;
        return *this;
    }

    const Inner& inner() const { return inner_; }

private:
    Inner inner_;
    float gain_;
};

} // namespace Aud::Render
