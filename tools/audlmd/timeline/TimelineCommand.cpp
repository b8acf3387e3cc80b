#include "standalone/cache/SoundFile.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/options/Parsers.hpp"
#include "tools/timeline/TimelineFiles.hpp"

#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <system_error>

namespace audlmd::command {
namespace {

/// `timeline` as it was written.
struct TimelineOptions {
    std::filesystem::path input;
    std::string as = "text";
    /// In samples per second.
    int rate = 48000;
    std::size_t channels = 2;
};

std::string readText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(std::istreambuf_iterator<char>(file), {});
    // A folder opens, and fails only when it is read.
    if (!file.is_open() || file.bad() || std::filesystem::is_directory(path))
        throw CommandError(
            "cannot read '" + path.string() +
            "': " + std::generic_category().message(std::filesystem::is_directory(path) ? EISDIR : errno));
    return text;
}

/// Asks the file itself, for timelines that do not say how long it is. A file that is not there, or that is
/// no sound file, is nothing: the reader then says which clip lacks a length.
std::optional<timeline::MediaFacts> factsOf(const std::string& media) {
    try {
        const SoundFile file(media);
        return timeline::MediaFacts{.length = file.frames(), .sampleRate = file.sampleRate()};
    } catch (const SoundFileError&) {
        return std::nullopt;
    }
}

void showTimeline(const TimelineOptions& options) {
    const timeline::ReadOptions how{
        .sampleRate = options.rate,
        .channels = options.channels,
        .folder = std::filesystem::absolute(options.input).parent_path(),
        .media = &factsOf,
        .band = [](std::string_view text) { return parseBand(text, "equaliser"); }};
    const Timeline read = timeline::readTimeline(readText(options.input), how);
    const std::string shown =
        options.as == "json" ? timeline::writeJson(read).dump(2) + "\n" : timeline::list(read);
    std::fputs(shown.c_str(), stdout);
}

} // namespace

void addTimelineCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("timeline", "List what sounds when in a timeline");
    command->footer(
        "FILE is OpenTimelineIO JSON (.otio), or the short JSON of our own that --as json writes.\n"
        "What the player would not play as it is written stands in notes below the table.\n\n"
        "Examples:\n"
        "  audlmd timeline film.otio\n"
        "  audlmd timeline film.otio --as json > film.json");
    const auto options = std::make_shared<TimelineOptions>();
    command->add_option("FILE", options->input, "A timeline")->required();
    command->add_option("--as", options->as, "text (a table, the default) or json")
        ->check(CLI::IsMember({"text", "json"}));
    command->add_option("--rate", options->rate, "Output samples per second (default 48000)")
        ->option_text("HZ")
        ->check(CLI::Range(1000, 384000));
    command->add_option("--channels", options->channels, "Output channels (default 2)")
        ->option_text("N")
        ->check(CLI::Range(1, 64));
    command->callback([options] { showTimeline(*options); });
}

} // namespace audlmd::command
