#pragma once

#include "host/timeline/OtioItem.hpp"

#include <optional>
#include <utility>

namespace audlmd::timeline {

/// How the time inside an item becomes output time: straight, and exact. A negative scale plays backwards.
/// output = origin + scale x content. Maps are nested from the whole timeline down to the content of a clip;
/// fractions keep times exact at any depth.
class TimeMap {
public:
    /// Of the whole timeline: output time is the time inside, from 0 on.
    TimeMap() = default;

    /// The map of the content of an item that starts at `start` of the time inside. The item's range and
    /// speed count. Where the item trims its content, nothing outside of it sounds.
    TimeMap into(const OtioItem& item, const Rational& start) const;

    /// Of the content, in output seconds.
    Rational at(const Rational& content) const { return origin_ + scale_ * content; }
    /// The content's time at an output time.
    Rational contentAt(const Rational& output) const { return (output - origin_) / scale_; }

    /// Output seconds per content second: the inverse of the speed, negative where time runs backwards.
    const Rational& scale() const { return scale_; }
    bool reversed() const { return scale_ < Rational(); }
    /// What sounds, in output seconds. A trimmed composition cuts its children here.
    const Rational& windowBegin() const { return windowBegin_; }
    const Rational& windowEnd() const { return windowEnd_; }

private:
    Rational origin_;
    Rational scale_{1};
    Rational windowBegin_;
    /// Later than any sample.
    Rational windowEnd_{farthestPosition};
};

/// What transitions make of an item's ends, in seconds of the time around the item. The overlap makes a
/// crossfade of two clips, each of which fades over the whole transition.
struct Transitions {
    /// The item starts so much earlier and ends so much later.
    Rational before;
    Rational after;
    /// Set where there is a transition: its whole length, and its curve.
    std::optional<Rational> fadeIn;
    std::optional<Rational> fadeOut;
    FadeCurve fadeInCurve = FadeCurve::power;
    FadeCurve fadeOutCurve = FadeCurve::power;
};

/// Where an item stands, and what its surroundings make of it.
struct Surroundings {
    /// The time around the item.
    TimeMap time;
    /// Where the item starts in that time.
    Rational start;
    Transitions transitions = {};
    /// Of all compositions around the item.
    double gainDb = 0.0;

    /// From when to when the item sounds, in output seconds, with its transitions and beyond the window.
    std::pair<Rational, Rational> outputOf(const OtioItem& item) const;
};

/// The nearest sample. Throws std::overflow_error beyond farthestPosition.
std::int64_t samplesAt(const Rational& seconds, int sampleRate);

/// Where and how a clip sounds. Nothing where it lies outside of the window. Throws TimelineError for speeds,
/// gains and equalisers that a strip cannot have, and std::overflow_error. The times of a clip are rounded to
/// samples here, and only here: neighbours whose ends meet exactly round to the same sample.
std::optional<TimelineStrip> placeClip(const OtioItem& clip, const Surroundings& around,
                                       const Reading& reading);

/// Where a clip lies that is silent, and where its media begin; no speed, fades or levels.
TimelineStrip silentClip(const OtioItem& clip, const Surroundings& around, int sampleRate);

} // namespace audlmd::timeline
