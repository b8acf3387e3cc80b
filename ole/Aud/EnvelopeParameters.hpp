#pragma once

#include <cstdint>

namespace Aud::Render {

/// The shapes whose parameters carry a tag. The simple ramps have none.
enum eEnvelopeType : std::uint32_t {
    eRampHold = 4,
    eHoldRamp = 5,
    eRampHoldRamp = 6,
};

/// The host's description of a fade: ten 32-bit words, of which the last six are read according to `type`.
///
/// Lengths are in samples delivered by the envelope, steps in u-value per sample, curves are eCurveType
/// values. A last ramp has no length: it runs for as long as the chain is read.
/// \snippet chain.cpp envelope
struct EnvelopeParameters {
    /// One ramp and one hold, in either order. A simple ramp reads the step alone.
    struct OneRamp {
        float step;
        /// The length of the ramp in a ramp-hold, of the hold in a hold-ramp.
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
        /// The curve of the hold, too.
        std::uint32_t lastRampCurve;
    };

    /// Steps that are past when the chain is made: the first sample has the gain of this step.
    std::uint32_t elapsed;
    /// The u-value at step 0.
    float startUValue;
    /// The u-value of the middle level. The envelope does not read it.
    float levelUValue;
    /// An eEnvelopeType. The simple ramps do not read it.
    std::uint32_t type;
    union {
        OneRamp oneRamp;
        TwoRamps twoRamps;
    };
};

static_assert(sizeof(EnvelopeParameters) == 10 * sizeof(std::uint32_t));

} // namespace Aud::Render
