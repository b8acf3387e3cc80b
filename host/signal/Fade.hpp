#pragma once

#include "host/signal/Clocks.hpp"
#include "loop_modes/ModeCode.hpp"
#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/GainCurves.hpp"

#include <cstdint>

namespace audlmd {

/// The gain over the course of a fade. The u-value runs straight from 0 to 1 in a fade-in, and back in a
/// fade-out; the curve makes a gain of the u-value.
enum class FadeCurve : std::uint32_t {
    /// The gain is the u-value. Use this curve between two takes of the same sound, whose gains must add up
    /// to 1.
    linear = Aud::GainCurve::eLinear,
    /// The mixer-style fader law, see mixerStyleGain(). Use this curve for a fade that sounds even.
    log = Aud::GainCurve::eMixerStyleLog,
    /// See constantPowerGain(). Use this curve for crossfades between strips that have nothing in common.
    power = Aud::GainCurve::eConstantPower,
};

/// The exact law of a curve, for u-values from 0 to 1. The renderer interpolates in a table of this law. Use
/// the law for drawings and tests.
/// \snippet signal.cpp fade
double gainOf(FadeCurve curve, double uValue);

/// The fades of a range, on the clock of the range: a fade-in is at the start of the sound, in reverse too,
/// and lasts half as long at twice the speed.
struct FadePlan {
    /// The first sample of the range is silent. The first sample after the fade-in has full level. 0: no
    /// fade-in.
    std::uint64_t fadeInSamples = 0;
    /// The first sample of the fade-out has full level. The end of the range, one sample after the last, is
    /// silent: where a fade-out and an equally long fade-in overlap, the two u-values add up to 1. 0: no
    /// fade-out.
    std::uint64_t fadeOutSamples = 0;
    FadeCurve fadeInCurve = FadeCurve::linear;
    FadeCurve fadeOutCurve = FadeCurve::linear;
};

/// Lays a plan along a range, and gives the renderer's envelope at any sample of the range.
///
/// The u-value of a sample depends on the sample alone, so that the bytes do not depend on where a render
/// call starts. U-values lie on a grid of 2^-24, on which the renderer's single-precision steps are exact.
/// The u-value follows the straight line in pieces that differ from the line by at most 2^-16 (1.5e-5), and
/// the gain of a constant-power fade differs from the sine by at most 2^-14.6 (4e-5). A single step for the
/// whole fade would not do: the sum near u = 1.0 is rounded, and a fade of a minute would end 3 % off.
/// \snippet signal.cpp fade
class FadeEnvelope {
public:
    /// The envelope from one sample on. Valid for samples in [sample, end); with alignment 1 also at `end`.
    struct Placement {
        Aud::Render::EnvelopeParameters parameters{};
        RangeSample end;
    };

    /// The slope changes, and a placement ends, only at samples whose distance to `origin` is a multiple of
    /// `alignment`, a power of two up to 1024. Use an alignment above 1 where the renderer reads whole
    /// blocks.
    ///
    /// Throws std::invalid_argument if the fades overlap or are longer than the range. A fade may begin and
    /// end between aligned samples; the u-value may then be up to 4e-6 off until the next aligned sample. The
    /// trap: a linear fade-out that ends between them runs on below silence up to there. A converter that
    /// reads beyond the end of the range hears that in its last few outputs, and louder the shorter the fade.
    FadeEnvelope(const FadePlan& plan, std::uint64_t rangeLength, std::uint32_t alignment = 1,
                 RangeSample origin = 0);

    /// The kind of envelope that fits: ramp-hold for a fade-in, hold-ramp for a fade-out, ramp-hold-ramp for
    /// both, none without a fade. One fade over the whole range is a simple ramp, except with the linear
    /// curve. The kind is the same for every alignment, so a mode can be chosen before the converter.
    Aud::Render::EnvelopeKind kind() const { return kind_; }

    /// The placement for a sample. The u-value of the middle level is 1. A placement starts in the middle of
    /// a fade as the renderer would have arrived there.
    Placement at(RangeSample sample) const;

    /// The end of the full level at a sample, on an aligned sample: up to there the envelope multiplies by
    /// exactly 1, and can be left out. `sample` if the envelope does not. Beyond the longest range if the
    /// level stays full. Use this to choose the cheaper mode code for as long as the level is full.
    RangeSample fullLevelEnd(RangeSample sample) const;

    /// The u-value on the straight line of the plan, and the gain by the law of the curve. These two are the
    /// ideal; the renderer comes as close as the class comment says.
    double uValueAt(RangeSample sample) const;
    /// Linear.
    double gainAt(RangeSample sample) const;

private:
    /// A piece of one fade from a sample on: u-value and slope in steps of the grid.
    struct Piece {
        std::int64_t value = 0;
        std::int64_t slope = 0;
        RangeSample end;
    };

    /// The pieces of both fades. A fade-in that is over holds the full level; a fade-out that has not begun
    /// shows the first piece.
    struct Pieces {
        Piece fadeIn;
        Piece fadeOut;
    };

    Pieces piecesAt(RangeSample alignedSample) const;
    RangeSample placementEnd(RangeSample alignedSample, const Pieces& pieces) const;
    float arrivedAt(RangeSample sample, RangeSample alignedSample, const Pieces& pieces) const;
    Aud::Render::EnvelopeParameters parametersOf(RangeSample sample, const Pieces& pieces) const;
    /// A piece of the ramp between two samples, which rises to full level or falls to silence.
    Piece pieceOf(RangeSpan fade, bool rising, RangeSample sample) const;
    /// Beyond the range a fade-out stays silent, and a range without a fade-out is never over.
    bool isOver(RangeSample sample) const { return sample >= rangeEnd_ && sample >= fadeOutBegin_; }
    /// The nearest aligned sample at or before `sample`, and the nearest at or after.
    RangeSample alignedDown(RangeSample sample) const;
    RangeSample alignedUp(RangeSample sample) const;

    FadePlan plan_;
    RangeSample fadeInEnd_;
    /// Beyond the longest range without a fade-out.
    RangeSample fadeOutBegin_;
    RangeSample rangeEnd_;
    std::int64_t alignment_;
    RangeSample origin_;
    Aud::Render::EnvelopeKind kind_;
};

} // namespace audlmd
