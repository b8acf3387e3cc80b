#include "tools/audlmd/join/Slices.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/mix/Media.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/files/ChunkWriter.hpp"
#include "tools/audlmd/files/ContainerFile.hpp"
#include "tools/audlmd/files/Outputs.hpp"
#include "tools/audlmd/files/SampleLayouts.hpp"
#include "tools/audlmd/join/SliceReports.hpp"
#include "tools/audlmd/mix/MixReportJson.hpp"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace audlmd::command {
namespace {

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
        throw CommandError(words::quoted(slice.sound.string()) + ": these samples are not those that " +
                               words::quoted(slice.path.string()) + " tells of: mix the slice again",
                           ExitStatus::input);
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

OutputLayout wholeLayout(const std::vector<SliceReport>& slices) {
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
    return layout;
}

/// Whether what is beyond full scale was clipped in the first output of the slices.
bool clips(const nlohmann::json& report) {
    const nlohmann::json outputs = report.value("outputs", nlohmann::json::array());
    return !outputs.empty() && outputs.front().value("clips", false);
}

void requireAsTheyAre(const JoinOptions& options) {
    if (options.crossfade || options.rate || options.format || options.channels.channels ||
        options.channels.map || options.dither || options.truncate)
        throw CommandError("--slices joins the slices as they are: say in mix how they are to be");
}

} // namespace

void joinSlices(const JoinOptions& options) {
    requireAsTheyAre(options);
    const Outputs outputs(options.outputs, options.kind.value_or(nullptr), {options.report});
    const std::vector<SliceReport> slices = readSlices(options.inputs);
    for (const SliceReport& slice : slices) {
        outputs.requireOther(slice.path, "the report of a slice");
        outputs.requireOther(slice.sound, "a slice");
        static_cast<void>(openSlice(slice)); // All of them, before anything is written.
    }
    const OutputLayout layout = wholeLayout(slices);
    nlohmann::json report = mergedReport(slices, options.outputs.front().string());
    std::vector<WrittenSound> written;
    for (const std::filesystem::path& path : options.outputs)
        written.push_back({path.string(), layout.format, clips(report)});
    report["outputs"] = outputsJson(written);
    const JobLog log(outputs.report(), options.style, options.outputNames());
    std::vector<SoundOutput> joined;
    for (const OutputTarget& target : outputs.sounds())
        joined.push_back({target, layout});
    SoundOutputs output(std::move(joined));
    Progress progress(layout.frames, layout.sampleRate, log);
    SliceChunks chunks(slices);
    ChunkWriter(chunks, layout, options.block)
        .run([&](const Chunk& chunk) { output.write(chunk); },
             [&](std::int64_t done) { progress.update(done); });
    output.commit();
    for (const std::string& note : output.notes())
        log.note(note);
    if (!options.report.empty())
        writeOutput(OutputPath(options.report), jsonText(report));
    std::vector<std::string> lines;
    if (!options.style.quiet)
        lines.push_back("joined " + words::counted(slices.size(), "slice") + ", " +
                        std::to_string(layout.frames) + " samples, as they are");
    log.result(lines, [&] { return report; });
    if (report["exitStatus"] == static_cast<int>(ExitStatus::incomplete))
        throw CommandError(
            outputs.soundNames() +
                " is written, but a slice of it is incomplete: its report tells what is silent",
            ExitStatus::incomplete);
}

} // namespace audlmd::command
