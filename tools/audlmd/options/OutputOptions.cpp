#include "tools/audlmd/options/OutputOptions.hpp"

#include "host/cache/SoundFile.hpp"
#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"
#include "tools/audlmd/options/Parsers.hpp"

#include <algorithm>
#include <utility>

namespace audlmd::command {

void RenderingOptions::declareRendering(CLI::App& app, const std::string& group, const Defaults& defaults) {
    channels.declare(app, group, defaults.channels);
    addParsed(app, "--rate", rate, &parseRate,
              "Samples per second, such as 48000 or 44.1k (default: " + defaults.rate + ")")
        ->option_text("HZ")
        ->group(group);
    declareMaterial(app);
    app.add_flag("--through-tables", throughTables,
                 "Render through the loaded library, as a host does; changes no sample")
        ->group(group);
}

RenderFunctionLookUp<Unclipped> RenderingOptions::inlined() const {
    return throughTables ? nullptr : &inlinedRenderFunction;
}

void InputOptions::declareInput(CLI::App& app) {
    constexpr const char* group = "Input";
    addParsed(app, "--input-format", inputFormat, &parseFormat, "Of samples without a header: f32, s16, ...")
        ->option_text("FORMAT")
        ->group(group);
    addParsed(app, "--input-rate", inputRate, &parseRate, "Their samples per second")
        ->option_text("HZ")
        ->group(group);
    app.add_option("--input-channels", inputChannels, "Their channels")
        ->option_text("N")
        ->check(CLI::Range(1, 1024))
        ->group(group);
    decoding.declareStream(app, group);
}

void InputOptions::declareRelabel(CLI::App& app) {
    addParsed(app, "--relabel", relabel, &parseRelabel,
              "Take the input at another rate, with its pitch: 25:24 is slower, 24000/1001:24 faster")
        ->option_text("FROM:TO")
        ->group("Input");
}

void InputOptions::declareMaterial(CLI::App& app) {
    decoding.declareCache(app, "Input");
    app.add_flag("--partial", partial, "Take what is there of truncated recordings")->group("Input");
}

std::optional<RawLayout> InputOptions::rawInput() const {
    if (!inputFormat && !inputRate && !inputChannels)
        return std::nullopt;
    if (!inputFormat || !inputRate || !inputChannels)
        throw CommandError("samples without a header need all three of --input-format, --input-rate and "
                           "--input-channels");
    return RawLayout{.format = *inputFormat, .sampleRate = *inputRate, .channels = *inputChannels};
}

PlayableFile InputOptions::atHand(const std::filesystem::path& input) const {
    const std::optional<RawLayout> raw = rawInput();
    const bool isCopied = raw || isStream(input);
    if (isCopied && decoding.stream)
        throw CommandError("--stream is for films, which are read from files");
    if (isCopied)
        return {.path = spooled(input, raw)};
    PlayableFile file = decoding.playable(input, decoding.stream, style);
    if (!file.note.empty())
        file.note = "note: " + file.note;
    return file;
}

OpenInput RenderingOptions::open(const std::filesystem::path& file,
                                 const std::filesystem::path& input) const {
    OpenInput opened;
    Media& media = opened.media;
    try {
        media = openRecording(file.string(), truncated());
    } catch (const SoundFileError& error) {
        throw failureOf(input, file, error);
    }
    if (media.channels.front()->length() == 0)
        throw CommandError("'" + input.string() + "' holds no samples", ExitStatus::input);
    if (media.isTruncated)
        opened.notes.push_back("note: " + truncatedText(words::quoted(input.string()),
                                                        media.channels.front()->length(), media.sampleRate));
    const ChannelLayout before = layoutOf(media);
    if (const std::optional<FoldDown> foldDown = channels.foldDownOf(before, input.string())) {
        media = foldedDown(media, *foldDown);
        if (!channels.map && media.channels.size() < before.size())
            opened.notes.push_back("note: " + words::quoted(input.string()) + ": " +
                                   foldDownText(before, media.layout));
    }
    const int wanted = rate.value_or(media.sampleRate);
    for (std::shared_ptr<SampleSource>& channel : media.channels)
        channel = convertedTo(channel, media.sampleRate, wanted, taken());
    media.sampleRate = wanted;
    return opened;
}

timeline::MediaSearch
InputOptions::mediaSearch(std::vector<std::filesystem::path> folders,
                          std::function<void(const std::filesystem::path&)> looksAt) const {
    return {
        .folders = std::move(folders),
        .playable = [this](const std::filesystem::path& medium,
                           std::optional<int> stream) { return decoding.playable(medium, stream, style); },
        .truncated = truncated(),
        .looksAt = std::move(looksAt)};
}

void OutputOptions::declareOutput(CLI::App& app, const std::string& outputHelp, const Defaults& defaults,
                                  std::size_t mostBlock) {
    constexpr const char* group = "Output";
    app.add_option("-o,--output", outputs, outputHelp + "; may be repeated, with other kinds of files")
        ->option_text("OUTPUT")
        ->allow_extra_args(false)
        ->group(group);
    addParsed(app, "--kind", kind, &parseFileKind,
              "The kind of file (wav, flac, ...) where the name does not say it")
        ->option_text("KIND")
        ->group(group);
    addParsed(app, "--format", format, &parseFormat, "f32, s8, u8, s16, s24, s24in32 or s32")
        ->option_text("FORMAT")
        ->group(group);
    app.add_flag("--dither", dither, "Add noise of two steps in front of rounding, against distortion")
        ->group(group);
    app.add_flag("--truncate", truncate, "Round toward zero and clip floats, as the library does for a host")
        ->group(group);
    declareRendering(app, group, defaults);
    app.add_flag("--quiet", style.quiet, "Tell only what is not as it was asked: no progress, no summary")
        ->group(group);
    app.add_flag("--json", style.json, "Tell programs: an object a line, with progress, notes and result")
        ->group(group);
    app.add_option("--block", block, "Samples per render call (default 4096); changes no sample")
        ->option_text("N")
        ->check(CLI::Range(std::size_t{1}, mostBlock))
        ->group(group);
    app.add_option("--threads", threads, "Threads that render side by side (default: one per processor)")
        ->option_text("N")
        ->check(CLI::Range(1, 1024))
        ->group(group);
}

std::string OutputOptions::outputNames() const {
    std::string names;
    for (const std::filesystem::path& output : outputs)
        names += (names.empty() ? "" : ", ") + output.string();
    return names;
}

std::vector<OutputOptions::Stored> OutputOptions::storedIn(const std::vector<OutputTarget>& targets,
                                                           std::optional<FormatId> kept) const {
    std::vector<Stored> all;
    for (const OutputTarget& target : targets) {
        const FileKind& fileKind = *target.kind;
        const bool keeps = kept && fileKind.lossy == 0 && subtypeIn(fileKind, *kept);
        Stored stored{.format = format.value_or(keeps ? *kept : defaultFormatOf(fileKind)),
                      .rounding = Rounding::nearest,
                      .note = ""};
        if (fileKind.lossy != 0 && format && *format != FormatId::f32) {
            stored.format = FormatId::f32;
            stored.note = "note: " + words::quoted(target.path.string()) + ": " + std::string(fileKind.name) +
                          " has samples of its own; --format is not for it";
        }
        all.push_back(std::move(stored));
    }
    const bool onlyFloats =
        std::ranges::all_of(all, [](const Stored& stored) { return stored.format == FormatId::f32; });
    for (Stored& stored : all)
        if (onlyFloats || !dither || stored.format != FormatId::f32)
            stored.rounding = roundingTo(stored.format);
        else if (stored.note.empty())
            stored.note =
                "note: " +
                words::quoted(targets[static_cast<std::size_t>(&stored - all.data())].path.string()) +
                " holds floats, which are not rounded, and so not dithered";
    return all;
}

Rounding OutputOptions::roundingTo(FormatId outputFormat) const {
    if (dither && truncate)
        throw CommandError(
            "--dither and --truncate cannot stand together: each says how samples are rounded");
    if (dither && outputFormat == FormatId::f32)
        throw CommandError("--dither is for integers, but the output holds f32, which is not rounded; choose "
                           "another with --format, such as s16");
    return dither ? Rounding::dithered : truncate ? Rounding::truncated : Rounding::nearest;
}

} // namespace audlmd::command
