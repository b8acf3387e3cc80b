#include "host/timeline/ReportText.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/Json.hpp"

#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace audlmd::timeline {
namespace {

template <class Clock>
Json spans(const std::vector<Span<Clock>>& spans) {
    Json json = Json::array();
    for (const Span<Clock> span : spans)
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

Json placeJson(const Timeline& timeline, const StripKey& key) {
    const TimelineTrack& track = timeline.tracks[key.track];
    return {{"track", track.name},
            {"trackNumber", key.track + 1},
            {"clip", track.strips[key.strip].name},
            {"clipNumber", key.strip + 1},
            {"media", track.strips[key.strip].media}};
}

Json clipsJson(const std::vector<StripReport>& strips, const Timeline& timeline) {
    Json clips = Json::array();
    for (const StripReport& strip : strips) {
        Json entry = placeJson(timeline, strip);
        entry["failure"] = strip.failure;
        entry["underrunSamples"] = strip.underrunSamples;
        entry["underrunEpisodes"] = strip.underrunEpisodes;
        entry["silent"] = spans(strip.silent);
        entry["overload"] = overloadJson(strip.overload);
        clips.push_back(std::move(entry));
    }
    return clips;
}

Json channelsJson(const std::vector<Overload>& channels) {
    Json json = Json::array();
    for (const Overload& channel : channels)
        json.push_back(overloadJson(channel));
    return json;
}

std::string textOf(const Json& report) {
    return report.dump(2, ' ', false, Json::error_handler_t::replace);
}

} // namespace

std::string writeReport(const MixReport& report, const Timeline& timeline) {
    Json json{{"clips", clipsJson(report.strips, timeline)},
              {"channels", channelsJson(report.channels)},
              {"notes", Json::array()}};
    for (std::size_t track = 0; track < report.stems.size(); ++track)
        json["stems"].push_back({{"track", timeline.tracks[track].name},
                                 {"trackNumber", track + 1},
                                 {"channels", channelsJson(report.stems[track])}});
    for (const TimelineNote& note : timeline.notes)
        json["notes"].push_back({{"where", note.where},
                                 {"text", note.text},
                                 {"at", note.at ? Json(note.at->number()) : Json(nullptr)},
                                 {"silences", note.silences}});
    if (report.slowest.seconds > 0.0) {
        json["slowest"] = placeJson(timeline, report.slowest);
        json["slowest"]["seconds"] = report.slowest.seconds;
    }
    return textOf(json);
}

std::string writeReport(const LiveReport& report, const LiveUnderruns& underruns, const Timeline& timeline) {
    return textOf({{"sound",
                    {{"failure", report.sound.failure},
                     {"lateSamples", report.sound.lateSamples},
                     {"lateEpisodes", report.sound.lateEpisodes},
                     {"late", spans(report.sound.late)}}},
                   {"starvedFrames", underruns.starvedFrames},
                   {"starvedEpisodes", underruns.starvedEpisodes},
                   {"clips", clipsJson(report.strips, timeline)}});
}

} // namespace audlmd::timeline
