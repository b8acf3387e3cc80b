#include "host/timeline/OtioPlacement.hpp"
#include "host/timeline/OtioSchema.hpp"
#include "host/timeline/Rational.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

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
        tell(root, std::nullopt, {});
        if (!root.silence.empty())
            note({}, std::nullopt, "silent: " + root.silence, root.silenceIsFailure);
        else
            placeRows(root, inside);
        setLength(root);
    }

private:
    std::int64_t samples(const Rational& seconds) const { return samplesAt(seconds, timeline_.sampleRate); }

    void note(const Where& where, std::optional<std::int64_t> at, std::string text, bool silences) {
        timeline_.notes.push_back({where.text(), std::move(text), at, silences});
    }

    /// What the parser has noted on an item. Equal notes are told once, with their number.
    void tell(const OtioItem& item, std::optional<std::int64_t> at, const Where& where) {
        std::map<std::string_view, std::size_t> counts;
        for (const ItemNote& noted : item.notes)
            ++counts[noted.text];
        for (const ItemNote& noted : item.notes)
            if (const std::size_t count = std::exchange(counts[noted.text], 0); count != 0)
                note(where, at, noted.text + (count == 1 ? "" : " (" + std::to_string(count) + " times)"),
                     noted.silences);
    }

    /// Inside an item that is not played, only what moves others is of interest.
    void tellLengths(const OtioItem& item, std::optional<std::int64_t> at, const Where& where) {
        for (const OtioItem& child : item.children) {
            const Where here{where.track, child.name};
            if (child.lacksLength)
                note(here, at, "silent: " + child.silence, true);
            tellLengths(child, at, here);
        }
    }

    void placeRows(const OtioItem& root, const Frame& inside) {
        addMarkers(root, inside);
        noteUnplayed(root, std::nullopt, {});
        for (const OtioItem& child : root.children) {
            if (child.silence.empty() || child.kind == ItemKind::clip)
                timeline_.tracks.push_back({child.name, {}});
            if (child.kind == ItemKind::transition)
                note({{}, child.name}, std::nullopt, "a transition must stand in a track; it is not played",
                     true);
            else
                place(child, Rational(), inside, {}, root.sound.gainDb, {child.name, {}});
        }
        for (TimelineTrack& track : timeline_.tracks)
            std::stable_sort(track.strips.begin(), track.strips.end(),
                             [](const TimelineStrip& a, const TimelineStrip& b) { return a.at < b.at; });
    }

    /// Whether nothing of an item lies where its surroundings are heard.
    static bool isTrimmedAway(const OtioItem& item, const Rational& start, const Frame& around,
                              const Transitions& transitions) {
        const auto [begin, end] = std::minmax({around.at(start - transitions.before),
                                               around.at(start + item.range.duration + transitions.after)});
        return begin < end && (end <= around.windowBegin() || begin >= around.windowEnd());
    }

    /// What cannot be placed is silent, and everything else is played.
    void place(const OtioItem& item, const Rational& start, const Frame& around,
               const Transitions& transitions, double gainDb, const Where& where) {
        std::string silence = item.silence;
        bool isFailure = item.silenceIsFailure;
        std::optional<std::int64_t> at;
        try {
            if (item.children.empty() && isTrimmedAway(item, start, around, transitions))
                return;
            at = samples(std::max(around.windowBegin(),
                                  std::min(around.at(start), around.at(start + item.range.duration))));
            tell(item, at, where);
            if (silence.empty())
                return placeSounding(item, start, around, transitions, gainDb, where);
        } catch (const TimelineError& error) {
            silence = error.sentence();
            isFailure = true;
        } catch (const std::overflow_error& error) {
            silence = error.what();
            isFailure = true;
        }
        note(where, at, "silent: " + silence, isFailure);
        // After a whole row there is nothing to move.
        if (!where.clip.empty())
            tellLengths(item, at, where);
        if (item.kind == ItemKind::clip && at) {
            timeline_.tracks.back().strips.push_back(silentClip(item, start, around, context_));
            timeline_.tracks.back().strips.back().silence = silence;
        }
    }

    void placeSounding(const OtioItem& item, const Rational& start, const Frame& around,
                       const Transitions& transitions, double gainDb, const Where& where) {
        const Frame inside = around.into(item, start);
        addMarkers(item, inside);
        if (item.kind == ItemKind::clip) {
            if (auto strip = placeClip(item, start, around, transitions, gainDb, where, context_))
                timeline_.tracks.back().strips.push_back(std::move(*strip));
        } else if (!item.children.empty()) {
            noteUnplayed(item, samples(std::max(inside.windowBegin(), around.at(start))), where);
            placeChildren(item, inside, gainDb + item.sound.gainDb, where);
        }
    }

    /// In a track each child starts where the one before ends; in a stack all start at 0.
    void placeChildren(const OtioItem& parent, const Frame& inside, double gainDb, const Where& where) {
        Rational time;
        for (std::size_t i = 0; i < parent.children.size(); ++i) {
            const OtioItem& child = parent.children[i];
            const Where here{where.track, child.name};
            if (child.kind == ItemKind::transition) {
                if (const std::string fault = faultOf(parent, i); !fault.empty())
                    note(here, samples(inside.at(time)), fault + "; it is not played", true);
                continue;
            }
            const bool inTrack = parent.kind == ItemKind::track;
            place(child, inTrack ? time : Rational(), inside,
                  inTrack ? transitionsOf(parent, i) : Transitions{}, gainDb, here);
            time = time + child.range.duration;
        }
    }

    /// Why a transition cannot be played. Empty: it can. A transition lengthens the clips beside the cut, and
    /// a nested composition has no material beyond its ends.
    static std::string faultOf(const OtioItem& parent, std::size_t i) {
        if (parent.kind == ItemKind::stack)
            return "a transition must stand in a track";
        if (!parent.children[i].silence.empty())
            return parent.children[i].silence;
        for (const std::size_t neighbour : {i - 1, i + 1}) {
            // Before the first child the index wraps around.
            if (neighbour >= parent.children.size())
                continue;
            const ItemKind kind = parent.children[neighbour].kind;
            if (kind == ItemKind::transition)
                return "two transitions follow one another";
            if (kind == ItemKind::stack || kind == ItemKind::track)
                return "a transition beside a nested stack or track cannot be played; put it beside the "
                       "clips inside";
        }
        return {};
    }

    /// The clip after a cut starts earlier, the clip before a cut ends later; the fade lasts as long as both
    /// together.
    static Transitions transitionsOf(const OtioItem& track, std::size_t i) {
        Transitions found;
        const auto at = [&](std::size_t index) {
            const bool isPlayed = index < track.children.size() &&
                                  track.children[index].kind == ItemKind::transition &&
                                  faultOf(track, index).empty();
            return isPlayed ? &track.children[index] : nullptr;
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
    void noteUnplayed(const OtioItem& item, std::optional<std::int64_t> at, const Where& where) {
        const ItemSound& sound = item.sound;
        if (sound.fadeIn || sound.fadeOut || !sound.keys.empty() || !sound.equaliser.empty() ||
            sound.converter || sound.routing)
            note(where, at,
                 "of a track or stack only gain and speed are played; put fades, automation, equaliser, "
                 "converter and routing on its clips",
                 false);
    }

    /// A trimmed stack lasts as long as its range; any other as its longest child, pictures included, and
    /// until the last strip, which a transition may have lengthened.
    void setLength(const OtioItem& root) {
        timeline_.length = samples(root.range.duration);
        if (root.trimmed)
            return;
        for (const TimelineTrack& track : timeline_.tracks)
            for (const TimelineStrip& strip : track.strips)
                timeline_.length =
                    std::max<std::int64_t>(timeline_.length, (strip.at + strip.length).number());
    }

    Timeline& timeline_;
    const OtioContext& context_;
};

/// Appends the timelines of a file, which are the whole of it or stand in collections.
void findTimelines(const Json& value, int depth, std::vector<const Json*>& found) {
    const std::string schema = schemaOf(value, {});
    if (schema == "Timeline")
        found.push_back(&value);
    const Json* children = schema == "SerializableCollection" ? member(value, "children") : nullptr;
    if (children != nullptr && children->is_array() && depth <= deepestNesting)
        for (const Json& child : *children)
            findTimelines(child, depth + 1, found);
}

std::string namesOf(const std::vector<const Json*>& timelines) {
    constexpr std::size_t most = 20;
    std::string names;
    for (std::size_t i = 0; i < std::min(timelines.size(), most); ++i)
        names += (i == 0 ? "'" : ", '") + printable(textIn(*timelines[i], "name")) + "'";
    return names + (timelines.size() > most ? " and more" : "");
}

/// The timeline that is asked for, or the only one.
const Json& timelineIn(const Json& root, const std::string& name) {
    std::vector<const Json*> found;
    findTimelines(root, 0, found);
    if (found.empty())
        throw TimelineError("the file holds a " + printable(schemaOf(root, {})) + ", not a Timeline");
    std::vector<const Json*> fitting = found;
    if (!name.empty())
        std::erase_if(fitting, [&](const Json* timeline) { return textIn(*timeline, "name") != name; });
    if (fitting.empty())
        throw TimelineError("no timeline of the file is named '" + printable(name) + "'; there is " +
                            namesOf(found));
    if (fitting.size() > 1)
        throw TimelineError("the file holds " + std::to_string(fitting.size()) + " timelines" +
                            (name.empty() ? "" : " of that name") + "; name one: " + namesOf(found));
    return *fitting.front();
}

} // namespace

Timeline readOtio(const Json& file, const ReadOptions& options) {
    const Where here;
    if (schemaOf(file, here).empty())
        throw TimelineError("this is not an OpenTimelineIO file: there is no OTIO_SCHEMA");
    const Json& root = timelineIn(file, options.timeline);
    Timeline timeline;
    timeline.name = textIn(root, "name");
    timeline.sampleRate = options.sampleRate;
    timeline.channels = options.channels;
    if (member(root, "global_start_time") != nullptr)
        timeline.timeReference = samplesAt(
            timeIn(root, "global_start_time", here, "global_start_time").seconds, options.sampleRate);
    const Json* tracks = member(root, "tracks");
    if (tracks == nullptr || schemaOf(*tracks, here) != "Stack")
        throw TimelineError("the Timeline has no Stack \"tracks\"");
    MediaAnswers media(options);
    const OtioContext context{options, media, timeline};
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
    throw TimelineError(
        "this is no timeline: there is neither an OTIO_SCHEMA, as in OpenTimelineIO (.otio), nor "
        "the key \"audlmd\", as in our own JSON");
}

} // namespace audlmd::timeline
