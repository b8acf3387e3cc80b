#include "tools/audlmd/join/Slices.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/mix/Media.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/mix/MixReportJson.hpp"

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <system_error>
#include <utility>

namespace audlmd::command {
namespace {

using Json = nlohmann::json;
using Path = std::filesystem::path;

[[noreturn]] void fail(const Path& path, const std::string& why, ExitStatus status = ExitStatus::input) {
    throw CommandError(words::quoted(path.string()) + ": " + why, status);
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

/// As it is at the end: with the samples that the report names.
ContainerFile openSlice(const SliceReport& slice) {
    SF_INFO headerless{};
    if (findFileKind(slice.sound) == &rawFileKind())
        headerless = {.frames = 0,
                      .samplerate = slice.sampleRate,
                      .channels = slice.channels,
                      .format = rawFileKind().type | *subtypeIn(rawFileKind(), slice.format),
                      .sections = 0,
                      .seekable = 0};
    else
        static_cast<void>(SoundFile(slice.sound)); // Throws with better words than libsndfile's.
    ContainerFile file(slice.sound, headerless);
    // A file does not tell that of its 32 bits only 24 are used.
    const FormatId stored = slice.format == FormatId::s24in32 ? FormatId::s32 : slice.format;
    const SF_INFO& info = file.info();
    if (info.frames != slice.to - slice.from || info.samplerate != slice.sampleRate ||
        info.channels != slice.channels || file.format() != stored)
        fail(slice.sound, "these samples are not those that " + words::quoted(slice.path.string()) +
                              " tells of: mix the slice again");
    return file;
}

/// The samples of one slice behind those of the other.
class SliceChunks final : public ChunkProducer {
public:
    explicit SliceChunks(const std::vector<SliceReport>& slices) : slices_(slices) {}

    std::size_t parts() const override { return 1; }

    void fill(std::size_t /*part*/, Chunk& chunk) override {
        const FormatId format = slices_.front().format;
        const std::size_t bytes = outputFormat(format).bytes;
        std::size_t filled = 0;
        while (filled < chunk.frames) {
            if (left_ == 0)
                openNext();
            const auto frames = static_cast<std::size_t>(
                std::min<std::int64_t>(left_, static_cast<std::int64_t>(chunk.frames - filled)));
            interleaved_.resize(frames * chunk.channels.size() * bytes);
            file_->read(format, interleaved_.data(), frames);
            std::vector<std::byte*> channels;
            for (std::vector<std::byte>& channel : chunk.channels)
                channels.push_back(channel.data() + filled * bytes);
            deinterleave(interleaved_.data(), bytes, frames, channels);
            filled += frames;
            left_ -= static_cast<std::int64_t>(frames);
        }
    }

private:
    void openNext() {
        file_.emplace(openSlice(slices_[next_]));
        left_ = slices_[next_].to - slices_[next_].from;
        ++next_;
    }

    const std::vector<SliceReport>& slices_;
    std::size_t next_ = 0;
    /// Frames of the open slice.
    std::int64_t left_ = 0;
    std::optional<ContainerFile> file_;
    std::vector<std::byte> interleaved_;
};

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

/// What the whole says beside its samples: what the slices say, each at its place.
Metadata wholeMetadata(const std::vector<SliceReport>& slices) {
    Metadata whole = readMetadata(slices.front().sound);
    // Written anew, as for the whole.
    whole.broadcast.reset();
    whole.markers.clear();
    for (const SliceReport& slice : slices)
        for (Marker marker : readMetadata(slice.sound).markers) {
            marker.position += slice.from - slices.front().from;
            whole.markers.push_back(std::move(marker));
        }
    return whole;
}

void requireAsTheyAre(const JoinOptions& options) {
    if (options.crossfade || options.rate || options.format || options.channels.channels ||
        options.channels.map || options.dither || options.truncate)
        throw CommandError("--slices joins the slices as they are: say in mix how they are to be");
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

void joinSlices(const JoinOptions& options) {
    requireAsTheyAre(options);
    const Outputs outputs(options.output, options.kind.value_or(nullptr), {options.report});
    const std::vector<SliceReport> slices = readSlices(options.inputs);
    for (const SliceReport& slice : slices) {
        outputs.requireOther(slice.path, "the report of a slice");
        outputs.requireOther(slice.sound, "a slice");
        static_cast<void>(openSlice(slice)); // All of them, before anything is written.
    }
    const SliceReport& first = slices.front();
    OutputLayout layout{.format = first.format,
                        .channels = first.channels,
                        .sampleRate = first.sampleRate,
                        .frames = slices.back().to - first.from,
                        .timeReference = first.timeReference + first.from};
    if (findFileKind(first.sound) != &rawFileKind()) {
        layout.speakers = layoutOf(openSoundFile(first.sound.string()));
        layout.metadata = wholeMetadata(slices);
    }
    const Json report = mergedReport(slices, options.output.string());
    const JobLog log(outputs.report(), options.style, options.output.string());
    OutputFile output(*outputs.sound(), layout);
    Progress progress(layout.frames, layout.sampleRate, log);
    SliceChunks chunks(slices);
    ChunkWriter(chunks, layout, options.block).run(output, [&](std::int64_t done) { progress.update(done); });
    output.commit();
    for (const std::string& note : output.notes())
        log.note(note);
    if (!options.report.empty())
        writeOutput(OutputPath(options.report), jsonText(report));
    std::vector<std::string> lines;
    if (!options.style.quiet)
        lines.push_back("joined " + words::counted(slices.size(), "slice") + ", " +
                        std::to_string(layout.frames) + " samples, as they are");
    log.result(lines, report);
    if (report["exitStatus"] == static_cast<int>(ExitStatus::incomplete))
        throw CommandError(
            "'" + options.output.string() +
                "' is written, but a slice of it is incomplete: its report tells what is silent",
            ExitStatus::incomplete);
}

} // namespace audlmd::command
