#include "tools/timeline/OtioItem.hpp"
#include "tools/timeline/OtioMedia.hpp"
#include "tools/timeline/OtioSchema.hpp"
#include "tools/timeline/OtioSound.hpp"

#include <algorithm>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// Where the medium of a clip begins, and what the clip shows of it. Returns the clip's frame rate.
Rational readClipRange(const Json& value, const Where& where, const OtioContext& context, OtioItem& item) {
    const std::optional<OtioRange> available = readMedia(value, where, context, item);
    const std::optional<OtioRange> shown = rangeIn(value, "source_range", where);
    if (!shown && !available)
        where.fail("neither source_range nor available_range says how long the clip is, and its file '" +
                   printable(item.media) + "' was not found");
    item.range = shown ? shown->range : available->range;
    if (available) {
        item.mediaStart = available->range.start;
        item.mediaDuration = available->range.duration;
    }
    return shown ? shown->rate : available->rate;
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
        item.children.push_back(parseItem(child, inside, depth + 1, context));
        item.children.back().name = name;
    }
}

/// Children are read first, because the duration follows from them where the file gives none.
void parseComposition(const Json& value, const Where& where, int depth, const OtioContext& context,
                      OtioItem& item) {
    if (depth > deepestNesting)
        where.fail("stacks and tracks hold one another more than " + std::to_string(deepestNesting) +
                   " levels deep");
    parseChildren(value, where, depth, context, item);
    const std::optional<OtioRange> range = rangeIn(value, "source_range", where);
    item.trimmed = range.has_value();
    item.range = range ? range->range : Range{Rational(), contentDuration(item)};
    readSound(value, range ? range->rate : Rational(24), where, context, item.sound);
}

/// The curve of both sides is kept in fadeInCurve.
void parseTransition(const Json& value, const Where& where, OtioItem& item) {
    item.inOffset = timeIn(value, "in_offset", where, "the in_offset of a transition").seconds;
    item.outOffset = timeIn(value, "out_offset", where, "the out_offset of a transition").seconds;
    item.sound.fadeInCurve = curveIn(value, FadeCurve::power);
}

/// A marker changes nothing of the sound, so a broken one becomes a note.
void parseMarkers(const Json& value, const Where& where, const OtioContext& context, OtioItem& item) {
    const Json* markers = member(value, "markers");
    if (markers == nullptr || !markers->is_array())
        return;
    for (const Json& marker : *markers) {
        const std::string name = textIn(marker, "name");
        try {
            schemaOf(marker, where);
            if (const std::optional<OtioRange> range = rangeIn(marker, "marked_range", where))
                item.markers.emplace_back(name, range->range.start);
        } catch (const TimelineError& error) {
            context.note(where, "the marker '" + printable(name) + "' is left out: " + error.what());
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
        parseTransition(value, where, item);
        break;
    case ItemKind::gap:
        if (const std::optional<OtioRange> range = rangeIn(value, "source_range", where))
            item.range = range->range;
        break;
    case ItemKind::clip: {
        const Rational frameRate = readClipRange(value, where, context, item);
        if (item.skipped.empty())
            readSound(value, frameRate, where, context, item.sound);
        break;
    }
    }
    parseMarkers(value, where, context, item);
}

} // namespace

OtioItem parseItem(const Json& value, const Where& where, int depth, const OtioContext& context) {
    OtioItem item;
    item.kind = kindOf(schemaOf(value, where), where);
    item.name = textIn(value, "name");
    if (const Json* enabled = member(value, "enabled"); enabled != nullptr && *enabled == false)
        item.skipped = "disabled in the timeline, and not played";
    if (item.kind == ItemKind::track && textIn(value, "kind", "Audio") != "Audio") {
        // What a picture shows is nobody's business here, mistakes included.
        item.skipped = "a track of the kind '" + printable(textIn(value, "kind")) + "' is not played";
        return item;
    }
    try {
        parseContent(value, where, depth, context, item);
    } catch (const std::overflow_error& error) {
        where.fail(error.what());
    }
    return item;
}

} // namespace audlmd::timeline
