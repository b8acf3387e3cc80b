#include "tools/audlmd/mix/MixReportJson.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace audlmd::command {

using Json = nlohmann::json;

namespace {

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
            {"clip", timeline.tracks[track].strips[strip].name},
            {"clipNumber", strip + 1},
            {"media", timeline.tracks[track].strips[strip].media}};
}

} // namespace

Json channelJson(const Overload& channel, bool clips) {
    Json json = overloadJson(channel);
    json["clipped"] = clips ? channel.samples : 0;
    return json;
}

Json outputsJson(const std::vector<WrittenSound>& outputs) {
    Json json = Json::array();
    for (const WrittenSound& output : outputs)
        json.push_back(
            {{"output", output.path}, {"format", outputFormat(output.format).name}, {"clips", output.clips}});
    return json;
}

Json reportJson(const MixReport& report, const Timeline& timeline, const MixRun& run) {
    Json json{{"timeline", timeline.name},
              {"output", run.outputs.front().path},
              {"format", outputFormat(run.outputs.front().format).name},
              {"outputs", outputsJson(run.outputs)},
              {"picture", run.picture},
              {"page", run.page},
              {"markers", run.markers},
              {"muted", run.muted},
              {"sampleRate", timeline.sampleRate},
              {"timeReference", timeline.timeReference},
              {"from", run.span.from.number()},
              {"to", run.span.to.number()},
              {"seconds", run.seconds},
              {"exitStatus", static_cast<int>(run.status)},
              {"failure", run.failure},
              {"clips", Json::array()},
              {"channels", Json::array()},
              {"notes", Json::array()}};
    if (run.slice)
        json["slice"] = {{"number", run.slice->slice.number},
                         {"count", run.slice->slice.count},
                         {"whole", run.slice->whole}};
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
    for (const Overload& channel : report.channels)
        json["channels"].push_back(channelJson(channel, run.outputs.front().clips));
    for (std::size_t stem = 0; stem < std::min(run.stems.size(), report.stems.size()); ++stem) {
        Json entry{{"track", timeline.tracks[stem].name},
                   {"trackNumber", stem + 1},
                   {"output", run.stems[stem].path},
                   {"channels", Json::array()}};
        for (const Overload& channel : report.stems[stem])
            entry["channels"].push_back(channelJson(channel, run.stems[stem].clips));
        json["stems"].push_back(std::move(entry));
    }
    if (run.levels)
        json["levels"] = levelsJson(*run.levels);
    if (report.slowest.seconds > 0.0) {
        json["slowest"] = placeJson(timeline, report.slowest.track, report.slowest.strip);
        json["slowest"]["seconds"] = report.slowest.seconds;
    }
    return json;
}

std::string jsonText(const Json& report) {
    return report.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

/// The hash FNV-1a of 64 bits: two timelines of one name are an accident, and nobody's attack.
std::string wholeName(const Timeline& timeline, TimelineSpan span, FormatId format, Rounding rounding) {
    Json whole{{"timeline", timeline::writeJson(timeline)},
               {"from", span.from.number()},
               {"to", span.to.number()},
               {"format", outputFormat(format).name},
               {"rounding", static_cast<int>(rounding)}};
    if (timeline.foldDown)
        whole["channels"] = timeline.foldDown->routing.rows;
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const char c : jsonText(whole))
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    std::array<char, 17> text{};
    std::snprintf(text.data(), text.size(), "%016" PRIx64, hash);
    return text.data();
}

} // namespace audlmd::command
