#pragma once

#include "ole/Aud/EnvelopeParameters.hpp"
#include "ole/Aud/EnvelopeValidation.hpp"
#include "ole/Aud/GainCurves.hpp"

#include <algorithm>
#include <cstdint>

/// The five shapes of a fade. A shape places itself at a step of the fade, gives the gain there, and advances
/// by one step. All arithmetic is in single precision, in the order written.
///
/// A shape is placed afresh in each render call, by one multiplication; while the call runs it adds its step
/// again and again. In single precision the two differ, unless the host keeps u-values and steps on a grid.
namespace Aud::Render::EnvelopeTraits {

/// How a shape goes on: a ramp by `step` or a hold, for `length` samples at least. For whoever renders many
/// samples at a time: the curve is chosen once for all of them.
struct Phase {
    CurveFunction curve;
    float uValue;
    float step;
    bool holds;
    std::uint32_t length;

    static constexpr std::uint32_t forever = 0xFFFFFFFF;
};

/// The u-value after `steps` steps of `step`.
inline float uValueAfter(float start, std::uint32_t steps, float step) {
    return start + static_cast<float>(steps) * step;
}

/// Ramps forever, on the curve that the mode names. Tests neither the type nor the curve of the parameters.
template <GainCurve::eCurveType CurveType>
class SimpleRamp {
public:
    explicit SimpleRamp(const EnvelopeParameters& params)
        : uValue_(uValueAfter(params.startUValue, params.elapsed, params.oneRamp.step)),
          step_(params.oneRamp.step) {}

    [[gnu::always_inline]] float gain() const {
        return GainCurve::Curve<CurveType>::mapUValueToMagnitude(uValue_);
    }
    [[gnu::always_inline]] void advance() { uValue_ += step_; }

    Phase phase() const {
        return {&GainCurve::Curve<CurveType>::mapUValueToMagnitude, uValue_, step_, false, Phase::forever};
    }
    /// Advances by `count` steps, at most the phase's length, to the u-value that they lead to.
    void skip(std::uint32_t, float uValue) { uValue_ = uValue; }

private:
    float uValue_;
    float step_;
};

/// Ramps for a length, then holds the value that the ramp reached. A fade-in.
/// \snippet chain.cpp envelope
class RampHold {
public:
    explicit RampHold(const EnvelopeParameters& params) {
        constexpr int mismatchLine = 615;
        requireType(params, eRampHold, mismatchLine);
        const EnvelopeParameters::OneRamp& ramp = params.oneRamp;
        curve_ = resolveCurve(ramp.curveType);
        const std::uint32_t past = std::min(params.elapsed, ramp.length);
        uValue_ = uValueAfter(params.startUValue, past, ramp.step);
        step_ = ramp.step;
        remaining_ = ramp.length - past;
    }

    [[gnu::always_inline]] float gain() const { return curve_(uValue_); }
    [[gnu::always_inline]] void advance() {
        if (remaining_ == 0)
            return;
        uValue_ += step_;
        --remaining_;
    }

    Phase phase() const {
        return {curve_, uValue_, step_, remaining_ == 0, remaining_ == 0 ? Phase::forever : remaining_};
    }
    void skip(std::uint32_t count, float uValue) {
        uValue_ = uValue;
        remaining_ -= std::min(count, remaining_);
    }

private:
    float uValue_;
    float step_;
    std::uint32_t remaining_;
    CurveFunction curve_;
};

/// Holds for a length, then ramps forever. A fade-out. With `elapsed` equal to the length, the second sample
/// is the first to move.
class HoldRamp {
public:
    explicit HoldRamp(const EnvelopeParameters& params) {
        constexpr int mismatchLine = 642;
        requireType(params, eHoldRamp, mismatchLine);
        const EnvelopeParameters::OneRamp& ramp = params.oneRamp;
        curve_ = resolveCurve(ramp.curveType);
        uValue_ = params.startUValue;
        step_ = ramp.step;
        if (params.elapsed <= ramp.length) {
            remaining_ = ramp.length - params.elapsed;
        } else {
            uValue_ = uValueAfter(uValue_, params.elapsed - ramp.length, step_);
            remaining_ = 0;
        }
    }

    [[gnu::always_inline]] float gain() const { return curve_(uValue_); }
    [[gnu::always_inline]] void advance() {
        if (remaining_ != 0)
            --remaining_;
        else
            uValue_ += step_;
    }

    Phase phase() const {
        return {curve_, uValue_, step_, remaining_ != 0, remaining_ == 0 ? Phase::forever : remaining_};
    }
    void skip(std::uint32_t count, float uValue) {
        uValue_ = uValue;
        remaining_ -= std::min(count, remaining_);
    }

private:
    float uValue_;
    float step_;
    std::uint32_t remaining_;
    CurveFunction curve_;
};

/// Ramps for a length, holds for a length, then ramps forever. A fade-in and a fade-out.
class RampHoldRamp {
public:
    explicit RampHoldRamp(const EnvelopeParameters& params) {
        constexpr int mismatchLine = 669;
        requireType(params, eRampHoldRamp, mismatchLine);
        const EnvelopeParameters::TwoRamps& ramps = params.twoRamps;
        firstCurve_ = resolveCurve(ramps.firstRampCurve);
        lastCurve_ = resolveCurve(ramps.lastRampCurve);
        firstRampStep_ = ramps.firstRampStep;
        lastRampStep_ = ramps.lastRampStep;
        const std::uint32_t past = std::min(params.elapsed, ramps.firstRampLength);
        uValue_ = uValueAfter(params.startUValue, past, firstRampStep_);
        firstRampRemaining_ = ramps.firstRampLength - past;
        const std::uint32_t pastFirstRamp = params.elapsed - past;
        if (pastFirstRamp <= ramps.holdLength) {
            holdRemaining_ = ramps.holdLength - pastFirstRamp;
        } else {
            holdRemaining_ = 0;
            uValue_ = uValueAfter(uValue_, pastFirstRamp - ramps.holdLength, lastRampStep_);
        }
    }

    // The hold deliberately uses the last ramp's curve: the gain jumps where the first ramp ends, if the
    // curves differ.
    [[gnu::always_inline]] float gain() const {
        const CurveFunction curve = firstRampRemaining_ != 0 ? firstCurve_ : lastCurve_;
        return curve(uValue_);
    }
    [[gnu::always_inline]] void advance() {
        if (firstRampRemaining_ != 0) {
            uValue_ += firstRampStep_;
            --firstRampRemaining_;
        } else if (holdRemaining_ != 0) {
            --holdRemaining_;
        } else {
            uValue_ += lastRampStep_;
        }
    }

    Phase phase() const {
        if (firstRampRemaining_ != 0)
            return {firstCurve_, uValue_, firstRampStep_, false, firstRampRemaining_};
        if (holdRemaining_ != 0)
            return {lastCurve_, uValue_, 0.0F, true, holdRemaining_};
        return {lastCurve_, uValue_, lastRampStep_, false, Phase::forever};
    }
    void skip(std::uint32_t count, float uValue) {
        uValue_ = uValue;
        std::uint32_t& remaining = firstRampRemaining_ != 0 ? firstRampRemaining_ : holdRemaining_;
        remaining -= std::min(count, remaining);
    }

private:
    float uValue_;
    float firstRampStep_;
    float lastRampStep_;
    std::uint32_t firstRampRemaining_;
    std::uint32_t holdRemaining_;
    CurveFunction firstCurve_;
    CurveFunction lastCurve_;
};

} // namespace Aud::Render::EnvelopeTraits
