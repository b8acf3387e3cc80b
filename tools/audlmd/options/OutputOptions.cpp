#include "tools/audlmd/options/OutputOptions.hpp"

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/services/SampleRates.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

namespace audlmd::command {

void RenderingOptions::declareRendering(CLI::App& app, const std::string& group,
                                        const std::string& defaultRate) {
    app.add_option("--rate", rate, "Samples per second (default: " + defaultRate + ")")
        ->option_text("HZ")
        ->check(CLI::Range(lowestSampleRate, highestSampleRate))
        ->group(group);
    app.add_flag("--through-tables", throughTables,
                 "Render through the loaded library, as a host does; changes no sample")
        ->group(group);
}

RenderFunctionLookUp<Unclipped> RenderingOptions::inlined() const {
    return throughTables ? nullptr : &inlinedRenderFunction;
}

Media RenderingOptions::open(const std::filesystem::path& input) const {
    Media media = openSoundFile(input.string());
    if (media.channels.front()->length() == 0)
        throw CommandError("'" + input.string() + "' holds no samples");
    const int wanted = rate.value_or(media.sampleRate);
    for (std::shared_ptr<SampleSource>& channel : media.channels)
        channel = convertedTo(channel, media.sampleRate, wanted);
    media.sampleRate = wanted;
    return media;
}

void OutputOptions::declareOutput(CLI::App& app, const std::string& outputHelp,
                                  const std::string& defaultRate, std::size_t mostBlock) {
    constexpr const char* group = "Output";
    app.add_option("-o,--output", output, outputHelp)->option_text("OUTPUT")->group(group);
    addParsed(app, "--format", format, &parseFormat, "f32, s8, u8, s16, s24, s24in32 or s32")
        ->option_text("FORMAT")
        ->group(group);
    app.add_flag("--dither", dither, "Add noise of two steps in front of rounding, against distortion")
        ->group(group);
    app.add_flag("--truncate", truncate, "Round toward zero and clip floats, as the library does for a host")
        ->group(group);
    declareRendering(app, group, defaultRate);
    app.add_option("--block", block, "Samples per render call (default 4096); changes no sample")
        ->option_text("N")
        ->check(CLI::Range(std::size_t{1}, mostBlock))
        ->group(group);
    app.add_option("--threads", threads, "Threads that render side by side (default: one per processor)")
        ->option_text("N")
        ->check(CLI::Range(1, 1024))
        ->group(group);
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
