#include "tools/timeline/OtioPlacement.hpp"

#include "standalone/signal/GainLaws.hpp"
#include "standalone/signal/Speed.hpp"
#include "tools/timeline/DecibelLine.hpp"
#include "tools/timeline/JsonParts.hpp"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <stdexcept>

namespace audlmd::timeline {

Frame Frame::into(const OtioItem& item, const Rational& start) const {
    const Rational end = start + item.range.duration;
    Frame inside(*this);
    inside.scale_ = scale_ / item.sound.speed * Rational(item.sound.reverse ? -1 : 1);
    // The content starts where the item starts; played backwards, the content starts where the item ends.
    inside.origin_ = at(item.sound.reverse ? end : start) - inside.scale_ * item.range.start;
    if (item.trimmed || item.sound.reverse || item.sound.speed != Rational(1)) {
        const auto [first, last] = std::minmax({at(start), at(end)});
        inside.windowBegin_ = std::max(windowBegin_, first);
        inside.windowEnd_ = std::min(windowEnd_, last);
    }
    return inside;
}

namespace {

/// One clip on its way to a strip.
struct ClipPlacement {
    const OtioItem& clip;
    const Frame& around;
    const Frame& inside;
    const Where& where;
    const OtioContext& context;
    /// Output seconds.
    Rational begin;
    Rational end;
    /// Source samples per second of the time around the clip.
    Rational sourceRate;

    std::int64_t samples(const Rational& seconds) const {
        return (seconds * Rational(context.options.sampleRate)).rounded();
    }
};

/// Rounds the two ends on the output, and derives the range from them, so that the strip has exactly as much
/// source as the output needs.
void setRange(const ClipPlacement& placement, TimelineStrip& strip) {
    strip.at = placement.samples(placement.begin);
    strip.length = placement.samples(placement.end) - strip.at;
    const Rational speed = Rational(1) / magnitude(placement.inside.scale());
    const std::int64_t count = (Rational(strip.length) * speed).roundedUp();
    const std::int64_t first =
        placement.samples(placement.inside.contentAt(placement.begin) - placement.clip.mediaStart);
    if (count > farthestPosition || first < -farthestPosition || first > farthestPosition)
        placement.where.fail("plays more samples than any file can have");
    StripSettings& settings = strip.settings;
    settings.reverse = placement.inside.reversed();
    settings.from = settings.reverse ? first - count : first;
    settings.to = settings.from + count;
    settings.speed = speed.value();
}

/// The speed must be known here, see setRange(). Speed 1 takes no converter, whatever the file asks for: the
/// samples then stay as they are.
void setConverter(const ClipPlacement& placement, StripSettings& settings) {
    try {
        requireSpeed(settings.speed);
    } catch (const std::invalid_argument& error) {
        placement.where.fail(error.what());
    }
    settings.converter = placement.clip.sound.converter.value_or(Converter::filtering);
    if (settings.speed == 1.0) {
        settings.converter = Converter::none;
    } else if (settings.converter == Converter::none) {
        placement.where.fail("the converter \"none\" plays at speed 1 only");
    } else if (settings.converter == Converter::filtering && !isFilteringSpeed(settings.speed)) {
        settings.converter = Converter::linear;
        placement.context.note(placement.where, linearInstead);
    }
}

std::string inSeconds(std::int64_t samples, int sampleRate) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << static_cast<double>(samples) / sampleRate << " s";
    return text.str();
}

/// Fades belong to the start and the end of the clip in the time around the clip. Where that time runs
/// backwards, the two change places.
void setFades(const ClipPlacement& placement, const Transitions& transitions, StripSettings& settings) {
    const ItemSound& sound = placement.clip.sound;
    const auto length = [&](const std::optional<Rational>& transition, const std::optional<Rational>& fade) {
        const Rational seconds = transition.value_or(fade.value_or(Rational()));
        return static_cast<std::uint64_t>((seconds * placement.sourceRate).rounded());
    };
    FadePlan& plan = settings.fade;
    plan.fadeInSamples = length(transitions.fadeIn, sound.fadeIn);
    plan.fadeOutSamples = length(transitions.fadeOut, sound.fadeOut);
    plan.fadeInCurve = transitions.fadeIn ? transitions.fadeInCurve : sound.fadeInCurve;
    plan.fadeOutCurve = transitions.fadeOut ? transitions.fadeOutCurve : sound.fadeOutCurve;
    if (placement.around.reversed()) {
        std::swap(plan.fadeInSamples, plan.fadeOutSamples);
        std::swap(plan.fadeInCurve, plan.fadeOutCurve);
    }
    if ((transitions.fadeIn && sound.fadeIn) || (transitions.fadeOut && sound.fadeOut))
        placement.context.note(placement.where, "a transition takes the place of the clip's own fade");

    const auto range = static_cast<std::uint64_t>(settings.to - settings.from);
    const std::uint64_t sum = plan.fadeInSamples + plan.fadeOutSamples;
    // Rounding alone makes up to four samples.
    if (sum > range + 4)
        placement.where.fail(
            "the fades are longer than the clip by " +
            inSeconds(static_cast<std::int64_t>(sum - range), placement.context.options.sampleRate));
    std::uint64_t& longer =
        plan.fadeInSamples > plan.fadeOutSamples ? plan.fadeInSamples : plan.fadeOutSamples;
    // The longer fade loses what rounding has added, because the ear notices that least.
    longer -= sum > range ? sum - range : 0;
}

/// Key times count from where the item starts, not from where a transition lets the clip start. On the
/// automation the positions are source samples of the strip.
void setLevels(const ClipPlacement& placement, const Rational& start, double gainDb, TimelineStrip& strip) {
    const ItemSound& sound = placement.clip.sound;
    strip.gainDb = sound.gainDb + gainDb;
    std::vector<DecibelKey> keys;
    double loudest = silentDecibels;
    for (const TimedDecibels& key : sound.keys) {
        const Rational output = placement.around.at(start + key.time);
        const Rational played = (output - placement.begin) / magnitude(placement.inside.scale());
        keys.push_back({placement.samples(played), key.decibels});
        loudest = std::max(loudest, key.decibels);
    }
    if (placement.around.reversed())
        std::reverse(keys.begin(), keys.end());
    // An automation ends at +10 dB; the fixed gain carries what is above.
    const double above = std::max(0.0, loudest - faderTopDecibels);
    for (DecibelKey& key : keys)
        key.decibels -= above;
    if (!keys.empty())
        strip.settings.automation = AutomationWalk{Automation(nodesAlong(keys))};
    strip.gainDb += above;
    if (strip.gainDb > highestGainDb)
        placement.where.fail("all gains together are more than +60 dB");
}

/// Silence beyond a file is played as asked, so the message is a note and no error. The user may have lost
/// part of a recording.
void noteMissingMaterial(const ClipPlacement& placement, const StripSettings& settings) {
    // A frame's rounding is no fault of the timeline.
    constexpr std::int64_t tolerance = 2;
    const int sampleRate = placement.context.options.sampleRate;
    if (settings.from < -tolerance)
        placement.context.note(placement.where, "reads " + inSeconds(-settings.from, sampleRate) +
                                                    " before the start of its file; silence there");
    if (!placement.clip.mediaDuration)
        return;
    const std::int64_t beyond = settings.to - placement.samples(*placement.clip.mediaDuration);
    if (beyond > tolerance)
        placement.context.note(placement.where, "reads " + inSeconds(beyond, sampleRate) +
                                                    " beyond the end of its file; silence there");
}

/// Leaves the part inside the window, with fades and automation as they are. Returns false where nothing is
/// left.
bool cutToWindow(const ClipPlacement& placement, TimelineStrip& strip) {
    const std::int64_t begin = std::max(strip.at, placement.samples(placement.around.windowBegin()));
    const std::int64_t end =
        std::min(strip.at + strip.length, placement.samples(placement.around.windowEnd()));
    strip.skip = begin - strip.at;
    strip.at = begin;
    strip.length = end - begin;
    return end > begin;
}

} // namespace

std::optional<TimelineStrip> placeClip(const OtioItem& clip, const Rational& start, const Frame& around,
                                       const Transitions& transitions, double gainDb, const Where& where,
                                       const OtioContext& context) {
    // The frame is that of the clip without transitions, which lengthen the clip but do not move the content.
    const Frame inside = around.into(clip, start);
    const auto [begin, end] = std::minmax(
        {around.at(start - transitions.before), around.at(start + clip.range.duration + transitions.after)});
    const Rational rate(context.options.sampleRate);
    const ClipPlacement placement{clip,    around, inside, where,
                                  context, begin,  end,    magnitude(around.scale() / inside.scale()) * rate};
    TimelineStrip strip;
    strip.name = clip.name;
    strip.media = clip.media;
    strip.routing = clip.sound.routing;
    setRange(placement, strip);
    setConverter(placement, strip.settings);
    setFades(placement, transitions, strip.settings);
    setLevels(placement, start, gainDb, strip);
    strip.settings.sampleRate = context.options.sampleRate;
    strip.settings.equaliser = clip.sound.equaliser;
    requireBands(strip.settings.equaliser, strip.settings.sampleRate, where);
    if (!cutToWindow(placement, strip))
        return std::nullopt;
    noteMissingMaterial(placement, strip.settings);
    return strip;
}

} // namespace audlmd::timeline
