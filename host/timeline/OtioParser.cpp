#include "host/timeline/OtioItem.hpp"
#include "host/timeline/OtioMedia.hpp"
#include "host/timeline/OtioSchema.hpp"
#include "host/timeline/OtioSound.hpp"

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
Rational readClipRange(const Json& value, const Where& where, const OtioContext& context, OtioItem& item) {
    std::optional<OtioRange> shown;
    std::optional<OtioRange> available;
    const bool isShown = attempt(item, [&] { shown = rangeIn(value, "source_range", where); });
    attempt(item, [&] { available = readMedia(value, shown, where, context, item); });
    if (!isShown || (!shown && !available)) {
        const std::string& problem = context.media.of(item.media).problem;
        lackLength(item,
                   "neither source_range nor available_range says how long the clip is, and its file '" +
                       printable(item.media) +
                       (problem.empty() ? "' was not found" : "' cannot be read: " + problem));
        return 1;
    }
    const OtioRange& range = shown ? *shown : *available;
    item.range = range.range;
    item.frame = Rational(1) / range.rate;
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
OtioItem parseUnheard(const Json& value, const Where& where, int depth, const OtioContext& context) {
    try {
        return parseItem(value, where, depth, context);
    } catch (const TimelineError& error) {
        OtioItem unreadable;
        lackLength(unreadable, error.sentence());
        return unreadable;
    }
}

/// A child without a name gets its number, counted from 1, so that every message names a place.
void parseChildren(const Json& value, const Where& where, int depth, const OtioContext& context,
                   OtioItem& item) {
    const Json* children = member(value, "children");
    if (children == nullptr)
        return;
    if (!children->is_array())
        where.fail("\"children\" is not a list");
    for (const Json& child : *children) {
        const std::size_t number = item.children.size() + 1;
        std::string name = textIn(child, "name");
        if (name.empty())
            name = "#" + std::to_string(number);
        // The rows of the user are the tracks at the top.
        const Where inside = depth == 0 ? Where{name, {}} : Where{where.track, name};
        item.children.push_back(item.silence.empty() ? parseItem(child, inside, depth + 1, context)
                                                     : parseUnheard(child, inside, depth + 1, context));
        item.children.back().name = name;
    }
}

/// How an item that is not silent sounds.
void readSoundOf(const Json& value, const Rational& frameRate, const Where& where, const OtioContext& context,
                 OtioItem& item) {
    if (item.silence.empty())
        attempt(item, [&] { readSound(value, frameRate, where, context, item); });
}

/// Children are read first, because the duration follows from them where the file gives none.
void parseComposition(const Json& value, const Where& where, int depth, const OtioContext& context,
                      OtioItem& item) {
    if (depth > deepestNesting)
        where.fail("stacks and tracks hold one another more than " + std::to_string(deepestNesting) +
                   " levels deep");
    parseChildren(value, where, depth, context, item);
    std::optional<OtioRange> range;
    if (!attempt(item, [&] { range = rangeIn(value, "source_range", where); }))
        lackLength(item, {});
    item.trimmed = range.has_value();
    item.range = range ? range->range : Range{Rational(), contentDuration(item)};
    readSoundOf(value, range ? range->rate : Rational(24), where, context, item);
}

/// The curve of both sides is kept in fadeInCurve.
void parseTransition(const Json& value, const Where& where, OtioItem& item) {
    item.inOffset = timeIn(value, "in_offset", where, "the in_offset of a transition").seconds;
    item.outOffset = timeIn(value, "out_offset", where, "the out_offset of a transition").seconds;
    item.sound.fadeInCurve = curveIn(value, FadeCurve::power);
}

/// A marker changes nothing of the sound, so a broken one becomes a note.
void parseMarkers(const Json& value, const Where& where, OtioItem& item) {
    const Json* markers = member(value, "markers");
    if (markers == nullptr)
        return;
    for (const Json& marker : *markers) {
        const std::string name = textIn(marker, "name");
        try {
            schemaOf(marker, where);
            if (const std::optional<OtioRange> range = rangeIn(marker, "marked_range", where))
                item.markers.emplace_back(name, range->range.start);
        } catch (const TimelineError& error) {
            item.note("the marker '" + printable(name) + "' is left out: " + error.sentence());
        }
    }
}

/// "Filler" and "Sequence" are the old names of Gap and Track.
ItemKind kindOf(const std::string& schema, const Where& where) {
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
        where.fail("there is no OTIO_SCHEMA here");
    where.fail("schema " + printable(schema) + " is not known in this place");
}

/// Sums of times can overflow anywhere below, see parseItem().
void parseContent(const Json& value, const Where& where, int depth, const OtioContext& context,
                  OtioItem& item) {
    switch (item.kind) {
    case ItemKind::stack:
    case ItemKind::track:
        parseComposition(value, where, depth, context, item);
        break;
    case ItemKind::transition:
        attempt(item, [&] { parseTransition(value, where, item); });
        break;
    case ItemKind::gap:
        if (!attempt(item, [&] {
                if (const std::optional<OtioRange> range = rangeIn(value, "source_range", where))
                    item.range = range->range;
            }))
            lackLength(item, {});
        break;
    case ItemKind::clip:
        readSoundOf(value, readClipRange(value, where, context, item), where, context, item);
        break;
    }
    parseMarkers(value, where, item);
}

/// Whether a member has the type that it must have, if it is there.
void requireType(const Json& value, const std::string& key, Json::value_t type, const char* what,
                 const Where& where) {
    const Json* found = member(value, key);
    if (found != nullptr && found->type() != type)
        where.fail("\"" + key + "\" is not " + what);
}

/// Whether the author has switched the item off, or the item is no sound.
void readSwitches(const Json& value, const Where& where, OtioItem& item) {
    requireType(value, "enabled", Json::value_t::boolean, "true or false", where);
    requireType(value, "effects", Json::value_t::array, "a list", where);
    requireType(value, "markers", Json::value_t::array, "a list", where);
    if (const Json* enabled = member(value, "enabled"); enabled != nullptr && *enabled == false)
        item.beSilent("disabled in the timeline", false);
    const std::string kind = textIn(value, "kind", "Audio");
    if (item.kind != ItemKind::track || lowered(kind) == "audio")
        return;
    if (lowered(kind) == "video")
        item.beSilent("a track of the kind '" + printable(kind) + "'", false);
    else
        item.beSilent("a track of the kind '" + printable(kind) + "', which is not known", true);
}

} // namespace

OtioItem parseItem(const Json& value, const Where& where, int depth, const OtioContext& context) {
    OtioItem item;
    item.kind = kindOf(schemaOf(value, where), where);
    item.name = textIn(value, "name");
    readSwitches(value, where, item);
    try {
        parseContent(value, where, depth, context, item);
    } catch (const std::overflow_error& error) {
        where.fail(error.what());
    }
    return item;
}

} // namespace audlmd::timeline
