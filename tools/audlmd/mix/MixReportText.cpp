#include "tools/audlmd/mix/MixReportText.hpp"

#include "standalone/signal/GainLaws.hpp"
#include "tools/audlmd/OverloadText.hpp"
#include "tools/timeline/Json.hpp"
#include "tools/timeline/TimelineFiles.hpp"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>

namespace audlmd::command {
namespace {

using timeline::Json;

constexpr std::size_t mostLines = 12;

const TimelineStrip& stripOf(const Timeline& timeline, std::size_t track, std::size_t strip) {
    return timeline.tracks[track].strips[strip];
}

std::string nameOf(const Timeline& timeline, std::size_t track, std::size_t strip) {
    return timeline::whereIs(timeline, track, strip).text();
}

std::string clockAt(const Timeline& timeline, std::int64_t sample) {
    return timeline::clock(sample, timeline.sampleRate);
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

std::string summary(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    const double length = static_cast<double>(run.span.to - run.span.from) / timeline.sampleRate;
    std::ostringstream text;
    text << std::fixed << std::setprecision(3) << "mixed " << run.span.to - run.span.from << " samples on "
         << timeline.channels << (timeline.channels == 1 ? " channel (" : " channels (") << length
         << " s) in " << run.seconds << " s: " << std::setprecision(1) << length / std::max(run.seconds, 1e-6)
         << " times real time\n";
    if (report.slowest.seconds > 0.0)
        text << "slowest: " << nameOf(timeline, report.slowest.track, report.slowest.strip) << ", "
             << std::setprecision(3) << report.slowest.seconds << " s of the processor\n";
    return text.str();
}

Json spans(const std::vector<OutputSpan>& spans) {
    Json json = Json::array();
    for (const OutputSpan span : spans)
        json.push_back({span.from, span.to});
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
        json["first"] = overload.firstAt;
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

std::string reportText(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    std::vector<std::string> silent;
    std::vector<std::string> late;
    std::vector<std::string> loud;
    std::vector<std::string> clipped;
    for (const StripReport& strip : report.strips) {
        std::ostringstream place;
        place << nameOf(timeline, strip.track, strip.strip);
        if (!strip.silent.empty())
            place << ", first at " << clockAt(timeline, strip.silent.front().from);
        if (!strip.failure.empty())
            silent.push_back("silent: " + place.str() + ": " + strip.failure);
        else if (strip.underrunSamples != 0)
            late.push_back("late: " + place.str() + ": " + std::to_string(strip.underrunSamples) +
                           " samples, " + std::to_string(strip.underrunEpisodes) + " times");
        if (strip.overload.samples != 0)
            loud.push_back("beyond full scale by itself: " + nameOf(timeline, strip.track, strip.strip) +
                           ": " + overloadText(strip.overload, timeline.sampleRate));
    }
    for (std::size_t channel = 0; channel < report.channels.size(); ++channel)
        if (report.channels[channel].samples != 0)
            clipped.push_back("clipped: channel " + std::to_string(channel + 1) + ": " +
                              overloadText(report.channels[channel], timeline.sampleRate));
    return shortened(silent) + shortened(late) + shortened(loud) + shortened(clipped) +
           summary(report, timeline, run);
}

std::string reportJson(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    Json json{{"timeline", timeline.name}, {"sampleRate", timeline.sampleRate},
              {"from", run.span.from},     {"to", run.span.to},
              {"seconds", run.seconds},    {"clips", Json::array()},
              {"channels", Json::array()}};
    for (const StripReport& strip : report.strips) {
        Json entry = placeJson(timeline, strip.track, strip.strip);
        entry["failure"] = strip.failure;
        entry["underrunSamples"] = strip.underrunSamples;
        entry["underrunEpisodes"] = strip.underrunEpisodes;
        entry["silent"] = spans(strip.silent);
        entry["overload"] = overloadJson(strip.overload);
        json["clips"].push_back(std::move(entry));
    }
    for (const Overload& channel : report.channels)
        json["channels"].push_back(overloadJson(channel));
    if (report.slowest.seconds > 0.0) {
        json["slowest"] = placeJson(timeline, report.slowest.track, report.slowest.strip);
        json["slowest"]["seconds"] = report.slowest.seconds;
    }
    // Names come from files, and may be no UTF-8.
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace audlmd::command
