#include "host/cache/SoundFile.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/JobLog.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/info/InfoText.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace audlmd::command {
namespace {

constexpr const char* infoHelp =
    R"(LEVELS The peak is that of the samples, the true peak that of the wave between them. A clipped run is two or more
neighbouring samples at full scale, on one side. Loudness is measured as ITU-R BS.1770-4 and EBU R 128 say: LUFS are
decibels below full scale as heard; -inf is silence. Momentary is over 0.4 s, short-term over 3 s.

--json prints an object a line for each file: its "event" is "result", or "error" where it cannot be read. What takes
more than two seconds also has lines of "progress", but for --quiet. null is minus infinity, and what is not defined is
not there.

EXAMPLES
  audlmd info song.wav
  audlmd info song.wav take.flac --json
  ffmpeg -i film.mkv -f wav - | audlmd info -)";

struct InfoOptions : InputOptions {
    std::vector<std::filesystem::path> inputs;
};

/// In place of what the file of its decoded samples is.
void nameAsFilm(FileInfo& info) {
    info.kind = "film";
    info.coding = "decoded by ffmpeg";
    info.format.reset();
    info.chunks.clear();
    if (info.metadata.broadcast)
        info.metadata.broadcast->coding_history_size = 0;
}

FileInfo readInfo(const std::filesystem::path& input, const InfoOptions& options, const JobLog& log) {
    // In seconds. Who waits no longer needs no progress.
    constexpr double soon = 2.0;
    const PlayableFile file = options.atHand(input);
    log.note(file.note);
    std::optional<Progress> progress;
    try {
        FileInfo info =
            fileInfo(file.path, options.truncated(), [&](const FileInfo& read, std::int64_t frames) {
                if (!progress)
                    progress.emplace(read.frames, read.sampleRate, log);
                if (progress->elapsed() > soon)
                    progress->update(frames);
            });
        if (file.isDecoded)
            nameAsFilm(info);
        return info;
    } catch (const SoundFileError& error) {
        throw failureOf(input, file.path, error);
    }
}

/// `told`: whether a file has been told of before.
void tell(const std::string& input, const InfoOptions& options, bool& told) {
    const JobLog log(stdout, options.style, input);
    log.run([&] {
        const FileInfo info = readInfo(input, options, log);
        if (std::exchange(told, true) && !options.style.json)
            std::puts("");
        log.result(infoLines(input, info), [&] { return infoJson(info); });
    });
}

void tellAll(const InfoOptions& options) {
    bool told = false;
    forEachInput(options.inputs.size(),
                 [&](std::size_t n) { tell(options.inputs[n].string(), options, told); });
}

} // namespace

void addInfoCommand(CLI::App& app) {
    CLI::App* info = app.add_subcommand("info", "Tell what sound files are, and how loud");
    const auto options = std::make_shared<InfoOptions>();
    info->add_option("FILE", options->inputs, "Sound files and films; - is standard input")->required();
    info->add_flag("--json", options->style.json, "Tell programs: an object a line");
    info->add_flag("--quiet", options->style.quiet, "No progress");
    options->declareInput(*info);
    options->declareMaterial(*info);
    info->footer(infoHelp);
    info->callback([options] { tellAll(*options); });
}

} // namespace audlmd::command
