#include "host/timeline/OtioPlacement.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/signal/Speed.hpp"
#include "host/timeline/DecibelLine.hpp"
#include "host/timeline/StripCheck.hpp"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace audlmd::timeline {

std::int64_t samplesAt(const Rational& seconds, int sampleRate) {
    const std::int64_t samples = (seconds * Rational(sampleRate)).rounded();
    if (samples < -farthestPosition || samples > farthestPosition)
        throw std::overflow_error("its times are beyond 2^60 samples");
    return samples;
}

TimeMap TimeMap::into(const OtioItem& item, const Rational& start) const {
    const Rational end = start + item.range.duration;
    TimeMap inside(*this);
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

std::pair<Rational, Rational> Surroundings::outputOf(const OtioItem& item) const {
    return std::minmax(
        {time.at(start - transitions.before), time.at(start + item.range.duration + transitions.after)});
}

namespace {

/// One clip on its way to a strip.
struct ClipPlacement {
    const OtioItem& clip;
    const Surroundings& around;
    const TimeMap& inside;
    const Reading& reading;
    /// Output seconds.
    Rational begin;
    Rational end;
    /// Source samples per second of the time around the clip.
    Rational sourceRate;

    std::int64_t samples(const Rational& seconds) const {
        return samplesAt(seconds, reading.timeline.sampleRate);
    }
    void note(std::string text, bool silences = false) const {
        reading.note(std::move(text), samples(std::max(begin, around.time.windowBegin())), silences);
    }
};

/// Rounds the two ends on the output, and derives the range from them, so that the strip has exactly as much
/// source as the output needs.
void setRange(const ClipPlacement& placement, TimelineStrip& strip) {
    strip.at = placement.samples(placement.begin);
    strip.length = placement.samples(placement.end) - strip.at;
    const Rational speed = Rational(1) / magnitude(placement.inside.scale());
    const std::int64_t count = std::min((Rational(strip.length) * speed).roundedUp(), longestRange + 1);
    const std::int64_t first =
        placement.samples(placement.inside.contentAt(placement.begin) - placement.clip.mediaStart);
    StripSettings& settings = strip.settings;
    settings.reverse = placement.inside.reversed();
    settings.from = settings.reverse ? first - count : first;
    settings.to = settings.from + count;
    if (count > longestRange)
        placement.reading.fail("plays more samples than any file can have");
    settings.speed = speed.value();
}

/// The speed must be known here, see setRange(), and the equaliser. Speed 1 takes no converter, whatever the
/// file asks for: the samples then stay as they are.
void setConverter(const ClipPlacement& placement, StripSettings& settings) {
    try {
        requireSpeed(settings.speed);
    } catch (const std::invalid_argument& error) {
        placement.reading.fail(error.what());
    }
    settings.converter = placement.clip.sound.converter.value_or(Converter::best);
    if (settings.speed == 1.0) {
        settings.converter = Converter::none;
    } else if (settings.converter == Converter::none) {
        placement.reading.fail("the converter \"none\" plays at speed 1 only");
    } else if (const std::string note = settleConverter(settings); !note.empty()) {
        placement.note(note);
    }
}

/// Shortens fades that overlap.
void fitFades(const ClipPlacement& placement, std::uint64_t range, FadePlan& plan) {
    const std::uint64_t sum = plan.fadeInSamples + plan.fadeOutSamples;
    if (sum <= range)
        return;
    // Rounding alone makes up to four samples. The longer fade loses them, because the ear notices that
    // least.
    if (sum <= range + 4) {
        std::uint64_t& longer =
            plan.fadeInSamples > plan.fadeOutSamples ? plan.fadeInSamples : plan.fadeOutSamples;
        longer -= std::min(longer, sum - range);
        return;
    }
    placement.note(
        "the fades are longer than the clip by " +
            inSeconds(static_cast<std::int64_t>(sum - range), placement.reading.timeline.sampleRate) +
            ", and shortened",
        true);
    const double share = static_cast<double>(range) / static_cast<double>(sum);
    for (std::uint64_t* fade : {&plan.fadeInSamples, &plan.fadeOutSamples})
        *fade = static_cast<std::uint64_t>(static_cast<double>(*fade) * share);
}

/// Fades belong to the start and the end of the clip in the time around the clip. Where that time runs
/// backwards, the two change places.
void setFades(const ClipPlacement& placement, StripSettings& settings) {
    const Transitions& transitions = placement.around.transitions;
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
    if (placement.around.time.reversed()) {
        std::swap(plan.fadeInSamples, plan.fadeOutSamples);
        std::swap(plan.fadeInCurve, plan.fadeOutCurve);
    }
    if ((transitions.fadeIn && sound.fadeIn) || (transitions.fadeOut && sound.fadeOut))
        placement.note("a transition takes the place of the clip's own fade");
    fitFades(placement, static_cast<std::uint64_t>(settings.to - settings.from), plan);
}

/// Key times count from where the item starts, not from where a transition lets the clip start. On the
/// automation the positions are source samples of the strip.
void setLevels(const ClipPlacement& placement, TimelineStrip& strip) {
    const ItemSound& sound = placement.clip.sound;
    strip.gainDb = sound.gainDb + placement.around.gainDb;
    std::vector<DecibelKey> keys;
    double loudest = silentDecibels;
    for (const TimedDecibels& key : sound.keys) {
        const Rational output = placement.around.time.at(placement.around.start + key.time);
        const Rational played = (output - placement.begin) / magnitude(placement.inside.scale());
        keys.push_back({placement.samples(played), key.decibels});
        loudest = std::max(loudest, key.decibels);
    }
    if (placement.around.time.reversed())
        std::reverse(keys.begin(), keys.end());
    // An automation ends at +10 dB; the fixed gain carries what is above.
    const double above = std::max(0.0, loudest - faderTopDecibels);
    for (DecibelKey& key : keys)
        key.decibels -= above;
    if (!keys.empty())
        strip.settings.automation = AutomationWalk{Automation(nodesAlong(keys))};
    strip.gainDb += above;
    if (strip.gainDb > highestGainDb)
        placement.reading.fail("all gains together are more than +60 dB");
}

/// What the file is known to have counts; else what the timeline says of it.
void noteMissingMedia(const ClipPlacement& placement, const TimelineStrip& strip) {
    const OtioItem& clip = placement.clip;
    std::optional<std::int64_t> length = placement.reading.lengthOf(clip.media, clip.sound.relabel);
    if (!length && clip.mediaDuration)
        length = placement.samples(*clip.mediaDuration);
    noteSilentEnds(strip, length, placement.samples(clip.pictureFrame), clip.startsEmpty, placement.reading);
    noteOutsideAutomation(strip, placement.reading);
}

/// Leaves the part inside the window, with fades and automation as they are. Returns false where nothing is
/// left.
bool cutToWindow(const ClipPlacement& placement, TimelineStrip& strip) {
    const TimeMap& around = placement.around.time;
    const TimelineSample begin = placement.samples(std::max(placement.begin, around.windowBegin()));
    const TimelineSample end = placement.samples(std::min(placement.end, around.windowEnd()));
    strip.skip = OutputSample() + (begin - strip.at);
    strip.at = begin;
    strip.length = end - begin;
    return end > begin;
}

} // namespace

std::optional<TimelineStrip> placeClip(const OtioItem& clip, const Surroundings& around,
                                       const Reading& reading) {
    // Of the clip without transitions, which lengthen the clip but do not move the content.
    const TimeMap inside = around.time.into(clip, around.start);
    const auto [begin, end] = around.outputOf(clip);
    const Rational rate(reading.timeline.sampleRate);
    const ClipPlacement placement{
        clip, around, inside, reading, begin, end, magnitude(around.time.scale() / inside.scale()) * rate};
    TimelineStrip strip;
    strip.name = clip.name;
    strip.media = clip.media;
    strip.routing = clip.sound.routing;
    strip.pan = clip.sound.pan;
    strip.relabel = clip.sound.relabel;
    setRange(placement, strip);
    strip.settings.sampleRate = reading.timeline.sampleRate;
    strip.settings.equaliser = clip.sound.equaliser;
    requireBands(strip.settings.equaliser, reading);
    setConverter(placement, strip.settings);
    setFades(placement, strip.settings);
    setLevels(placement, strip);
    if (!cutToWindow(placement, strip))
        return std::nullopt;
    noteMissingMedia(placement, strip);
    return strip;
}

TimelineStrip silentClip(const OtioItem& clip, const Surroundings& around, int sampleRate) {
    const TimeMap& time = around.time;
    const auto [begin, end] =
        std::minmax({time.at(around.start), time.at(around.start + clip.range.duration)});
    TimelineStrip strip;
    strip.name = clip.name;
    strip.media = clip.media;
    strip.at = samplesAt(std::max(begin, time.windowBegin()), sampleRate);
    strip.length =
        std::max<std::int64_t>(samplesAt(std::min(end, time.windowEnd()), sampleRate) - strip.at, 0);
    strip.settings.sampleRate = sampleRate;
    strip.settings.from = samplesAt(clip.range.start - clip.mediaStart, sampleRate);
    // At normal speed, until the effects are read.
    strip.settings.to = strip.settings.from + std::int64_t{strip.length};
    return strip;
}

} // namespace audlmd::timeline
