#include "tools/audlmd/mix/MixReportText.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/List.hpp"
#include "host/timeline/TimelineError.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <unordered_map>
#include <utility>

namespace audlmd::command {
namespace {

using Json = nlohmann::json;

constexpr std::size_t mostLines = 12;

const TimelineStrip& stripOf(const Timeline& timeline, std::size_t track, std::size_t strip) {
    return timeline.tracks[track].strips[strip];
}

std::string nameOf(const Timeline& timeline, std::size_t track, std::size_t strip) {
    return timeline::whereIs(timeline, track, strip).text();
}

std::string clockAt(const Timeline& timeline, std::int64_t sample) {
    return words::clock(sample, timeline.sampleRate);
}

/// A dozen lines, and how many more there are.
std::string shortened(const std::vector<std::string>& lines) {
    std::string text;
    for (std::size_t line = 0; line < std::min(lines.size(), mostLines); ++line)
        text += lines[line] + "\n";
    if (lines.size() > mostLines)
        text += "and " + std::to_string(lines.size() - mostLines) + " more; --report lists all\n";
    return text;
}

/// "37 samples, by up to 3.52 dB, first at 0:00:00.500". Leaves out a peak of 0, which nobody has measured.
std::string overloadText(const Overload& overload, int sampleRate) {
    std::ostringstream text;
    text << words::counted(overload.samples, "sample");
    if (overload.peak > 0.0F)
        text << ", by up to " << std::fixed << std::setprecision(2)
             << decibelsOfGain(static_cast<double>(overload.peak)) << " dB";
    text << ", first at " << words::clock(overload.firstAt.number(), sampleRate);
    return text.str();
}

/// Those by which something is silent come first, so that they are not among those left out.
std::string notes(const Timeline& timeline) {
    std::vector<TimelineNote> ordered = timeline.notes;
    std::stable_partition(ordered.begin(), ordered.end(),
                          [](const TimelineNote& note) { return note.silences; });
    return shortened(timeline::noteLines(ordered, timeline.sampleRate));
}

/// One line for all strips with one reason, such as a medium that is not there.
std::vector<std::string> silences(const MixReport& report, const Timeline& timeline) {
    struct Silence {
        std::string firstPlace;
        std::size_t strips = 0;
    };
    std::unordered_map<std::string, std::size_t> numberOf;
    std::vector<std::pair<const std::string*, Silence>> found;
    for (const StripReport& strip : report.strips) {
        if (strip.failure.empty())
            continue;
        const auto [known, isNew] = numberOf.try_emplace(strip.failure, found.size());
        if (isNew) {
            std::string place = nameOf(timeline, strip.track, strip.strip);
            if (!strip.silent.empty())
                place += ", first at " + clockAt(timeline, strip.silent.front().from.number());
            found.emplace_back(&known->first, Silence{std::move(place), 0});
        }
        ++found[known->second].second.strips;
    }
    std::vector<std::string> lines;
    for (const auto& [failure, silence] : found) {
        const std::string count =
            silence.strips == 1 ? "" : " (" + std::to_string(silence.strips) + " clips)";
        lines.push_back("silent: " + silence.firstPlace + ": " +
                        words::printable(*failure, std::string::npos) + count);
    }
    return lines;
}

std::string summary(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    const double length = static_cast<double>(run.span.length()) / timeline.sampleRate;
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << "mixed " << run.span.length() << " samples on "
         << words::counted(outputLayout(timeline).size(), "channel") << " (" << length << " s) of '"
         << words::printable(run.timeline) << "' into '" << words::printable(run.output) << "' in "
         << run.seconds << " s: " << std::setprecision(1) << length / std::max(run.seconds, 1e-6)
         << " times real time\n";
    if (const TimelineSample end = endOfSound(timeline); end.number() < timeline.length && end <= run.span.to)
        text << "the last sound ends at " << clockAt(timeline, end.number()) << ", the programme at "
             << clockAt(timeline, timeline.length) << "\n";
    if (report.slowest.seconds > 0.0)
        text << "slowest: " << nameOf(timeline, report.slowest.track, report.slowest.strip) << ", "
             << std::setprecision(3) << report.slowest.seconds << " s of the processor\n";
    return text.str();
}

Json spans(const std::vector<TimelineSpan>& spans) {
    Json json = Json::array();
    for (const TimelineSpan span : spans)
        json.push_back({span.from.number(), span.to.number()});
    return json;
}

/// Silence and what is beyond all numbers have no decibels in JSON.
Json decibels(float gain) {
    const double value = decibelsOfGain(static_cast<double>(gain));
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

Json overloadJson(const Overload& overload) {
    Json json{{"samples", overload.samples}, {"peak", decibels(overload.peak)}};
    if (overload.samples != 0) {
        json["first"] = overload.firstAt.number();
        json["spans"] = spans(overload.spans);
    }
    return json;
}

Json placeJson(const Timeline& timeline, std::size_t track, std::size_t strip) {
    return {{"track", timeline.tracks[track].name},
            {"trackNumber", track + 1},
            {"clip", stripOf(timeline, track, strip).name},
            {"clipNumber", strip + 1},
            {"media", stripOf(timeline, track, strip).media}};
}

} // namespace

std::string channelOverloadLine(const char* what, std::size_t channel, const Overload& overload,
                                int sampleRate) {
    if (overload.samples == 0)
        return {};
    return what + (": channel " + std::to_string(channel + 1)) + ": " + overloadText(overload, sampleRate);
}

std::string reportText(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    std::vector<std::string> late;
    std::vector<std::string> loud;
    std::vector<std::string> clipped;
    for (const StripReport& strip : report.strips) {
        std::ostringstream place;
        place << nameOf(timeline, strip.track, strip.strip);
        if (!strip.silent.empty())
            place << ", first at " << clockAt(timeline, strip.silent.front().from.number());
        if (strip.failure.empty() && strip.underrunSamples != 0)
            late.push_back("late: " + place.str() + ": " + std::to_string(strip.underrunSamples) +
                           " samples, " + std::to_string(strip.underrunEpisodes) + " times");
        if (strip.overload.samples != 0)
            loud.push_back("beyond full scale by itself: " + nameOf(timeline, strip.track, strip.strip) +
                           ": " + overloadText(strip.overload, timeline.sampleRate));
    }
    for (std::size_t channel = 0; channel < report.channels.size(); ++channel)
        if (std::string line = channelOverloadLine(overloadWords(run.clips), channel,
                                                   report.channels[channel], timeline.sampleRate);
            !line.empty())
            clipped.push_back(std::move(line));
    return notes(timeline) + shortened(silences(report, timeline)) + shortened(late) + shortened(loud) +
           shortened(clipped) + (run.quiet ? "" : summary(report, timeline, run));
}

std::string reportJson(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    Json json{{"timeline", timeline.name},      {"sampleRate", timeline.sampleRate},
              {"from", run.span.from.number()}, {"to", run.span.to.number()},
              {"seconds", run.seconds},         {"clips", Json::array()},
              {"channels", Json::array()},      {"notes", Json::array()}};
    for (const TimelineNote& note : timeline.notes)
        json["notes"].push_back({{"where", note.where},
                                 {"text", note.text},
                                 {"at", note.at ? Json(note.at->number()) : Json(nullptr)},
                                 {"silences", note.silences}});
    for (const StripReport& strip : report.strips) {
        Json entry = placeJson(timeline, strip.track, strip.strip);
        entry["failure"] = strip.failure;
        entry["underrunSamples"] = strip.underrunSamples;
        entry["underrunEpisodes"] = strip.underrunEpisodes;
        entry["silent"] = spans(strip.silent);
        entry["overload"] = overloadJson(strip.overload);
        json["clips"].push_back(std::move(entry));
    }
    for (const Overload& channel : report.channels) {
        json["channels"].push_back(overloadJson(channel));
        json["channels"].back()["clipped"] = run.clips ? channel.samples : 0;
    }
    if (report.slowest.seconds > 0.0) {
        json["slowest"] = placeJson(timeline, report.slowest.track, report.slowest.strip);
        json["slowest"]["seconds"] = report.slowest.seconds;
    }
    // Names come from files, and may be no UTF-8.
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace audlmd::command
