#pragma once

#include "host/mix/Timeline.hpp"
#include "host/timeline/Json.hpp"
#include "host/timeline/Rational.hpp"
#include "host/timeline/Reading.hpp"

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
    /// See TimelineStrip.
    double pan = 0.0;
    Relabel relabel;
};

/// A note on an item, until it is known where the item lies.
struct ItemNote {
    std::string text;
    /// See TimelineNote.
    bool silences = false;
};

/// What an item is. A gap lasts but does not sound; a transition lasts no time of its own.
enum class ItemKind { clip, gap, stack, track, transition };

/// A clip, gap, track, stack or transition of an OpenTimelineIO file, with exact times. Filled by
/// parseItem(), which knows nothing of the output; placeClip() turns clips into strips.
struct OtioItem {
    ItemKind kind = ItemKind::gap;
    std::string name;
    /// Why the item and all inside it are silent. Empty: it sounds. A silent item keeps its place.
    std::string silence;
    /// Whether the file meant the silent item to be heard.
    bool silenceIsFailure = false;
    /// Of tracks: whether an exporter says that it is heard alone, with others of this kind.
    bool isSolo = false;
    /// Whether the silent item lasts no time because its length is not known, so that what follows comes
    /// too early.
    bool lacksLength = false;
    std::vector<ItemNote> notes;
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
    /// One frame of a picture, in seconds: what exporters round times to.
    Rational pictureFrame;
    /// Whether the range begins before time 0, which is empty time.
    bool startsEmpty = false;

    /// Of transitions: seconds before and after the cut.
    Rational inOffset;
    Rational outOffset;

    /// Of tracks one after another, of stacks at the same time.
    std::vector<OtioItem> children;
    /// Names and times in the content's time.
    std::vector<std::pair<std::string, Rational>> markers;

    /// Notes something that is not played as written.
    void note(std::string text, bool silences = false) { notes.push_back({std::move(text), silences}); }
    /// The first reason counts.
    void beSilent(const std::string& reason, bool isFailure) {
        if (!silence.empty())
            return;
        silence = reason;
        silenceIsFailure = isFailure;
    }
};

/// Compositions may hold one another so deeply.
inline constexpr int deepestNesting = 64;

/// Turns the JSON of a stack or track, and of all below, into items. `depth` is 0 for the stack of the whole
/// timeline, and grows by 1 for each level.
///
/// Items that cannot be played are silent and keep their duration, so that the later ones stay in place. A
/// clip whose length cannot be known lasts no time. Throws TimelineError where the structure of the file is
/// wrong: schemas that are not known, members of a wrong type. Inside items that are not played, as a video
/// track, such a child lasts no time. Adds nothing to the timeline.
OtioItem parseItem(const Json& value, int depth, const Reading& reading);

} // namespace audlmd::timeline
