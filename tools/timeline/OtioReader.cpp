#include "tools/timeline/OtioPlacement.hpp"
#include "tools/timeline/OtioSchema.hpp"
#include "tools/timeline/Rational.hpp"
#include "tools/timeline/TimelineFiles.hpp"

#include <algorithm>
#include <stdexcept>

namespace audlmd::timeline {
namespace {

/// Walks the items and fills the rows of a timeline. Goes from the outside to the inside and hands each item
/// the frame of the time around it. A row is a child of the outermost stack; what is nested below sounds in
/// that row.
class Walk {
public:
    Walk(Timeline& timeline, const OtioContext& context) : timeline_(timeline), context_(context) {}

    /// Strips of a row are sorted last, because a composition that plays backwards places them from the end.
    void placeAll(const OtioItem& root) {
        const Frame whole;
        const Frame inside = whole.into(root, Rational());
        addMarkers(root, inside);
        noteUnplayed(root, {});
        for (std::size_t i = 0; i < root.children.size(); ++i) {
            const OtioItem& child = root.children[i];
            if (child.kind == ItemKind::transition)
                requireNeighbours(root, i, {{}, child.name});
            if (child.skipped.empty())
                timeline_.tracks.push_back({child.name, {}});
            place(child, Rational(), inside, {}, root.sound.gainDb, {child.name, {}});
        }
        for (TimelineTrack& track : timeline_.tracks)
            std::stable_sort(track.strips.begin(), track.strips.end(),
                             [](const TimelineStrip& a, const TimelineStrip& b) { return a.at < b.at; });
        setLength(root);
    }

private:
    std::int64_t samples(const Rational& seconds) const {
        return (seconds * Rational(context_.options.sampleRate)).rounded();
    }

    /// Overflows are caught at each item, so that the message names the innermost place.
    void place(const OtioItem& item, const Rational& start, const Frame& around,
               const Transitions& transitions, double gainDb, const Where& where) {
        const std::string& reason = item.skipped.empty() ? item.sound.silence : item.skipped;
        if (!reason.empty()) {
            context_.note(where, item.skipped.empty() ? "silent: " + reason : reason);
            return;
        }
        try {
            const Frame inside = around.into(item, start);
            addMarkers(item, inside);
            if (item.kind == ItemKind::clip) {
                if (auto strip = placeClip(item, start, around, transitions, gainDb, where, context_))
                    timeline_.tracks.back().strips.push_back(std::move(*strip));
            } else if (!item.children.empty()) {
                noteUnplayed(item, where);
                placeChildren(item, inside, gainDb + item.sound.gainDb, where);
            }
        } catch (const std::overflow_error& error) {
            where.fail(error.what());
        }
    }

    /// In a track each child starts where the one before ends; in a stack all start at 0.
    void placeChildren(const OtioItem& parent, const Frame& inside, double gainDb, const Where& where) {
        Rational time;
        for (std::size_t i = 0; i < parent.children.size(); ++i) {
            const OtioItem& child = parent.children[i];
            const Where here{where.track, child.name};
            if (child.kind == ItemKind::transition) {
                requireNeighbours(parent, i, here);
                continue;
            }
            const bool inTrack = parent.kind == ItemKind::track;
            place(child, inTrack ? time : Rational(), inside,
                  inTrack ? transitionsOf(parent, i) : Transitions{}, gainDb, here);
            time = time + child.range.duration;
        }
    }

    /// A transition lengthens the clips beside the cut, and a nested composition has no material beyond its
    /// ends.
    static void requireNeighbours(const OtioItem& parent, std::size_t i, const Where& where) {
        if (parent.kind == ItemKind::stack)
            where.fail("a transition must stand in a track");
        for (const std::size_t neighbour : {i - 1, i + 1}) {
            // Before the first child the index wraps around.
            if (neighbour >= parent.children.size())
                continue;
            const ItemKind kind = parent.children[neighbour].kind;
            if (kind == ItemKind::transition)
                where.fail("two transitions follow one another");
            if (kind == ItemKind::stack || kind == ItemKind::track)
                where.fail("a transition beside a nested stack or track cannot be played; put it beside the "
                           "clips inside");
        }
    }

    /// The clip after a cut starts earlier, the clip before a cut ends later; the fade lasts as long as both
    /// together.
    static Transitions transitionsOf(const OtioItem& track, std::size_t i) {
        Transitions found;
        const auto at = [&](std::size_t index) {
            const bool is =
                index < track.children.size() && track.children[index].kind == ItemKind::transition;
            return is ? &track.children[index] : nullptr;
        };
        if (const OtioItem* transition = at(i - 1)) {
            found.before = transition->inOffset;
            found.fadeIn = transition->inOffset + transition->outOffset;
            found.fadeInCurve = transition->sound.fadeInCurve;
        }
        if (const OtioItem* transition = at(i + 1)) {
            found.after = transition->outOffset;
            found.fadeOut = transition->inOffset + transition->outOffset;
            found.fadeOutCurve = transition->sound.fadeInCurve;
        }
        return found;
    }

    void addMarkers(const OtioItem& item, const Frame& inside) {
        for (const auto& [name, time] : item.markers) {
            const Rational output = inside.at(time);
            if (output >= inside.windowBegin() && output <= inside.windowEnd())
                timeline_.markers.push_back({name, samples(output)});
        }
    }

    /// A composition has no strip of its own that could carry a fade or an equaliser.
    void noteUnplayed(const OtioItem& item, const Where& where) const {
        const ItemSound& sound = item.sound;
        if (sound.fadeIn || sound.fadeOut || !sound.keys.empty() || !sound.equaliser.empty() ||
            sound.converter || sound.routing)
            context_.note(where, "of a track or stack only gain and speed are played; put fades, automation, "
                                 "equaliser, converter and routing on its clips");
    }

    /// A trimmed stack lasts as long as its range; any other lasts until the last strip, which a transition
    /// may have lengthened.
    void setLength(const OtioItem& root) {
        timeline_.length = samples(root.range.duration);
        if (root.trimmed)
            return;
        for (const TimelineTrack& track : timeline_.tracks)
            for (const TimelineStrip& strip : track.strips)
                timeline_.length = std::max(timeline_.length, strip.at + strip.length);
    }

    Timeline& timeline_;
    const OtioContext& context_;
};

} // namespace

Timeline readOtio(const Json& root, const ReadOptions& options) {
    const Where here;
    const std::string schema = schemaOf(root, here);
    if (schema.empty())
        throw TimelineError("this is not an OpenTimelineIO file: there is no OTIO_SCHEMA");
    if (schema != "Timeline")
        throw TimelineError("the file holds a " + printable(schema) + ", not a Timeline");
    Timeline timeline;
    timeline.name = textIn(root, "name");
    timeline.sampleRate = options.sampleRate;
    timeline.channels = options.channels;
    if (member(root, "global_start_time") != nullptr)
        timeline.timeReference = (timeIn(root, "global_start_time", here, "global_start_time").seconds *
                                  Rational(options.sampleRate))
                                     .rounded();
    const Json* tracks = member(root, "tracks");
    if (tracks == nullptr || schemaOf(*tracks, here) != "Stack")
        throw TimelineError("the Timeline has no Stack \"tracks\"");
    const OtioContext context{options, timeline.notes};
    const OtioItem stack = parseItem(*tracks, here, 0, context);
    try {
        Walk(timeline, context).placeAll(stack);
    } catch (const std::overflow_error& error) {
        throw TimelineError(error.what());
    }
    return timeline;
}

/// The content decides, because the extension of a file says nothing certain.
Timeline readTimeline(std::string_view text, const ReadOptions& options) {
    const Json root = parseJson(text);
    if (member(root, "OTIO_SCHEMA") != nullptr)
        return readOtio(root, options);
    if (member(root, "audlmd") != nullptr)
        return readJson(root, options);
    throw TimelineError("this is no timeline: there is neither an OTIO_SCHEMA nor the key \"audlmd\"");
}

} // namespace audlmd::timeline
