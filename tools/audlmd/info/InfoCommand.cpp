#include "host/cache/SoundFile.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Progress.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/info/InfoText.hpp"
#include "tools/audlmd/options/OutputOptions.hpp"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace audlmd::command {
namespace {

constexpr const char* infoHelp =
    R"(LEVELS The peak is that of the samples, the true peak that of the wave between them. A clipped run is two or more
neighbouring samples at full scale, on one side. Loudness is measured as ITU-R BS.1770-4 and EBU R 128 say: LUFS are
decibels below full scale as heard; -inf is silence. Momentary is over 0.4 s, short-term over 3 s.

--json prints one object a line. null is minus infinity, what is not measured is not there. A file that cannot be read
has a "failure".

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

FileInfo readInfo(const std::filesystem::path& input, const InfoOptions& options) {
    const PlayableFile file = options.atHand(input);
    if (!file.note.empty())
        std::fprintf(stderr, "%s\n", file.note.c_str());
    std::optional<Progress> bar;
    try {
        FileInfo info =
            fileInfo(file.path, options.truncated(), [&](const FileInfo& read, std::int64_t done) {
                if (!bar)
                    bar.emplace(read.frames, read.sampleRate, !options.style.json);
                bar->update(done);
            });
        if (file.isDecoded)
            nameAsFilm(info);
        return info;
    } catch (const SoundFileError& error) {
        throw failureOf(input, file.path, error);
    }
}

void tellAll(const InfoOptions& options) {
    const char* between = "";
    forEachInput(
        options.inputs.size(),
        [&](std::size_t n) {
            const std::string name = options.inputs[n].string();
            const FileInfo info = readInfo(name, options);
            std::printf("%s%s", between,
                        options.style.json ? infoJson(name, info).c_str() : infoText(name, info).c_str());
            between = options.style.json ? "" : "\n";
        },
        [&](std::size_t n, const CommandError& failure) {
            if (options.style.json)
                std::fputs(failureJson(options.inputs[n].string(), failure.what()).c_str(), stdout);
        });
}

} // namespace

void addInfoCommand(CLI::App& app) {
    CLI::App* info = app.add_subcommand("info", "Tell what sound files are, and how loud");
    const auto options = std::make_shared<InfoOptions>();
    info->add_option("FILE", options->inputs, "Sound files and films; - is standard input")->required();
    info->add_flag("--json", options->style.json, "One JSON object a line, for programs");
    options->declareInput(*info);
    options->declareMaterial(*info);
    info->footer(infoHelp);
    info->callback([options] { tellAll(*options); });
}

} // namespace audlmd::command
