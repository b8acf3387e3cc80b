#include "standalone/signal/Fade.hpp"

#include "standalone/signal/GainLaws.hpp"
#include "standalone/signal/GridRamp.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>

namespace audlmd {
namespace {

using Aud::Render::EnvelopeKind;

/// U-values of fades are whole multiples of 1 / gridUnity.
constexpr std::int64_t gridUnity = std::int64_t{1} << 24;
constexpr std::uint64_t interval = 1024;
/// Longer than any range, and still to be added to.
constexpr std::int64_t forever = std::numeric_limits<std::int64_t>::max() / 4;
/// A stretch that fits into the envelope's lengths, and is aligned.
constexpr std::int64_t longestLength = std::int64_t{1} << 31;

float asUValue(std::int64_t value) {
    return static_cast<float>(value) / static_cast<float>(gridUnity);
}

std::uint32_t asLength(std::int64_t samples) {
    return static_cast<std::uint32_t>(
        std::clamp(samples, std::int64_t{0}, std::int64_t{std::numeric_limits<std::uint32_t>::max()}));
}

/// What the renderer makes of a u-value, from the nodes of the curve.
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
                           std::int64_t origin)
    : plan_(plan), fadeOut_(forever), length_(static_cast<std::int64_t>(rangeLength)), alignment_(alignment),
      origin_(origin), kind_(kindOf(plan, rangeLength)) {
    if (plan.fadeInSamples > rangeLength || plan.fadeOutSamples > rangeLength - plan.fadeInSamples)
        throw std::invalid_argument("a fade-in of " + std::to_string(plan.fadeInSamples) +
                                    " samples and a fade-out of " + std::to_string(plan.fadeOutSamples) +
                                    " do not fit into a range of " + std::to_string(rangeLength) +
                                    ": shorten one of them");
    if (plan.fadeOutSamples != 0)
        fadeOut_ = static_cast<std::int64_t>(rangeLength - plan.fadeOutSamples);
}

std::int64_t FadeEnvelope::alignedDown(std::int64_t sample) const {
    const std::int64_t past = (sample - origin_) % alignment_;
    return past < 0 ? sample - alignment_ - past : sample - past;
}

std::int64_t FadeEnvelope::alignedUp(std::int64_t sample) const {
    return alignedDown(sample + alignment_ - 1);
}

FadeEnvelope::Piece FadeEnvelope::pieceOf(std::int64_t begin, std::int64_t end, bool rising,
                                          std::int64_t sample) const {
    const auto wholeIntervals = static_cast<std::int64_t>(interval);
    const std::int64_t start = ((begin - origin_) % wholeIntervals + wholeIntervals) % wholeIntervals;
    const GridRamp ramp{.first = rising ? 0 : gridUnity,
                        .last = rising ? gridUnity : 0,
                        .length = static_cast<std::uint64_t>(end - begin),
                        .interval = interval,
                        .alignment = static_cast<std::uint64_t>(alignment_),
                        .start = static_cast<std::uint64_t>(start)};
    const auto offset = static_cast<std::uint64_t>(sample - begin);
    const GridRamp::Piece piece = ramp.pieceAt(offset);
    return {piece.valueAt(offset), piece.slope, begin + static_cast<std::int64_t>(piece.end)};
}

FadeEnvelope::Placement FadeEnvelope::at(std::int64_t anySample) const {
    // What an envelope does between aligned samples is its own, so one that starts there starts as if it had
    // run on from the last of them.
    const std::int64_t sample = alignedDown(anySample);

    const auto fadeIn = static_cast<std::int64_t>(plan_.fadeInSamples);
    const bool risen = sample >= fadeIn;
    const bool falling = sample >= fadeOut_;
    const bool over = sample >= length_ && falling;

    Piece first{gridUnity, 0, fadeIn};
    if (!risen)
        first = pieceOf(0, fadeIn, true, sample);
    Piece last{gridUnity, 0, forever};
    if (over)
        last.value = 0;
    else if (fadeOut_ != forever)
        last = pieceOf(fadeOut_, length_, false, std::max(sample, fadeOut_));

    // A slope is right up to its piece's end. An unaligned end is that of a fade, which the envelope passes
    // on its own, up to the next aligned sample: a ramp that has not quite arrived must not hold for long.
    std::int64_t end = over ? forever : alignedUp(last.end);
    if (!risen && (first.end < fadeIn || first.value + first.slope * (fadeIn - sample) != gridUnity))
        end = std::min(end, alignedUp(first.end));
    const std::int64_t holdBegin = std::max(sample, fadeIn);
    end = std::min(end, alignedUp(holdBegin) + longestLength);

    Placement placement{{}, end};
    Aud::Render::EnvelopeParameters& parameters = placement.parameters;
    parameters.elapsed = static_cast<std::uint32_t>(anySample - sample);
    parameters.startUValue = asUValue(falling ? last.value : first.value);
    parameters.levelUValue = 1.0F;
    const std::uint32_t rampLength = asLength(fadeIn - sample);
    const std::uint32_t holdLength = asLength(fadeOut_ - holdBegin);
    const auto inCurve = static_cast<std::uint32_t>(plan_.fadeInCurve);
    const auto outCurve = static_cast<std::uint32_t>(plan_.fadeOutCurve);
    switch (kind_) {
    case EnvelopeKind::rampHoldRamp:
        parameters.type = Aud::Render::eRampHoldRamp;
        parameters.twoRamps = {
            asUValue(first.slope), asUValue(last.slope), rampLength, holdLength, inCurve, outCurve};
        break;
    case EnvelopeKind::holdRamp:
        parameters.type = Aud::Render::eHoldRamp;
        parameters.oneRamp = {asUValue(last.slope), holdLength, outCurve, {}};
        break;
    default:
        parameters.type = Aud::Render::eRampHold;
        parameters.oneRamp = {asUValue(fadeIn != 0 ? first.slope : last.slope), rampLength, inCurve, {}};
        break;
    }
    return placement;
}

std::int64_t FadeEnvelope::fullLevelEnd(std::int64_t sample) const {
    if (kind_ == EnvelopeKind::none)
        return forever;
    // A hold between two fades has the curve of the second.
    const FadeCurve curve = plan_.fadeOutSamples != 0 ? plan_.fadeOutCurve : plan_.fadeInCurve;
    if (rendererGain(curve, 1.0F) != 1.0F ||
        sample < alignedUp(static_cast<std::int64_t>(plan_.fadeInSamples)))
        return sample;
    return std::max(sample, fadeOut_ == forever ? forever : alignedDown(fadeOut_));
}

double FadeEnvelope::uValueAt(std::int64_t sample) const {
    if (sample < static_cast<std::int64_t>(plan_.fadeInSamples))
        return static_cast<double>(sample) / static_cast<double>(plan_.fadeInSamples);
    if (sample < fadeOut_)
        return 1.0;
    return static_cast<double>(std::max(length_ - sample, std::int64_t{0})) /
           static_cast<double>(plan_.fadeOutSamples);
}

double FadeEnvelope::gainAt(std::int64_t sample) const {
    const bool fadingIn = sample < static_cast<std::int64_t>(plan_.fadeInSamples);
    return gainOf(fadingIn ? plan_.fadeInCurve : plan_.fadeOutCurve, uValueAt(sample));
}

} // namespace audlmd
