#include "tools/audlmd/join/SliceReports.hpp"

#include "host/signal/StripPlan.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <algorithm>
#include <fstream>
#include <map>
#include <system_error>
#include <utility>

namespace audlmd::command {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;

[[noreturn]] void fail(const Path& path, const std::string& why) {
    throw CommandError(words::quoted(path.string()) + ": " + why, ExitStatus::input);
}

SliceReport readSlice(const Path& path) {
    SliceReport slice{.path = path};
    std::ifstream file(path);
    if (!file)
        fail(path, "this report cannot be read");
    try {
        slice.json = Json::parse(file);
        const Json& part = slice.json.at("slice");
        part.at("number").get_to(slice.number);
        part.at("count").get_to(slice.count);
        part.at("whole").get_to(slice.whole);
        slice.json.at("from").get_to(slice.from);
        slice.json.at("to").get_to(slice.to);
        slice.json.at("timeReference").get_to(slice.timeReference);
        slice.json.at("sampleRate").get_to(slice.sampleRate);
        slice.channels = static_cast<int>(slice.json.at("channels").size());
        slice.format = parseFormat(slice.json.at("format").get<std::string>(), "format");
        slice.sound = slice.json.at("output").get<std::string>();
        if (const std::string why = slice.json.at("failure"); !why.empty())
            fail(path, "this slice failed, so mix it again: " + why);
        if (slice.from < 0 || slice.to <= slice.from || slice.to > farthestPosition)
            fail(path, "its samples from " + std::to_string(slice.from) + " to " + std::to_string(slice.to) +
                           " are no slice");
    } catch (const Json::exception&) {
        fail(path, "this is no report of a slice, as mix --slice K/N --report FILE.json writes it");
    }
    std::error_code none;
    if (!std::filesystem::exists(slice.sound, none))
        slice.sound = path.parent_path() / slice.sound.filename();
    return slice;
}

/// Appends spans of later samples. What the border of two slices has cut is one span again.
void addSpans(Json& sum, const Json& other) {
    for (const Json& span : other) {
        if (!sum.empty() && sum.back()[1] == span[0])
            sum.back()[1] = span[1];
        else
            sum.push_back(span);
    }
}

void addOverload(Json& sum, const Json& other) {
    if (sum["peak"].is_null() || (other["peak"].is_number() && sum["peak"] < other["peak"]))
        sum["peak"] = other["peak"];
    if (other["samples"] == 0)
        return;
    if (sum["samples"] == 0) {
        sum["first"] = other["first"];
        sum["spans"] = Json::array();
    }
    sum["samples"] = sum["samples"].get<std::uint64_t>() + other["samples"].get<std::uint64_t>();
    addSpans(sum["spans"], other["spans"]);
}

void addNumber(Json& sum, const Json& other, const char* key) {
    sum[key] = sum[key].get<double>() + other[key].get<double>();
}

void addCount(Json& sum, const Json& other, const char* key) {
    sum[key] = sum[key].get<std::uint64_t>() + other[key].get<std::uint64_t>();
}

void addClip(Json& sum, const Json& other) {
    if (sum["failure"] == "")
        sum["failure"] = other["failure"];
    addCount(sum, other, "underrunSamples");
    addCount(sum, other, "underrunEpisodes");
    addSpans(sum["silent"], other["silent"]);
    addOverload(sum["overload"], other["overload"]);
}

void addReport(Json& whole, std::map<std::pair<std::int64_t, std::int64_t>, Json>& clips, const Json& other) {
    whole["to"] = other["to"];
    addNumber(whole, other, "seconds");
    whole["exitStatus"] = std::max(whole["exitStatus"].get<int>(), other["exitStatus"].get<int>());
    for (std::size_t channel = 0; channel < whole["channels"].size(); ++channel) {
        Json& sum = whole["channels"][channel];
        addOverload(sum, other["channels"][channel]);
        addCount(sum, other["channels"][channel], "clipped");
    }
    for (const Json& note : other["notes"])
        if (std::ranges::find(whole["notes"], note) == whole["notes"].end())
            whole["notes"].push_back(note);
    if (other.contains("slowest") &&
        (!whole.contains("slowest") || whole["slowest"]["seconds"] < other["slowest"]["seconds"]))
        whole["slowest"] = other["slowest"];
    for (const Json& clip : other["clips"]) {
        const auto [known, isNew] = clips.try_emplace({clip["trackNumber"], clip["clipNumber"]}, clip);
        if (!isNew)
            addClip(known->second, clip);
    }
}

void requireBelongTogether(const std::vector<SliceReport>& slices) {
    const SliceReport& first = slices.front();
    const std::string one = words::quoted(first.path.string());
    for (const SliceReport& slice : slices)
        if (slice.whole != first.whole || slice.count != first.count)
            fail(slice.path, "this slice belongs to another mix than " + one +
                                 ": to another timeline, part or format, or to the timeline before it was "
                                 "changed; mix it again");
    std::int64_t wanted = 1;
    std::int64_t end = first.from;
    for (const SliceReport& slice : slices) {
        if (slice.number < wanted)
            fail(slice.path, "slice " + std::to_string(slice.number) + " is there twice");
        if (slice.number > wanted)
            break;
        if (slice.from != end)
            fail(slice.path, "it begins at sample " + std::to_string(slice.from) +
                                 ", but the slice before ends at " + std::to_string(end));
        end = slice.to;
        ++wanted;
    }
    if (wanted != first.count + 1)
        throw CommandError("slice " + std::to_string(wanted) + " of " + std::to_string(first.count) +
                               " is missing beside " + one,
                           ExitStatus::input);
}

} // namespace

std::vector<SliceReport> readSlices(const std::vector<Path>& reports) {
    std::vector<SliceReport> slices;
    for (const Path& report : reports)
        slices.push_back(readSlice(report));
    std::ranges::stable_sort(slices, {}, &SliceReport::number);
    requireBelongTogether(slices);
    return slices;
}

Json mergedReport(const std::vector<SliceReport>& slices, const std::string& output) try {
    Json whole = slices.front().json;
    whole.erase("slice");
    // Each is joined by itself.
    whole.erase("stems");
    whole["output"] = output;
    std::map<std::pair<std::int64_t, std::int64_t>, Json> clips;
    for (const Json& clip : whole["clips"])
        clips.try_emplace({clip["trackNumber"], clip["clipNumber"]}, clip);
    for (std::size_t n = 1; n < slices.size(); ++n)
        addReport(whole, clips, slices[n].json);
    whole["clips"] = Json::array();
    for (auto& [place, clip] : clips)
        whole["clips"].push_back(std::move(clip));
    return whole;
} catch (const Json::exception&) {
    throw CommandError("the reports of the slices cannot be merged, because one of them is damaged: mix "
                       "that slice again",
                       ExitStatus::input);
}

} // namespace audlmd::command
