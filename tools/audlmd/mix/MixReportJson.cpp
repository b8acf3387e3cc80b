#include "tools/audlmd/mix/MixReportJson.hpp"

#include "host/timeline/ReportText.hpp"
#include "host/timeline/TimelineFiles.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <utility>

namespace audlmd::command {

using Json = nlohmann::json;

namespace {

/// What of each channel's overload a format has clipped.
void addClipped(Json& channels, bool clips) {
    for (Json& channel : channels)
        channel["clipped"] = clips ? channel["samples"] : Json(0);
}

} // namespace

Json channelsJson(const std::vector<Overload>& channels, bool clips) {
    MixReport report;
    report.channels = channels;
    Json json = std::move(Json::parse(timeline::writeReport(report, {}))["channels"]);
    addClipped(json, clips);
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
    Json json = Json::parse(timeline::writeReport(report, timeline));
    json.update({{"timeline", timeline.name},
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
                 {"failure", run.failure}});
    if (run.slice)
        json["slice"] = {{"number", run.slice->slice.number},
                         {"count", run.slice->slice.count},
                         {"whole", run.slice->whole}};
    addClipped(json["channels"], run.outputs.front().clips);
    for (std::size_t stem = 0; stem < std::min(run.stems.size(), report.stems.size()); ++stem) {
        json["stems"][stem]["output"] = run.stems[stem].path;
        addClipped(json["stems"][stem]["channels"], run.stems[stem].clips);
        if (run.levels)
            json["stems"][stem]["levels"] = levelsJson(run.levels->stems[stem]);
    }
    if (run.levels)
        json["levels"] = levelsJson(*run.levels);
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
