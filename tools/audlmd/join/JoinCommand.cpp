#include "host/cache/SoundFile.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/words/StripWords.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/ContainerFile.hpp"
#include "tools/audlmd/join/JoinOptions.hpp"
#include "tools/audlmd/join/Slices.hpp"
#include "tools/audlmd/mix/Mix.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

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

/// The inputs one behind the other, on one track.
class Sequence {
public:
    Sequence(const JoinOptions& options) : options_(options) {
        timeline_.channels = 0;
        timeline_.tracks.emplace_back();
        for (const std::filesystem::path& input : options.inputs)
            append(input);
        timeline_.length = end_;
    }

    Timeline timeline() && { return std::move(timeline_); }

    /// The format of all inputs, where each is copied as it is.
    std::optional<FormatId> format() const { return format_; }

private:
    void append(const std::filesystem::path& input) {
        const PlayableFile playable = options_.decoding.playable(input, std::nullopt, options_.style);
        const Media media = openSoundFile(playable.path.string(), options_.truncated());
        const bool isFirst = timeline_.channels == 0;
        if (isFirst)
            timeline_.sampleRate = options_.rate.value_or(media.sampleRate);
        noteFormat(playable.path, media, isFirst);
        if (media.channels.size() > timeline_.channels) {
            timeline_.channels = media.channels.size();
            timeline_.layout = layoutOf(media);
        }
        const std::int64_t length =
            convertedTo(media.channels.front(), media.sampleRate, timeline_.sampleRate)->length();
        if (length == 0)
            throw CommandError(words::quoted(input.string()) + " holds no samples", ExitStatus::input);
        // Not the sound that may stand beside a film.
        place(input, playable.isDecoded ? input.string() + "#stream=1" : input.string(), length);
    }

    void noteFormat(const std::filesystem::path& input, const Media& media, bool isFirst) {
        const std::optional<FormatId> format = ContainerFile(input).format();
        const bool isAlike = isFirst || (format == format_ && media.channels.size() == timeline_.channels);
        const bool isCopied =
            !options_.crossfade && media.sampleRate == timeline_.sampleRate && format != FormatId::s32;
        format_ = isAlike && isCopied ? format : std::nullopt;
    }

    void place(const std::filesystem::path& input, const std::string& media, std::int64_t length) {
        std::vector<TimelineStrip>& strips = timeline_.tracks.front().strips;
        const std::int64_t overlap =
            options_.crossfade ? options_.crossfade->length.samples(timeline_.sampleRate) : 0;
        TimelineStrip strip;
        strip.name = input.filename().string();
        strip.media = media;
        strip.length = length;
        strip.settings.to = length;
        if (overlap != 0 && !strips.empty()) {
            FadePlan& before = strips.back().settings.fade;
            before.fadeOutSamples = static_cast<std::uint64_t>(overlap);
            before.fadeOutCurve = strip.settings.fade.fadeInCurve = options_.crossfade->curve;
            strip.settings.fade.fadeInSamples = before.fadeOutSamples;
            end_ -= overlap;
        }
        if (overlap * (strips.empty() || &input == &options_.inputs.back() ? 1 : 2) > length)
            throw CommandError("--crossfade: " + words::quoted(input.string()) +
                               " is too short to be crossfaded for " + options_.crossfade->length.text() +
                               " at each side that has a neighbour");
        strip.at = end_;
        end_ += length;
        strips.push_back(std::move(strip));
    }

    const JoinOptions& options_;
    Timeline timeline_;
    std::int64_t end_ = 0;
    std::optional<FormatId> format_;
};

void join(const JoinOptions& options) {
    if (options.output.empty())
        throw CommandError("name the file to write with -o");
    if (options.slices)
        return joinSlices(options);
    if (options.inputs.size() < 2)
        throw CommandError("INPUT: name two files at least");
    Sequence sequence(options);
    MixOptions mix;
    static_cast<OutputOptions&>(mix) = options;
    mix.report = options.report;
    for (const std::filesystem::path& input : options.inputs)
        mix.timeline += (mix.timeline.empty() ? "" : ", ") + input.string();
    const FileKind* const kind = options.kind ? *options.kind : findFileKind(options.output);
    if (!mix.format && sequence.format() && kind != nullptr && subtypeIn(*kind, *sequence.format()))
        mix.format = sequence.format();
    // What cannot be read is refused: a join with a gap is none.
    mix.strict = true;
    Timeline timeline = std::move(sequence).timeline();
    timeline.foldDown = options.channels.foldDownOf(layoutOf(timeline), "the joined files");
    runMix(mix, std::move(timeline));
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
