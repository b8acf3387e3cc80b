#pragma once

#include "standalone/mix/Timeline.hpp"
#include "tools/timeline/Json.hpp"
#include "tools/timeline/Rational.hpp"
#include "tools/timeline/ReadOptions.hpp"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::timeline {

/// A range of time, in seconds. The end is start + duration, and excluded.
struct Range {
    Rational start;
    Rational duration;
};

/// A level that a file gives in decibels. The time counts from where the item starts, in seconds as heard.
struct TimedDecibels {
    Rational time;
    double decibels = 0.0;
};

/// How an item sounds, from its effects and its metadata.
struct ItemSound {
    /// Of all time warps together: content seconds per second of the item.
    Rational speed{1};
    bool reverse = false;
    /// Why the item is silent. Empty: it sounds. A silent clip keeps its place.
    std::string silence;

    double gainDb = 0.0;
    /// Seconds as heard.
    std::optional<Rational> fadeIn;
    std::optional<Rational> fadeOut;
    FadeCurve fadeInCurve = FadeCurve::linear;
    FadeCurve fadeOutCurve = FadeCurve::linear;
    /// In order of time. Empty: no automation.
    std::vector<TimedDecibels> keys;
    std::vector<EqualiserBand> equaliser;
    std::optional<Converter> converter;
    std::optional<Routing> routing;
};

/// What an item is. A gap lasts but does not sound; a transition lasts no time of its own.
enum class ItemKind { clip, gap, stack, track, transition };

/// A clip, gap, track, stack or transition of an OpenTimelineIO file, with exact times. Filled by
/// parseItem(), which knows nothing of the output; placeClip() turns clips into strips.
struct OtioItem {
    ItemKind kind = ItemKind::gap;
    std::string name;
    /// Why the item is left out. Empty: it is played.
    std::string skipped;
    /// What the item shows of its content, in the content's time: the timecode of a clip's medium, or the
    /// time of a composition from the start of its children.
    Range range;
    /// Whether the file gives the range, so that it trims the children of a composition.
    bool trimmed = false;
    ItemSound sound;

    /// Of clips.
    std::string media;
    /// In the time of the range. Where the medium begins, and how long it is if that is known.
    Rational mediaStart;
    std::optional<Rational> mediaDuration;

    /// Of transitions: seconds before and after the cut.
    Rational inOffset;
    Rational outOffset;

    /// Of tracks one after another, of stacks at the same time.
    std::vector<OtioItem> children;
    /// Names and times in the content's time.
    std::vector<std::pair<std::string, Rational>> markers;
};

/// What every part of the reader has at hand.
struct OtioContext {
    const ReadOptions& options;
    std::vector<TimelineNote>& notes;

    /// Notes something that is not played as written. Use an error instead where the result would be wrong
    /// without anybody seeing why.
    void note(const Where& where, std::string text) const {
        notes.push_back({where.text(), std::move(text)});
    }
};

/// Compositions may hold one another so deeply.
inline constexpr int deepestNesting = 64;

/// Turns the JSON of a stack or track, and of all below, into items. Throws TimelineError. `depth` is 0 for
/// the stack of the whole timeline, and grows by 1 for each level. Items that are not played keep their
/// duration, so that the later ones stay in place.
OtioItem parseItem(const Json& value, const Where& where, int depth, const OtioContext& context);

} // namespace audlmd::timeline
