#include "host/timeline/OtioItem.hpp"

#include "host/timeline/OtioSchema.hpp"
#include "host/timeline/OtioSound.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"

#include <algorithm>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// Runs a part of the parser. What it throws makes the item silent, and no more: the rest of the timeline can
/// be played. Returns whether nothing was thrown.
template <class Part>
bool attempt(OtioItem& item, const Part& part) {
    try {
        part();
        return true;
    } catch (const TimelineError& error) {
        item.beSilent(error.sentence(), true);
    } catch (const std::overflow_error& error) {
        item.beSilent(error.what(), true);
    }
    return false;
}

void lackLength(OtioItem& item, const std::string& reason) {
    item.beSilent(reason, true);
    item.silence += "; its length is not known, so it lasts no time, and what follows on its track comes too "
                    "early";
    item.silenceIsFailure = true;
    item.lacksLength = true;
}

/// Where the medium of a clip begins, and what the clip shows of it. Returns the clip's frame rate.
Rational readClipRange(const Json& value, const Reading& reading, OtioItem& item) {
    std::optional<OtioRange> shown;
    std::optional<OtioRange> available;
    const bool isShown = attempt(item, [&] { shown = rangeIn(value, "source_range", reading); });
    attempt(item, [&] { item.sound.relabel = relabelOf(value, reading); });
    attempt(item, [&] { available = readMedia(value, shown, reading, item); });
    if (!isShown || (!shown && !available)) {
        const std::string& problem = reading.media.of(item.media).problem;
        lackLength(item,
                   "neither source_range nor available_range says how long the clip is, and its file '" +
                       words::printable(item.media) +
                       (problem.empty() ? "' was not found" : "' cannot be read: " + problem));
        return 1;
    }
    const OtioRange& range = shown ? *shown : *available;
    item.range = range.range;
    item.pictureFrame = Rational(1) / range.rate;
    item.startsEmpty = range.range.start < Rational();
    if (available) {
        item.mediaStart = range.range.start - differenceOf(range.start, available->start);
        item.mediaDuration = available->range.duration;
    }
    return range.rate;
}

/// Children of a track follow one another, those of a stack start together. A transition overlaps its
/// neighbours and adds nothing.
Rational contentDuration(const OtioItem& item) {
    Rational duration;
    for (const OtioItem& child : item.children) {
        if (child.kind == ItemKind::transition)
            continue;
        duration = item.kind == ItemKind::track ? duration + child.range.duration
                                                : std::max(duration, child.range.duration);
    }
    return duration;
}

/// A child of an item that is not played. Only its length counts.
OtioItem parseUnheard(const Json& value, int depth, const Reading& reading) {
    try {
        return parseItem(value, depth, reading);
    } catch (const TimelineError& error) {
        OtioItem unreadable;
        lackLength(unreadable, error.sentence());
        return unreadable;
    }
}

/// A child without a name gets its number, counted from 1, so that every message names a place.
void parseChildren(const Json& value, int depth, const Reading& reading, OtioItem& item) {
    const Json* children = member(value, "children");
    if (children == nullptr)
        return;
    if (!children->is_array())
        reading.fail("\"children\" is not a list");
    for (const Json& child : *children) {
        const std::size_t number = item.children.size() + 1;
        std::string name = textIn(child, "name");
        if (name.empty())
            name = "#" + std::to_string(number);
        // The rows of the user are the tracks at the top.
        const Reading inside = reading.at(depth == 0 ? Where{name, {}} : Where{reading.where.track, name});
        item.children.push_back(item.silence.empty() ? parseItem(child, depth + 1, inside)
                                                     : parseUnheard(child, depth + 1, inside));
        item.children.back().name = name;
    }
}

/// How an item that is not silent sounds.
void readSoundOf(const Json& value, const Rational& frameRate, const Reading& reading, OtioItem& item) {
    if (item.silence.empty())
        attempt(item, [&] { readSound(value, frameRate, reading, item); });
}

/// Where a track is soloed, those beside it that are not are silent.
void obeySolos(std::vector<OtioItem>& tracks) {
    const auto isHeard = [](const OtioItem& track) { return track.isSolo && track.silence.empty(); };
    if (std::ranges::any_of(tracks, isHeard))
        for (OtioItem& track : tracks)
            if (!track.isSolo)
                track.beSilent("another track is soloed", false);
}

/// Children are read first, because the duration follows from them where the file gives none.
void parseComposition(const Json& value, int depth, const Reading& reading, OtioItem& item) {
    if (depth > deepestNesting)
        reading.fail("stacks and tracks hold one another more than " + std::to_string(deepestNesting) +
                     " levels deep");
    parseChildren(value, depth, reading, item);
    if (item.kind == ItemKind::stack)
        obeySolos(item.children);
    std::optional<OtioRange> range;
    if (!attempt(item, [&] { range = rangeIn(value, "source_range", reading); }))
        lackLength(item, {});
    item.trimmed = range.has_value();
    item.range = range ? range->range : Range{Rational(), contentDuration(item)};
    readSoundOf(value, range ? range->rate : Rational(24), reading, item);
}

/// The curve of both sides is kept in fadeInCurve.
void parseTransition(const Json& value, const Reading& reading, OtioItem& item) {
    item.inOffset = timeIn(value, "in_offset", reading, "the in_offset of a transition").seconds;
    item.outOffset = timeIn(value, "out_offset", reading, "the out_offset of a transition").seconds;
    item.sound.fadeInCurve = curveIn(value, FadeCurve::power);
}

/// A marker changes nothing of the sound, so a broken one becomes a note.
void parseMarkers(const Json& value, const Reading& reading, OtioItem& item) {
    const Json* markers = member(value, "markers");
    if (markers == nullptr)
        return;
    for (const Json& marker : *markers) {
        const std::string name = textIn(marker, "name");
        try {
            schemaOf(marker, reading);
            if (const std::optional<OtioRange> range = rangeIn(marker, "marked_range", reading))
                item.markers.emplace_back(name, range->range.start);
        } catch (const TimelineError& error) {
            item.note("the marker '" + words::printable(name) + "' is left out: " + error.sentence());
        }
    }
}

/// "Filler" and "Sequence" are the old names of Gap and Track.
ItemKind kindOf(const std::string& schema, const Reading& reading) {
    if (schema == "Clip")
        return ItemKind::clip;
    if (schema == "Gap" || schema == "Filler")
        return ItemKind::gap;
    if (schema == "Stack")
        return ItemKind::stack;
    if (schema == "Track" || schema == "Sequence")
        return ItemKind::track;
    if (schema == "Transition")
        return ItemKind::transition;
    if (schema.empty())
        reading.fail("there is no OTIO_SCHEMA here");
    reading.fail("schema " + words::printable(schema) + " is not known in this place");
}

/// Sums of times can overflow anywhere below, see parseItem().
void parseContent(const Json& value, int depth, const Reading& reading, OtioItem& item) {
    switch (item.kind) {
    case ItemKind::stack:
    case ItemKind::track:
        parseComposition(value, depth, reading, item);
        break;
    case ItemKind::transition:
        attempt(item, [&] { parseTransition(value, reading, item); });
        break;
    case ItemKind::gap:
        if (!attempt(item, [&] {
                if (const std::optional<OtioRange> range = rangeIn(value, "source_range", reading))
                    item.range = range->range;
            }))
            lackLength(item, {});
        break;
    case ItemKind::clip:
        readSoundOf(value, readClipRange(value, reading, item), reading, item);
        break;
    }
    parseMarkers(value, reading, item);
}

/// Whether a member has the type that it must have, if it is there.
void requireType(const Json& value, const std::string& key, Json::value_t type, const char* what,
                 const Reading& reading) {
    const Json* found = member(value, key);
    if (found != nullptr && found->type() != type)
        reading.fail("\"" + key + "\" is not " + what);
}

/// Exporters keep the switch in a track's metadata, under a namespace of theirs.
bool isSoloed(const Json& track) {
    const Json* metadata = member(track, "metadata");
    return metadata != nullptr && metadata->is_object() &&
           std::ranges::any_of(*metadata, [](const Json& block) {
               const Json* solo = member(block, "SoloOn");
               return solo != nullptr && *solo == true;
           });
}

/// Whether the author has switched the item off, or the item is no sound.
void readSwitches(const Json& value, const Reading& reading, OtioItem& item) {
    requireType(value, "enabled", Json::value_t::boolean, "true or false", reading);
    requireType(value, "effects", Json::value_t::array, "a list", reading);
    requireType(value, "markers", Json::value_t::array, "a list", reading);
    if (const Json* enabled = member(value, "enabled"); enabled != nullptr && *enabled == false)
        item.beSilent("disabled in the timeline", false);
    const std::string kind = textIn(value, "kind", "Audio");
    item.isSolo = item.kind == ItemKind::track && isSoloed(value);
    if (item.kind != ItemKind::track || words::lowered(kind) == "audio")
        return;
    if (words::lowered(kind) == "video")
        item.beSilent("a track of the kind '" + words::printable(kind) + "'", false);
    else
        item.beSilent("a track of the kind '" + words::printable(kind) + "', which is not known", true);
}

} // namespace

OtioItem parseItem(const Json& value, int depth, const Reading& reading) {
    OtioItem item;
    item.kind = kindOf(schemaOf(value, reading), reading);
    item.name = textIn(value, "name");
    readSwitches(value, reading, item);
    try {
        parseContent(value, depth, reading, item);
    } catch (const std::overflow_error& error) {
        reading.fail(error.what());
    }
    return item;
}

} // namespace audlmd::timeline
