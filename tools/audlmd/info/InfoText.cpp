#include "tools/audlmd/info/InfoText.hpp"

#include "host/signal/GainLaws.hpp"
#include "host/words/Numbers.hpp"
#include "host/words/Text.hpp"
#include "host/words/Times.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace audlmd::command {
namespace {

using Json = nlohmann::json;

/// The texts of a broadcast extension, which may fill their fields without a zero at the end.
std::vector<std::pair<std::string, std::string>> textsOf(const Metadata::Broadcast& broadcast) {
    const auto text = [](const char* field, std::size_t size) {
        std::string_view found(field, strnlen(field, size));
        // The coding history has lines.
        found.remove_suffix(found.size() - (found.find_last_not_of(" \r\n") + 1));
        return std::string(found);
    };
    std::vector<std::pair<std::string, std::string>> texts{
        {"description", text(broadcast.description, sizeof broadcast.description)},
        {"originator", text(broadcast.originator, sizeof broadcast.originator)},
        {"reference", text(broadcast.originator_reference, sizeof broadcast.originator_reference)},
        {"originated", text(broadcast.origination_date, sizeof broadcast.origination_date) + " " +
                           text(broadcast.origination_time, sizeof broadcast.origination_time)},
        {"coding history",
         text(broadcast.coding_history,
              std::min<std::size_t>(broadcast.coding_history_size, sizeof broadcast.coding_history))}};
    std::erase_if(texts, [](const auto& field) { return words::trimmed(field.second).empty(); });
    return texts;
}

/// Of each channel, for people.
std::vector<std::string> namesOf(const ChannelLayout& layout) {
    return layout.size() == 1 ? std::vector<std::string>{"mono"} : channelNames(layout);
}

/// Puts a text into a column of its table.
std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

std::string paddedLeft(const std::string& text, std::size_t width) {
    return std::string(width - std::min(width, text.size()), ' ') + text;
}

/// Lines of a label and a text; what belongs to the label before has none.
struct Lines {
    std::vector<std::string> lines;

    void add(const std::string& label, const std::string& text) {
        constexpr std::size_t labelWidth = 22;
        std::string& line = lines.emplace_back("  " + padded(label, labelWidth) + text);
        line.erase(line.find_last_not_of(' ') + 1);
    }
};

std::string channelsText(const FileInfo& info) {
    const std::string count = std::to_string(info.layout.size()) + ", ";
    const std::string name = nameOf(info.layout);
    const std::string names = channelList(info.layout);
    if (!isKnown(info.layout))
        return count + "of which the file says nothing";
    return count + (info.layout.size() == 1 || name == names ? name : name + ": " + names) +
           (info.isLayoutStated ? "" : " (as is usual; the file does not say it)");
}

void addFormat(Lines& lines, const FileInfo& info) {
    lines.add("kind", info.kind);
    lines.add("format", info.format ? std::string(outputFormat(*info.format).name) + " (" + info.coding + ")"
                                    : info.coding);
    lines.add("sample rate", std::to_string(info.sampleRate) + " Hz");
    if (info.isTruncated)
        lines.add("truncated", "the file is shorter than it says; what is there:");
    lines.add("length", words::clock(info.frames, info.sampleRate) + ", " +
                            words::counted(static_cast<std::uint64_t>(info.frames), "sample"));
    lines.add("channels", channelsText(info));
}

void addMetadata(Lines& lines, const FileInfo& info) {
    std::string chunks;
    for (const FileInfo::Chunk& chunk : info.chunks)
        chunks += (chunks.empty() ? "" : ", ") + words::printable(words::trimmed(chunk.name)) + " " +
                  std::to_string(chunk.size);
    if (!chunks.empty())
        lines.add("chunks, in bytes", chunks);
    std::string others;
    for (const std::string& other : info.metadata.others)
        others += (others.empty() ? "" : ", ") + words::printable(words::trimmed(other));
    if (!others.empty())
        lines.add("of other programs", others);
    for (const auto& [tag, text] : info.metadata.tags)
        lines.add(tagName(tag), words::printable(text, 1000));
    if (info.metadata.broadcast) {
        for (const auto& [field, text] : textsOf(*info.metadata.broadcast))
            lines.add("bext " + field, words::printable(text, 1000));
        lines.add("bext time reference",
                  words::clock(info.timeReference, info.sampleRate) + ", " +
                      words::counted(static_cast<std::uint64_t>(info.timeReference), "sample"));
    }
    std::string label = "markers";
    for (const Marker& marker : info.metadata.markers)
        lines.add(std::exchange(label, ""), words::clock(marker.position, info.sampleRate) + "  " +
                                                words::printable(marker.name, 1000));
    label = "loops";
    if (info.metadata.sampler)
        for (const SampleLoop& loop : info.metadata.sampler->loops)
            lines.add(std::exchange(label, ""), words::clock(loop.from, info.sampleRate) + " to " +
                                                    words::clock(loop.to, info.sampleRate));
}

std::string clippedText(const ClippedRuns& runs, int sampleRate) {
    return runs.count == 0 ? "none"
                           : std::to_string(runs.count) + ", longest " +
                                 words::counted(static_cast<std::uint64_t>(runs.longest), "sample") +
                                 ", first at " + words::clock(runs.first, sampleRate);
}

void addPeaks(Lines& lines, const FileInfo& info) {
    const std::vector<std::string> names = namesOf(info.layout);
    lines.add("levels, in dB", "channel     peak   true peak   clipped runs");
    for (std::size_t n = 0; n < names.size(); ++n) {
        const ChannelLevels& levels = info.levels.channels[n];
        std::string line =
            padded(names[n], 7) + paddedLeft(words::fixedText(decibelsOfGain(levels.peak), 2), 9) +
            paddedLeft(levels.truePeak ? words::fixedText(decibelsOfGain(*levels.truePeak), 2) : "", 12) +
            "   " + clippedText(levels.clipped, info.sampleRate);
        if (levels.notNumbers != 0)
            line += "; " + words::counted(levels.notNumbers, "sample") + " NaN or infinite";
        lines.add("", line);
    }
}

void addLoudness(Lines& lines, const Levels& levels) {
    if (!levels.whyNoLoudness.empty())
        return lines.add("loudness", "not defined: " + levels.whyNoLoudness);
    const auto add = [&lines](const std::string& label, const std::optional<double>& level, const char* unit,
                              const char* least) {
        lines.add(label, level ? paddedLeft(words::fixedText(*level, 1), 6) + unit
                               : std::string("not defined below ") + least);
    };
    add("integrated loudness", levels.integrated, " LUFS", "0.4 s");
    add("loudness range", levels.range, " LU", "4 s");
    add("highest momentary", levels.highestMomentary, " LUFS", "0.4 s");
    add("highest short-term", levels.highestShortTerm, " LUFS", "3 s");
}

/// Null for silence, as JSON knows no infinity.
Json levelJson(double level) {
    return std::isfinite(level) ? Json(level) : Json(nullptr);
}

Json levelsJson(const std::string& name, const ChannelLevels& levels) {
    Json json{{"name", name}, {"peak", levelJson(decibelsOfGain(levels.peak))}};
    if (levels.truePeak)
        json["truePeak"] = levelJson(decibelsOfGain(*levels.truePeak));
    json["clippedRuns"] = levels.clipped.count;
    if (levels.clipped.count != 0) {
        json["longestClippedRun"] = levels.clipped.longest;
        json["firstClippedRun"] = levels.clipped.first;
    }
    if (levels.notNumbers != 0)
        json["notNumbers"] = levels.notNumbers;
    return json;
}

Json metadataJson(const FileInfo& info) {
    Json json{{"truncated", info.isTruncated},
              {"chunks", Json::array()},
              {"otherChunks", info.metadata.others},
              {"tags", Json::object()}};
    for (const FileInfo::Chunk& chunk : info.chunks)
        json["chunks"].push_back({{"name", chunk.name}, {"bytes", chunk.size}});
    for (const auto& [tag, text] : info.metadata.tags)
        json["tags"][tagName(tag)] = text;
    if (info.metadata.broadcast) {
        for (const auto& [field, text] : textsOf(*info.metadata.broadcast))
            json["bext"][field] = text;
        json["bext"]["time reference"] = info.timeReference;
    }
    json["markers"] = Json::array();
    for (const Marker& marker : info.metadata.markers)
        json["markers"].push_back({{"at", marker.position},
                                   {"length", marker.length},
                                   {"name", marker.name},
                                   {"comment", marker.comment}});
    json["loops"] = Json::array();
    if (info.metadata.sampler)
        for (const SampleLoop& loop : info.metadata.sampler->loops)
            json["loops"].push_back({{"from", loop.from}, {"to", loop.to}});
    return json;
}

} // namespace

std::vector<std::string> infoLines(const std::string& name, const FileInfo& info) {
    Lines lines{{words::printable(name, 1000)}};
    addFormat(lines, info);
    addMetadata(lines, info);
    addPeaks(lines, info);
    addLoudness(lines, info.levels);
    return std::move(lines.lines);
}

Json infoJson(const FileInfo& info) {
    Json json = metadataJson(info);
    json["kind"] = info.kind;
    json["coding"] = info.coding;
    if (info.format)
        json["format"] = outputFormat(*info.format).name;
    json["sampleRate"] = info.sampleRate;
    json["frames"] = info.frames;
    json["duration"] = static_cast<double>(info.frames) / info.sampleRate;
    json["layout"] = nameOf(info.layout);
    json["layoutIsStated"] = info.isLayoutStated;
    json["channels"] = Json::array();
    const std::vector<std::string> names = namesOf(info.layout);
    for (std::size_t n = 0; n < names.size(); ++n)
        json["channels"].push_back(levelsJson(names[n], info.levels.channels[n]));
    const std::pair<const char*, std::optional<double>> loudness[]{
        {"integrated", info.levels.integrated},
        {"range", info.levels.range},
        {"highestMomentary", info.levels.highestMomentary},
        {"highestShortTerm", info.levels.highestShortTerm}};
    json["loudness"] = Json::object();
    for (const auto& [key, level] : loudness)
        if (level)
            json["loudness"][key] = levelJson(*level);
    return json;
}

} // namespace audlmd::command
