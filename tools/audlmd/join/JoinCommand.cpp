#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/join/JoinOptions.hpp"
#include "tools/audlmd/join/Slices.hpp"
#include "tools/audlmd/mix/Mix.hpp"
#include "tools/audlmd/mix/SoundTimeline.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

namespace audlmd::command {
namespace {

constexpr const char* joinHelp =
    R"(The files follow each other without a gap, each at its full level. With --crossfade each overlaps the one before by
that time, and the two fade into each other: by constant power, or as --crossfade 20ms:linear says.

The output has the first file's rate and the most channels that any of them has; others are converted, and folded as
in mix. Without --format it is that of the files, where all have one of 24 bits at most and nothing is converted or
crossfaded.

SLICES of one mix are joined as they are: with --slices the inputs are their reports, in any order. Each slice
must be there once, and of the same timeline, part and format; --report merges their reports.

EXAMPLES
  audlmd join intro.wav part1.wav part2.wav -o whole.wav
  audlmd join a.wav b.wav -o ab.flac --crossfade 20ms
  audlmd mix film.json -o 1.wav --slice 1/2 --report 1.json      (and 2.wav)
  audlmd join --slices 1.json 2.json -o film.wav)";

/// A fade without a curve has that of constant power, because two takes are seldom alike.
FadeValue parseCrossfade(std::string_view text, std::string_view option) {
    const std::string_view last = text.substr(text.rfind(':') + 1);
    const bool hasCurve = words::valueOf(words::curveWords, last).has_value();
    return parseFade(std::string(text) + (hasCurve ? "" : ":power"), option);
}

void join(const JoinOptions& options) {
    if (options.outputs.empty())
        throw CommandError("name the file to write with -o");
    if (options.slices)
        return joinSlices(options);
    if (options.inputs.size() < 2)
        throw CommandError("INPUT: name two files at least");
    SoundTimeline sequence(options);
    for (const std::filesystem::path& input : options.inputs)
        sequence.append(input, options.crossfade);
    MixOptions mix;
    static_cast<OutputOptions&>(mix) = options;
    mix.report = options.report;
    for (const std::filesystem::path& input : options.inputs)
        mix.timeline += (mix.timeline.empty() ? "" : ", ") + input.string();
    // Without a name that says its kind, an output gets floats.
    if (options.kind || std::ranges::all_of(options.outputs, [](const auto& output) {
            return findFileKind(output) != nullptr;
        }))
        mix.kept = sequence.format();
    // What cannot be read is refused: a join with a gap is none.
    mix.strict = true;
    runMix(mix, std::move(sequence).timeline());
}

} // namespace

void JoinOptions::declare(CLI::App& join) {
    join.add_option("INPUT", inputs, "Sound files and films, in their order")->required();
    declareOutput(join, "The file to write",
                  {.rate = "the first input's", .channels = "the most of any input"}, mostMixBlock);
    addParsed(join, "--crossfade", crossfade, &parseCrossfade,
              "Overlap the files by this time, and fade between them")
        ->option_text("TIME[:CURVE]")
        ->group("Sound");
    join.add_flag("--slices", slices, "The inputs are the reports of the slices of one mix")->group("Slices");
    join.add_option("--report", report, "Write what was silent, late or clipped, as JSON")
        ->option_text("FILE.json")
        ->group("Output");
    join.footer(joinHelp);
}

void addJoinCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand("join", "Put sound files one behind the other, with crossfades");
    const auto options = std::make_shared<JoinOptions>();
    options->declare(*command);
    command->callback([options] { join(*options); });
}

} // namespace audlmd::command
