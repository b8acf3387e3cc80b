#include "host/timeline/List.hpp"

#include "host/timeline/StripCheck.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <algorithm>
#include <unordered_map>

namespace audlmd::timeline {
namespace {

using Row = std::vector<std::string>;

/// In columns of a terminal, as far as one character takes one. Counts the first bytes of UTF-8 characters.
std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

template <class Clock>
std::string spanText(Span<Clock> span, int sampleRate) {
    return words::clock(span.from.number(), sampleRate) + " - " + words::clock(span.to.number(), sampleRate);
}

/// Lengths as heard.
std::string fades(const StripSettings& settings, int sampleRate) {
    const auto one = [&](const char* name, std::uint64_t samples, FadeCurve curve) {
        if (samples == 0)
            return std::string();
        const double seconds = static_cast<double>(samples) / settings.speed / sampleRate;
        return std::string(name) + " " + words::numberText(seconds) + "s " +
               std::string(words::wordOf(words::curveWords, curve));
    };
    const FadePlan& plan = settings.fade;
    const std::string in = one("in", plan.fadeInSamples, plan.fadeInCurve);
    const std::string out = one("out", plan.fadeOutSamples, plan.fadeOutCurve);
    return in.empty() || out.empty() ? in + out : in + ", " + out;
}

std::string equaliserText(const std::vector<EqualiserBand>& bands) {
    std::string text;
    for (const EqualiserBand& band : bands)
        text += (text.empty() ? "" : " ") + words::bandText(band);
    return text;
}

Row headings(const Timeline& timeline) {
    Row row{"track", "clip", "output", "source", "speed", "direction", "gain", "fades", "equaliser", "file"};
    if (timeline.timeReference != 0)
        row.insert(row.begin() + 2, "timecode");
    return row;
}

/// The source shows what is heard of the media, not the whole range of the strip. A strip that is silent
/// has its reason in the place of the file.
Row rowOf(const Timeline& timeline, const std::string& track, const TimelineStrip& strip,
          const FileText& fileOf) {
    const StripSettings& settings = strip.settings;
    const int sampleRate = timeline.sampleRate;
    const MaterialSpan heard = heardOf(strip);
    Row row{words::printable(track),
            words::printable(strip.name),
            spanText(TimelineSpan{strip.at, strip.at + strip.length}, sampleRate),
            spanText(heard, sampleRate),
            words::numberText(settings.speed) +
                (strip.relabel == Relabel() ? "" : ", relabelled " + words::relabelText(strip.relabel)),
            settings.reverse ? "backwards" : "forwards",
            words::numberText(strip.gainDb) + " dB" + (settings.automation ? " + automation" : "") +
                (strip.pan == 0.0 ? "" : ", pan " + words::numberText(strip.pan)),
            fades(settings, sampleRate),
            equaliserText(settings.equaliser),
            words::printable(strip.silence.empty() ? fileOf(strip.media) : "silent: " + strip.silence)};
    if (timeline.timeReference != 0)
        row.insert(row.begin() + 2, words::clock(timeline.timeReference + strip.at.number(), sampleRate));
    return row;
}

/// Each column is as wide as its widest text, with two blanks between columns and none at the end of a line.
std::string table(const std::vector<Row>& rows) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(row[i]));
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += row[i] + std::string(widths[i] - widthOf(row[i]) + 2, ' ');
        text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
    }
    return text;
}

std::string headingOf(const Timeline& timeline) {
    std::size_t strips = 0;
    for (const TimelineTrack& track : timeline.tracks)
        strips += track.strips.size();
    std::string text = timeline.name.empty() ? "timeline" : words::printable(timeline.name);
    text += ": " + words::clock(timeline.length, timeline.sampleRate) + " at " +
            std::to_string(timeline.sampleRate) + " Hz, " + words::counted(timeline.channels, "channel") +
            ", " + words::counted(strips, "clip") + " on " + words::counted(timeline.tracks.size(), "track");
    if (timeline.timeReference != 0)
        text += "; starts at " + words::clock(timeline.timeReference, timeline.sampleRate);
    if (const std::int64_t end = endOfSound(timeline).number(); end < timeline.length)
        text += "; the last sound ends at " + words::clock(end, timeline.sampleRate);
    return text + "\n";
}

} // namespace

std::vector<std::string> noteLines(std::span<const TimelineNote> notes, int sampleRate) {
    std::unordered_map<std::string, std::size_t> lineOf;
    std::vector<std::string> lines;
    std::vector<std::size_t> counts;
    for (const TimelineNote& note : notes) {
        const auto [known, isNew] = lineOf.try_emplace(note.where + '\n' + note.text, lines.size());
        if (!isNew) {
            ++counts[known->second];
            continue;
        }
        const std::string at = note.at ? ", at " + words::clock(note.at->number(), sampleRate) : "";
        lines.push_back("note: " + words::printable(note.where, std::string::npos) + at + ": " +
                        words::printable(note.text, std::string::npos));
        counts.push_back(1);
    }
    for (std::size_t line = 0; line < lines.size(); ++line)
        if (counts[line] > 1)
            lines[line] += " (" + std::to_string(counts[line]) + " times)";
    return lines;
}

std::string list(const Timeline& timeline, const FileText& fileOf) {
    std::vector<Row> rows{headings(timeline)};
    for (const TimelineTrack& track : timeline.tracks)
        for (const TimelineStrip& strip : track.strips)
            rows.push_back(rowOf(timeline, track.name, strip, fileOf));
    std::string text = headingOf(timeline) + table(rows);
    for (const TimelineMarker& marker : timeline.markers)
        text += "marker " + words::clock(marker.at.number(), timeline.sampleRate) + "  " +
                words::printable(marker.name) + "\n";
    for (const std::string& line : noteLines(timeline.notes, timeline.sampleRate))
        text += line + "\n";
    return text;
}

} // namespace audlmd::timeline
