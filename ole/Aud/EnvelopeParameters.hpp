#pragma once

#include <cstdint>

namespace Aud::Render {

enum eEnvelopeType : std::uint32_t {
    eRampHold = 4,
    eHoldRamp = 5,
    eRampHoldRamp = 6,
};

/// The host's description of a fade: ten 32-bit words, the last six read according to `type`. Lengths are in
/// samples delivered by the envelope, steps in u-value per sample, curves are eCurveType values.
struct EnvelopeParameters {
    /// One ramp and one hold, in either order. The simple ramps read only its step.
    struct OneRamp {
        float step;
        /// Of the ramp in a ramp-hold, of the hold in a hold-ramp.
        std::uint32_t length;
        std::uint32_t curveType;
        std::uint32_t unused[3];
    };

    struct TwoRamps {
        float firstRampStep;
        float lastRampStep;
        std::uint32_t firstRampLength;
        std::uint32_t holdLength;
        std::uint32_t firstRampCurve;
        /// Of the hold too.
        std::uint32_t lastRampCurve;
    };

    /// Steps of the envelope that are past when the chain is made.
    std::uint32_t elapsed;
    /// At step 0.
    float startUValue;
    /// Of the middle fixed level; the envelope does not read it.
    float levelUValue;
    /// An eEnvelopeType; the simple ramps do not read it.
    std::uint32_t type;
    union {
        OneRamp oneRamp;
        TwoRamps twoRamps;
    };
};

static_assert(sizeof(EnvelopeParameters) == 10 * sizeof(std::uint32_t));

} // namespace Aud::Render
