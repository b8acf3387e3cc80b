#include "tools/audlmd/mix/picture/TimelineSketch.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/signal/StripPlan.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <utility>

namespace audlmd::command {
namespace {

std::string formatted(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

/// A file's name says more than no name.
std::string nameOf(const TimelineStrip& strip) {
    return words::printable(strip.name.empty() ? strip.media.substr(strip.media.find_last_of('/') + 1)
                                               : strip.name);
}

std::string noteOf(const TimelineStrip& strip) {
    std::string note;
    if (!strip.silence.empty())
        return words::printable(strip.silence);
    const auto add = [&note](const std::string& words) { note += (note.empty() ? "" : ", ") + words; };
    if (strip.settings.reverse)
        add("reverse");
    if (strip.settings.speed != 1.0)
        add("speed " + formatted("%.4g", strip.settings.speed));
    if (strip.relabel != Relabel())
        add("relabelled " + words::relabelText(strip.relabel));
    if (!strip.settings.equaliser.empty())
        add("equaliser");
    if (std::isinf(strip.gainDb))
        add("silent");
    else if (strip.gainDb != 0.0)
        add((strip.gainDb < 0.0 ? "\u2212" : "+") + formatted("%.3g dB", std::abs(strip.gainDb)));
    return note;
}

/// On the clock of the range, with a fraction.
double sourceAt(const StripSketch& sketch, double outputSample) {
    const double source = (outputSample - static_cast<double>(sketch.rangeAt.number())) * sketch.speed;
    return std::min(source, static_cast<double>(sketch.range.length()));
}

std::vector<float> fadeAlong(const StripSketch& sketch, const StripPlan& plan) {
    std::vector<float> line;
    const FadePlan& fade = plan.settings.fade;
    if (fade.fadeInSamples == 0 && fade.fadeOutSamples == 0)
        return line;
    const FadeEnvelope envelope(fade, static_cast<std::uint64_t>(plan.rangeLength));
    for (const double border : sketch.borders)
        line.push_back(
            static_cast<float>(mixerStyleUValue(envelope.gainAt(std::llround(sourceAt(sketch, border))))));
    return line;
}

/// The u-values of an automation from one position to another, nodes between them included.
LevelRange rangeBetween(const Automation& automation, std::int64_t from, std::int64_t to) {
    const float atFrom = automation.uValueAt(from);
    const float atTo = automation.uValueAt(to);
    LevelRange range{std::min(atFrom, atTo), std::max(atFrom, atTo)};
    const auto nodes = automation.nodes();
    const auto first = std::ranges::lower_bound(nodes, from, {}, &LevelNode::position);
    for (auto node = first; node != nodes.end() && node->position <= to; ++node) {
        range.lowest = std::min(range.lowest, std::max(node->uValue, 0.0F));
        range.highest = std::max(range.highest, std::min(node->uValue, static_cast<float>(faderTop)));
    }
    return range;
}

std::vector<LevelRange> levelsAlong(const StripSketch& sketch, const StripPlan& plan, double gainDb) {
    std::vector<LevelRange> levels;
    const std::optional<AutomationWalk>& walk = plan.settings.automation;
    if (!walk && gainDb == 0.0)
        return levels;
    const double gain = gainOfDecibels(gainDb);
    const auto withGain = [gain](float uValue) {
        return static_cast<float>(mixerStyleUValue(mixerStyleGain(static_cast<double>(uValue)) * gain));
    };
    for (std::size_t column = 0; column < sketch.columnCount(); ++column) {
        LevelRange range{1.0F, 1.0F};
        if (walk) {
            const auto positionAt = [&](std::size_t border) {
                return plan.automationPosition(std::llround(sourceAt(sketch, sketch.borders[border])));
            };
            // An automation that is walked in reverse falls.
            const std::int64_t first = positionAt(column);
            const std::int64_t last = positionAt(column + 1);
            range = rangeBetween(walk->automation, std::min(first, last), std::max(first, last));
        }
        levels.push_back({withGain(range.lowest), withGain(range.highest)});
    }
    return levels;
}

void addColumns(StripSketch& sketch, const TimeColumns& columns) {
    const auto from = static_cast<double>(sketch.sounds.from.number());
    const auto to = static_cast<double>(sketch.sounds.to.number());
    const double first = std::floor(columns.columnAt(from));
    const double end = std::max(first + 1.0, std::ceil(columns.columnAt(to)));
    sketch.borders.push_back(from);
    for (double column = first + 1.0; column < end; column += 1.0)
        sketch.borders.push_back(columns.sampleAt(column));
    sketch.borders.push_back(to);
    sketch.peaks.resize(sketch.borders.size() - 1);
}

/// Nothing if no sample of the strip lies in the picture.
std::optional<StripSketch> sketchStrip(const TimelineStrip& strip, const TimelineSketch& picture) {
    const StripSettings& asked = strip.settings;
    StripSketch sketch;
    sketch.name = nameOf(strip);
    sketch.media = strip.media;
    sketch.relabel = strip.relabel;
    sketch.note = noteOf(strip);
    sketch.sounds = {strip.at, strip.at + strip.length};
    sketch.range = {asked.from, asked.to};
    sketch.reverse = asked.reverse;
    sketch.speed = asked.speed;
    sketch.rangeAt = strip.at - (strip.skip - OutputSample());
    sketch.isSilent = !strip.silence.empty();
    std::optional<StripPlan> plan;
    if (!sketch.isSilent)
        try {
            StripSettings settings = asked;
            settings.sampleRate = picture.sampleRate;
            plan.emplace(std::move(settings));
            sketch.speed = plan->speedInForce;
            const TimelineSample soundEnd = sketch.rangeAt + static_cast<std::int64_t>(plan->outputLength);
            sketch.sounds.to = std::min(sketch.sounds.to, soundEnd);
        } catch (const std::invalid_argument&) {
            sketch.failure = "not playable";
        }
    sketch.sounds.from = std::max<TimelineSample>(sketch.sounds.from, 0);
    sketch.sounds.to = std::min<TimelineSample>(sketch.sounds.to, picture.columns.length);
    if (sketch.sounds.isEmpty())
        return std::nullopt;
    addColumns(sketch, picture.columns);
    if (plan) {
        sketch.fade = fadeAlong(sketch, *plan);
        sketch.levels = levelsAlong(sketch, *plan, strip.gainDb);
    }
    return sketch;
}

/// Gives every strip of strips that overlap a row of its own. A strip that overlaps none keeps the whole
/// height. Strips are in order of time afterwards.
void stackOverlaps(std::vector<StripSketch>& strips) {
    std::ranges::stable_sort(strips, {}, [](const StripSketch& strip) { return strip.sounds.from; });
    for (std::size_t first = 0; first < strips.size();) {
        // The ends of the strips in each row.
        std::vector<TimelineSample> ends;
        TimelineSample lastEnd = strips[first].sounds.to;
        std::size_t next = first;
        for (; next < strips.size() && (next == first || strips[next].sounds.from < lastEnd); ++next) {
            const TimelineSpan& sounds = strips[next].sounds;
            const auto free = std::ranges::find_if(ends, [&](auto end) { return end <= sounds.from; });
            strips[next].row = static_cast<std::size_t>(free - ends.begin());
            if (free == ends.end())
                ends.push_back(sounds.to);
            else
                *free = sounds.to;
            lastEnd = std::max(lastEnd, sounds.to);
        }
        for (; first < next; ++first)
            strips[first].rows = ends.size();
    }
}

/// The spans inside `sounds`, cut to that.
std::vector<TimelineSpan> inside(const TimelineSpan& sounds, const std::vector<TimelineSpan>& spans) {
    std::vector<TimelineSpan> cut;
    for (const TimelineSpan& span : spans)
        if (span.from < sounds.to && span.to > sounds.from)
            cut.push_back({std::max(span.from, sounds.from), std::min(span.to, sounds.to)});
    return cut;
}

/// Null if there is nothing to tell of the strip. A report is in the order of the timeline.
const StripReport* reportOf(const MixReport& report, std::size_t track, std::size_t strip) {
    const auto place = [](const StripReport& told) { return std::pair(told.track, told.strip); };
    const auto told = std::ranges::lower_bound(report.strips, std::pair(track, strip), {}, place);
    return told != report.strips.end() && place(*told) == std::pair(track, strip) ? &*told : nullptr;
}

} // namespace

MaterialPart StripSketch::materialIn(std::size_t column) const {
    const double from = sourceAt(*this, borders[column]);
    const double to = sourceAt(*this, borders[column + 1]);
    const auto begin = static_cast<double>(range.from.number());
    const auto end = static_cast<double>(range.to.number());
    return reverse ? MaterialPart{end - to, end - from} : MaterialPart{begin + from, begin + to};
}

TimelineSketch sketchTimeline(const Timeline& shown, const MixReport& report, std::size_t columns,
                              const OutputCourse* course) {
    TimelineSketch sketch;
    sketch.columns = {std::max<std::int64_t>(shown.length, 1), columns};
    sketch.sampleRate = shown.sampleRate;
    for (const TimelineMarker& marker : shown.markers)
        sketch.markers.push_back({words::printable(marker.name), marker.at});
    sketch.output = report.channels;
    for (std::size_t column = 0; course != nullptr && column < columns; ++column)
        sketch.wave.push_back(course->between(sketch.columns.sampleAt(static_cast<double>(column)),
                                              sketch.columns.sampleAt(static_cast<double>(column + 1))));
    const std::size_t lanes = std::min(shown.tracks.size(), mostLanes);
    sketch.tracksLeftOut = shown.tracks.size() - lanes;
    for (std::size_t track = 0; track < lanes; ++track) {
        const auto& strips = shown.tracks[track].strips;
        TrackSketch lane{words::printable(shown.tracks[track].name), {}};
        for (std::size_t strip = 0; strip < strips.size(); ++strip) {
            std::optional<StripSketch> sketched = sketchStrip(strips[strip], sketch);
            if (!sketched)
                continue;
            sketched->number = strip;
            if (const StripReport* told = reportOf(report, track, strip)) {
                sketched->silent = inside(sketched->sounds, told->silent);
                sketched->overloads = inside(sketched->sounds, told->overload.spans);
            }
            lane.strips.push_back(std::move(*sketched));
        }
        stackOverlaps(lane.strips);
        sketch.tracks.push_back(std::move(lane));
    }
    return sketch;
}

} // namespace audlmd::command
