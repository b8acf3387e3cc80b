#pragma once

#include "loop_modes/ModeCode.hpp"
#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/GainCurves.hpp"

#include <cstdint>

namespace audlmd {

/// How the gain runs over a fade whose u-value runs straight from 0 to 1 or back.
enum class FadeCurve : std::uint32_t {
    linear = Aud::GainCurve::eLinear,
    /// The mixer-style fader law, see mixerStyleGain().
    log = Aud::GainCurve::eMixerStyleLog,
    /// See constantPowerGain().
    power = Aud::GainCurve::eConstantPower,
};

/// The exact law of a curve at u-values from 0 to 1.
double gainOf(FadeCurve curve, double uValue);

/// The fades of a range. Lengths are in source samples, in the order of their delivery: a fade-in is at the
/// start of what is heard, in reverse too, and lasts half as long at twice the speed.
struct FadePlan {
    /// The first sample is silent, and that after the last one of the fade has full level. 0: none.
    std::uint64_t fadeInSamples = 0;
    /// Its first sample has full level, and that after its last one, the end of the range, is silent: where
    /// one fade-out and one fade-in overlap, their u-values add up to 1. 0: none.
    std::uint64_t fadeOutSamples = 0;
    FadeCurve fadeInCurve = FadeCurve::linear;
    FadeCurve fadeOutCurve = FadeCurve::linear;
};

/// Lays a plan along a range, and gives the renderer's envelope at any sample of it.
///
/// The u-value of a sample depends on its place in the range alone, so that it makes no difference where a
/// render call starts. It lies on a grid of 2^-24, on which the renderer's steps are exact, and follows the
/// straight line in pieces that differ from it by less than 2e-5; a single step would not reach full level at
/// the end of a long fade, because what it adds to a u-value near 1.0 is rounded.
class FadeEnvelope {
public:
    /// The envelope from one sample on, right for those before `end`, and for `end` itself where the
    /// alignment is 1.
    struct Placement {
        Aud::Render::EnvelopeParameters parameters;
        std::int64_t end;
    };

    /// The slope changes, and a placement ends, only at samples whose distance to `origin` is a multiple of
    /// `alignment` (a power of two up to 1024). A fade may begin and end anywhere: with an alignment above 1
    /// the u-value may then stay up to 4e-6 away from what it should reach until the next such sample.
    ///
    /// Throws std::invalid_argument if the fades overlap or are longer than the range.
    FadeEnvelope(const FadePlan& plan, std::uint64_t rangeLength, std::uint32_t alignment = 1,
                 std::int64_t origin = 0);

    /// The kind that fits: ramp-hold for a fade-in, hold-ramp for a fade-out, ramp-hold-ramp for both, a
    /// simple ramp for one fade over the whole range if its curve is not linear, none without a fade.
    Aud::Render::EnvelopeKind kind() const { return kind_; }

    /// `sample` counts delivered samples from the start of the range. The level u-value is left at unity.
    Placement at(std::int64_t sample) const;

    /// Where the stretch of full level that `sample` lies in ends, on an aligned sample: up to there the
    /// envelope multiplies by exactly 1, and can be left out. `sample` itself if it lies in none. Far beyond
    /// any range if the level stays full.
    std::int64_t fullLevelEnd(std::int64_t sample) const;

    /// Of the plan itself: the straight line, and the law of its curve.
    double uValueAt(std::int64_t sample) const;
    double gainAt(std::int64_t sample) const;

private:
    /// A straight piece of a ramp from a sample on, in steps of the grid.
    struct Piece {
        std::int64_t value;
        std::int64_t slope;
        std::int64_t end;
    };

    /// Of the ramp between two samples that rises to unity, or falls to silence.
    Piece pieceOf(std::int64_t begin, std::int64_t end, bool rising, std::int64_t sample) const;
    std::int64_t alignedDown(std::int64_t sample) const;
    std::int64_t alignedUp(std::int64_t sample) const;

    FadePlan plan_;
    /// Where the fade-out begins.
    std::int64_t fadeOut_;
    std::int64_t length_;
    std::int64_t alignment_;
    std::int64_t origin_;
    Aud::Render::EnvelopeKind kind_;
};

} // namespace audlmd
