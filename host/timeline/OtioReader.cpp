#include "host/timeline/OtioReader.hpp"

#include "host/timeline/OtioPlacement.hpp"
#include "host/timeline/OtioSchema.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <algorithm>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::timeline {
namespace {

/// Why a transition cannot be played. Empty: it can. A transition lengthens the clips beside the cut, and
/// a nested composition has no sound beyond its ends.
std::string faultOf(const OtioItem& parent, std::size_t i) {
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
Transitions transitionsOf(const OtioItem& track, std::size_t i) {
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

/// Fills the rows of a timeline. Goes from the outside to the inside and hands each item the map of the time
/// around it. A row is a child of the outermost stack; what is nested below sounds in that row.
class RowFiller {
public:
    explicit RowFiller(Timeline& timeline) : timeline_(timeline) {}

    /// Strips of a row are sorted last, because a composition that plays backwards places them from the end.
    void placeAll(const OtioItem& root, const Reading& reading) {
        tell(root, std::nullopt, reading);
        if (!root.silence.empty())
            reading.note("silent: " + root.silence, std::nullopt, root.silenceIsFailure);
        else
            placeRows(root, TimeMap().into(root, Rational()), reading);
        setLength(root);
    }

private:
    std::int64_t samples(const Rational& seconds) const { return samplesAt(seconds, timeline_.sampleRate); }

    /// What the parser has noted on an item. Equal notes are told once, with their number.
    static void tell(const OtioItem& item, std::optional<std::int64_t> at, const Reading& reading) {
        std::map<std::string_view, std::size_t> counts;
        for (const ItemNote& noted : item.notes)
            ++counts[noted.text];
        for (const ItemNote& noted : item.notes)
            if (const std::size_t count = std::exchange(counts[noted.text], 0); count != 0)
                reading.note(noted.text + (count == 1 ? "" : " (" + std::to_string(count) + " times)"), at,
                             noted.silences);
    }

    /// Inside an item that is not played, only what moves others is of interest.
    static void tellLengths(const OtioItem& item, std::optional<std::int64_t> at, const Reading& reading) {
        for (const OtioItem& child : item.children) {
            const Reading here = reading.at({reading.where.track, child.name});
            if (child.lacksLength)
                here.note("silent: " + child.silence, at, true);
            tellLengths(child, at, here);
        }
    }

    void placeRows(const OtioItem& root, const TimeMap& inside, const Reading& reading) {
        addMarkers(root, inside);
        noteUnplayed(root, std::nullopt, reading);
        for (const OtioItem& child : root.children) {
            if (child.silence.empty() || child.kind == ItemKind::clip)
                timeline_.tracks.push_back({child.name, {}});
            if (child.kind == ItemKind::transition)
                reading.at({{}, child.name})
                    .note("a transition must stand in a track; it is not played", std::nullopt, true);
            else
                place(child, {.time = inside, .start = {}, .gainDb = root.sound.gainDb},
                      reading.at({child.name, {}}));
        }
        for (TimelineTrack& track : timeline_.tracks)
            std::stable_sort(track.strips.begin(), track.strips.end(),
                             [](const TimelineStrip& a, const TimelineStrip& b) { return a.at < b.at; });
    }

    /// Whether nothing of an item lies where its surroundings are heard.
    static bool isTrimmedAway(const OtioItem& item, const Surroundings& around) {
        const auto [begin, end] = around.outputOf(item);
        return begin < end && (end <= around.time.windowBegin() || begin >= around.time.windowEnd());
    }

    /// What cannot be placed is silent, and everything else is played.
    void place(const OtioItem& item, const Surroundings& around, const Reading& reading) {
        const auto& [time, start, transitions, gainDb] = around;
        std::string silence = item.silence;
        bool isFailure = item.silenceIsFailure;
        std::optional<std::int64_t> at;
        try {
            if (item.children.empty() && isTrimmedAway(item, around))
                return;
            at = samples(
                std::max(time.windowBegin(), std::min(time.at(start), time.at(start + item.range.duration))));
            tell(item, at, reading);
            if (silence.empty())
                return placeSounding(item, around, reading);
        } catch (const TimelineError& error) {
            silence = error.sentence();
            isFailure = true;
        } catch (const std::overflow_error& error) {
            silence = error.what();
            isFailure = true;
        }
        reading.note("silent: " + silence, at, isFailure);
        // After a whole row there is nothing to move.
        if (!reading.where.clip.empty())
            tellLengths(item, at, reading);
        if (item.kind == ItemKind::clip && at) {
            timeline_.tracks.back().strips.push_back(silentClip(item, around, timeline_.sampleRate));
            timeline_.tracks.back().strips.back().silence = silence;
        }
    }

    void placeSounding(const OtioItem& item, const Surroundings& around, const Reading& reading) {
        const TimeMap inside = around.time.into(item, around.start);
        addMarkers(item, inside);
        if (item.kind == ItemKind::clip) {
            if (auto strip = placeClip(item, around, reading))
                timeline_.tracks.back().strips.push_back(std::move(*strip));
        } else if (!item.children.empty()) {
            noteUnplayed(item, samples(std::max(inside.windowBegin(), around.time.at(around.start))),
                         reading);
            placeChildren(item, inside, around.gainDb + item.sound.gainDb, reading);
        }
    }

    /// In a track each child starts where the one before ends; in a stack all start at 0.
    void placeChildren(const OtioItem& parent, const TimeMap& inside, double gainDb, const Reading& reading) {
        Rational time;
        for (std::size_t i = 0; i < parent.children.size(); ++i) {
            const OtioItem& child = parent.children[i];
            const Reading here = reading.at({reading.where.track, child.name});
            if (child.kind == ItemKind::transition) {
                if (const std::string fault = faultOf(parent, i); !fault.empty())
                    here.note(fault + "; it is not played", samples(inside.at(time)), true);
                continue;
            }
            Surroundings around{.time = inside, .start = {}, .gainDb = gainDb};
            if (parent.kind == ItemKind::track) {
                around.start = time;
                around.transitions = transitionsOf(parent, i);
            }
            place(child, around, here);
            time = time + child.range.duration;
        }
    }

    void addMarkers(const OtioItem& item, const TimeMap& inside) {
        for (const auto& [name, time] : item.markers) {
            const Rational output = inside.at(time);
            if (output >= inside.windowBegin() && output <= inside.windowEnd())
                timeline_.markers.push_back({name, samples(output)});
        }
    }

    /// A composition has no strip of its own that could carry a fade or an equaliser.
    static void noteUnplayed(const OtioItem& item, std::optional<std::int64_t> at, const Reading& reading) {
        const ItemSound& sound = item.sound;
        if (sound.fadeIn || sound.fadeOut || !sound.keys.empty() || !sound.equaliser.empty() ||
            sound.converter || sound.routing || sound.pan != 0.0 || sound.relabel != Relabel())
            reading.note("of a track or stack only gain and speed are played; put fades, automation, "
                         "equaliser, converter, routing, pan and relabel on its clips",
                         at);
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
};

/// Of pictures, or 0: other rates are those of samples, or of a clock.
double frameRateOf(const Rational& rate) {
    const double frames = rate.value();
    return frames >= 10.0 && frames <= 240.0 && words::isFrameRate(frames) ? frames : 0.0;
}

/// The first frame rate that a clip has, or 0.
double frameRateIn(const OtioItem& item) {
    double found = item.pictureFrame == Rational() ? 0.0 : frameRateOf(Rational(1) / item.pictureFrame);
    for (auto child = item.children.begin(); found == 0.0 && child != item.children.end(); ++child)
        found = frameRateIn(*child);
    return found;
}

/// Appends the timelines of a file, which are the whole of it or stand in collections.
void findTimelines(const Json& value, int depth, const Reading& reading, std::vector<const Json*>& found) {
    const std::string schema = schemaOf(value, reading);
    if (schema == "Timeline")
        found.push_back(&value);
    const Json* children = schema == "SerializableCollection" ? member(value, "children") : nullptr;
    if (children != nullptr && children->is_array() && depth <= deepestNesting)
        for (const Json& child : *children)
            findTimelines(child, depth + 1, reading, found);
}

std::string namesOf(const std::vector<const Json*>& timelines) {
    constexpr std::size_t most = 20;
    std::string names;
    for (std::size_t i = 0; i < std::min(timelines.size(), most); ++i)
        names += (i == 0 ? "'" : ", '") + words::printable(textIn(*timelines[i], "name")) + "'";
    return names + (timelines.size() > most ? " and more" : "");
}

/// The timeline that is asked for, or the only one.
const Json& timelineIn(const Json& root, const Reading& reading) {
    const std::string& name = reading.options.timeline;
    std::vector<const Json*> found;
    findTimelines(root, 0, reading, found);
    if (found.empty())
        throw TimelineError("the file holds a " + words::printable(schemaOf(root, reading)) +
                            ", not a Timeline");
    std::vector<const Json*> fitting = found;
    if (!name.empty())
        std::erase_if(fitting, [&](const Json* timeline) { return textIn(*timeline, "name") != name; });
    if (fitting.empty())
        throw TimelineError("no timeline of the file is named '" + words::printable(name) + "'; there is " +
                            namesOf(found));
    if (fitting.size() > 1)
        throw TimelineError("the file holds " + std::to_string(fitting.size()) + " timelines" +
                            (name.empty() ? "" : " of that name") + "; name one: " + namesOf(found));
    return *fitting.front();
}

} // namespace

Timeline readOtio(const Json& file, const ReadOptions& options) {
    Timeline timeline;
    MediaAnswers media(options);
    const Reading reading{options, media, timeline};
    if (schemaOf(file, reading).empty())
        throw TimelineError("this is not an OpenTimelineIO file: there is no OTIO_SCHEMA");
    const Json& root = timelineIn(file, reading);
    timeline.name = textIn(root, "name");
    timeline.sampleRate = options.sampleRate;
    timeline.channels = options.channels;
    if (member(root, "global_start_time") != nullptr) {
        const OtioTime start = timeIn(root, "global_start_time", reading, "global_start_time");
        timeline.timeReference = samplesAt(start.seconds, options.sampleRate);
        timeline.frameRate = frameRateOf(start.rate);
    }
    const Json* tracks = member(root, "tracks");
    if (tracks == nullptr || schemaOf(*tracks, reading) != "Stack")
        throw TimelineError("the Timeline has no Stack \"tracks\"");
    const OtioItem stack = parseItem(*tracks, 0, reading);
    if (timeline.frameRate == 0.0)
        timeline.frameRate = frameRateIn(stack);
    try {
        RowFiller(timeline).placeAll(stack, reading);
    } catch (const std::overflow_error& error) {
        throw TimelineError(error.what());
    }
    return timeline;
}

} // namespace audlmd::timeline
