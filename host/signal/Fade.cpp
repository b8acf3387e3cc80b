#include "host/signal/Fade.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/signal/GridRamp.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>

namespace audlmd {
namespace {

using Aud::Render::EnvelopeKind;

/// The u-value 1 in steps of the grid. A float holds every step up to there.
constexpr std::int64_t gridUnity = std::int64_t{1} << 24;
/// Samples between two points where a fade lies on the straight line. A shorter interval stays closer to the
/// line, and makes more render calls.
constexpr std::uint64_t interval = 1024;
/// Beyond any range. A quarter of the largest number, so that sums do not overflow.
constexpr RangeSample forever = std::numeric_limits<std::int64_t>::max() / 4;
/// The longest hold of one placement: fits into the envelope's 32-bit lengths, and is aligned.
constexpr Distance<SourceRate> longestHold = std::int64_t{1} << 31;

/// Exact, because the grid has 24 bits like the mantissa of a float.
float asUValue(std::int64_t value) {
    return static_cast<float>(value) / static_cast<float>(gridUnity);
}

/// Limits a length to the 32 bits of an envelope. The limit is never reached in sound: a placement ends after
/// longestHold at the latest.
std::uint32_t asLength(Distance<SourceRate> samples) {
    return static_cast<std::uint32_t>(
        std::clamp<std::int64_t>(samples, 0, std::int64_t{std::numeric_limits<std::uint32_t>::max()}));
}

/// The gain that the renderer reads off the nodes of the curve, not the exact law.
float rendererGain(FadeCurve curve, float uValue) {
    using namespace Aud::GainCurve;
    switch (curve) {
    case FadeCurve::log:
        return Curve<eMixerStyleLog>::mapUValueToMagnitude(uValue);
    case FadeCurve::power:
        return Curve<eConstantPower>::mapUValueToMagnitude(uValue);
    case FadeCurve::linear:
        break;
    }
    return Curve<eLinear>::mapUValueToMagnitude(uValue);
}

/// The simple ramps have no linear form, so a linear fade over the whole range is a ramp-hold or hold-ramp
/// with an empty hold.
EnvelopeKind kindOf(const FadePlan& plan, std::uint64_t rangeLength) {
    const auto alone = [rangeLength](std::uint64_t samples, FadeCurve curve, EnvelopeKind withHold) {
        if (samples != rangeLength || curve == FadeCurve::linear)
            return withHold;
        return curve == FadeCurve::log ? EnvelopeKind::simpleRampMixerStyleLog
                                       : EnvelopeKind::simpleRampConstantPower;
    };
    if (plan.fadeInSamples != 0 && plan.fadeOutSamples != 0)
        return EnvelopeKind::rampHoldRamp;
    if (plan.fadeInSamples != 0)
        return alone(plan.fadeInSamples, plan.fadeInCurve, EnvelopeKind::rampHold);
    if (plan.fadeOutSamples != 0)
        return alone(plan.fadeOutSamples, plan.fadeOutCurve, EnvelopeKind::holdRamp);
    return EnvelopeKind::none;
}

} // namespace

double gainOf(FadeCurve curve, double uValue) {
    switch (curve) {
    case FadeCurve::log:
        return mixerStyleGain(uValue);
    case FadeCurve::power:
        return constantPowerGain(uValue);
    case FadeCurve::linear:
        break;
    }
    return uValue;
}

FadeEnvelope::FadeEnvelope(const FadePlan& plan, std::uint64_t rangeLength, std::uint32_t alignment,
                           RangeSample origin)
    : plan_(plan), fadeInEnd_(static_cast<std::int64_t>(plan.fadeInSamples)), fadeOutBegin_(forever),
      rangeEnd_(static_cast<std::int64_t>(rangeLength)), alignment_(alignment), origin_(origin),
      kind_(kindOf(plan, rangeLength)) {
    // Subtracted, because the sum of two lengths could overflow.
    if (plan.fadeInSamples > rangeLength || plan.fadeOutSamples > rangeLength - plan.fadeInSamples)
        throw std::invalid_argument("a fade-in of " + std::to_string(plan.fadeInSamples) +
                                    " samples and a fade-out of " + std::to_string(plan.fadeOutSamples) +
                                    " do not fit into a range of " + std::to_string(rangeLength) +
                                    ": shorten one of them");
    if (plan.fadeOutSamples != 0)
        fadeOutBegin_ = static_cast<std::int64_t>(rangeLength - plan.fadeOutSamples);
}

RangeSample FadeEnvelope::alignedDown(RangeSample sample) const {
    // The remainder is negative before the origin.
    const std::int64_t past = (sample - origin_) % alignment_;
    return past < 0 ? sample - alignment_ - past : sample - past;
}

/// An aligned sample gives itself.
RangeSample FadeEnvelope::alignedUp(RangeSample sample) const {
    return alignedDown(sample + alignment_ - 1);
}

FadeEnvelope::Piece FadeEnvelope::pieceOf(RangeSpan fade, bool rising, RangeSample sample) const {
    // Intervals are counted from the origin, like aligned samples, so that an interval ends on one of them.
    const auto wholeIntervals = static_cast<std::int64_t>(interval);
    const std::int64_t start = ((fade.from - origin_) % wholeIntervals + wholeIntervals) % wholeIntervals;
    const GridRamp ramp{.first = rising ? 0 : gridUnity,
                        .last = rising ? gridUnity : 0,
                        .length = static_cast<std::uint64_t>(fade.length()),
                        .interval = interval,
                        .alignment = static_cast<std::uint64_t>(alignment_),
                        .start = static_cast<std::uint64_t>(start)};
    const auto offset = static_cast<std::uint64_t>(sample - fade.from);
    const GridRamp::Piece piece = ramp.pieceAt(offset);
    return {piece.valueAt(offset), piece.slope, fade.from + static_cast<std::int64_t>(piece.end)};
}

FadeEnvelope::Placement FadeEnvelope::at(RangeSample sample) const {
    // Between aligned samples an envelope runs on its own. An envelope that starts there starts as if the
    // envelope had run on from the aligned sample before.
    const RangeSample aligned = alignedDown(sample);
    const Pieces pieces = piecesAt(aligned);
    Placement placement{parametersOf(sample, pieces), placementEnd(aligned, pieces)};
    placement.parameters.startUValue = arrivedAt(sample, aligned, pieces);
    return placement;
}

/// Adds step by step, as the renderer does. `elapsed` would multiply instead, which is the same on the grid
/// but rounds otherwise below silence, where a fade-out has ended between aligned samples.
float FadeEnvelope::arrivedAt(RangeSample sample, RangeSample aligned, const Pieces& pieces) const {
    float uValue = asUValue(aligned >= fadeOutBegin_ ? pieces.fadeOut.value : pieces.fadeIn.value);
    for (RangeSample at = aligned; at != sample; at += 1) {
        if (at < fadeInEnd_)
            uValue += asUValue(pieces.fadeIn.slope);
        else if (at >= fadeOutBegin_)
            uValue += asUValue(pieces.fadeOut.slope);
    }
    return uValue;
}

/// Asks for each fade only inside its own samples, because a ramp has no pieces outside of its length.
FadeEnvelope::Pieces FadeEnvelope::piecesAt(RangeSample sample) const {
    Pieces pieces{{gridUnity, 0, fadeInEnd_}, {gridUnity, 0, forever}};
    if (sample < fadeInEnd_)
        pieces.fadeIn = pieceOf({0, fadeInEnd_}, true, sample);
    if (isOver(sample))
        pieces.fadeOut.value = 0;
    else if (fadeOutBegin_ != forever)
        pieces.fadeOut = pieceOf({fadeOutBegin_, rangeEnd_}, false, std::max(sample, fadeOutBegin_));
    return pieces;
}

/// Ends the placement where the slope changes. A fade may end between aligned samples; the envelope then
/// carries on to the next one, so an incomplete ramp must not be held for long.
RangeSample FadeEnvelope::placementEnd(RangeSample sample, const Pieces& pieces) const {
    RangeSample end = isOver(sample) ? forever : alignedUp(pieces.fadeOut.end);
    const Piece& fadeIn = pieces.fadeIn;
    if (sample < fadeInEnd_) {
        const bool changes = fadeIn.end < fadeInEnd_;
        const bool complete = fadeIn.value + fadeIn.slope * (fadeInEnd_ - sample) == gridUnity;
        if (changes || !complete)
            end = std::min(end, alignedUp(fadeIn.end));
    }
    return std::min(end, alignedUp(std::max(sample, fadeInEnd_)) + longestHold);
}

/// Writes the pieces as the renderer counts: a ramp from its own sample on, the hold after the ramp. The
/// lengths are those of the whole fades; the placement ends where a slope changes. Leaves the u-value to
/// at().
Aud::Render::EnvelopeParameters FadeEnvelope::parametersOf(RangeSample sample, const Pieces& pieces) const {
    const auto& [fadeIn, fadeOut] = pieces;
    Aud::Render::EnvelopeParameters parameters{};
    parameters.levelUValue = 1.0F;
    const std::uint32_t rampLength = asLength(fadeInEnd_ - sample);
    const std::uint32_t holdLength = asLength(fadeOutBegin_ - std::max(sample, fadeInEnd_));
    const auto inCurve = static_cast<std::uint32_t>(plan_.fadeInCurve);
    const auto outCurve = static_cast<std::uint32_t>(plan_.fadeOutCurve);
    switch (kind_) {
    case EnvelopeKind::rampHoldRamp:
        parameters.type = Aud::Render::eRampHoldRamp;
        parameters.twoRamps = {
            asUValue(fadeIn.slope), asUValue(fadeOut.slope), rampLength, holdLength, inCurve, outCurve};
        break;
    case EnvelopeKind::holdRamp:
        parameters.type = Aud::Render::eHoldRamp;
        parameters.oneRamp = {asUValue(fadeOut.slope), holdLength, outCurve, {}};
        break;
    default:
        // A simple ramp reads the step alone, which is that of the one fade.
        parameters.type = Aud::Render::eRampHold;
        parameters.oneRamp = {
            asUValue(fadeInEnd_ != 0 ? fadeIn.slope : fadeOut.slope), rampLength, inCurve, {}};
        break;
    }
    return parameters;
}

RangeSample FadeEnvelope::fullLevelEnd(RangeSample sample) const {
    if (kind_ == EnvelopeKind::none)
        return forever;
    // A hold between two fades has the curve of the fade-out.
    const FadeCurve curve = plan_.fadeOutSamples != 0 ? plan_.fadeOutCurve : plan_.fadeInCurve;
    // A curve whose table does not give exactly 1 needs the envelope at full level, too.
    if (rendererGain(curve, 1.0F) != 1.0F || sample < alignedUp(fadeInEnd_))
        return sample;
    return std::max(sample, fadeOutBegin_ == forever ? forever : alignedDown(fadeOutBegin_));
}

double FadeEnvelope::uValueAt(RangeSample sample) const {
    if (sample < fadeInEnd_)
        return static_cast<double>(sample.number()) / static_cast<double>(plan_.fadeInSamples);
    if (sample < fadeOutBegin_)
        return 1.0;
    return static_cast<double>(std::max<std::int64_t>(rangeEnd_ - sample, 0)) /
           static_cast<double>(plan_.fadeOutSamples);
}

/// The hold between two fades has the curve of the fade-out, as in fullLevelEnd().
double FadeEnvelope::gainAt(RangeSample sample) const {
    return gainOf(sample < fadeInEnd_ ? plan_.fadeInCurve : plan_.fadeOutCurve, uValueAt(sample));
}

} // namespace audlmd
