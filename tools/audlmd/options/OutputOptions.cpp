#include "tools/audlmd/options/OutputOptions.hpp"

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"
#include "tools/audlmd/options/Parsers.hpp"

namespace audlmd::command {

void RenderingOptions::declareRendering(CLI::App& app, const std::string& group,
                                        const std::string& defaultRate) {
    addParsed(app, "--rate", rate, &parseRate,
              "Samples per second, such as 48000 or 44.1k (default: " + defaultRate + ")")
        ->option_text("HZ")
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
        throw CommandError("'" + input.string() + "' holds no samples", ExitStatus::input);
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
    declareRendering(app, group, defaultRate);
    app.add_flag("--quiet", quiet, "Tell only what is not as it was asked: no progress, no summary")
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

} // namespace audlmd::command
