#include "tools/audlmd/options/OutputOptions.hpp"

#include "host/inlined/InlinedRenderFunctions.hpp"
#include "host/mix/ConvertedSources.hpp"
#include "host/services/SampleRates.hpp"
#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/options/ParsedOption.hpp"

namespace audlmd::command {

void RenderingOptions::declareRendering(CLI::App& app, const std::string& group, const Defaults& defaults) {
    channels.declare(app, group, defaults.channels);
    app.add_option("--rate", rate, "Samples per second (default: " + defaults.rate + ")")
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

OpenInput RenderingOptions::open(const std::filesystem::path& input) const {
    OpenInput opened{.media = openSoundFile(input.string()), .note = {}};
    Media& media = opened.media;
    if (media.channels.front()->length() == 0)
        throw CommandError("'" + input.string() + "' holds no samples");
    const ChannelLayout before = layoutOf(media);
    if (const std::optional<FoldDown> foldDown = channels.foldDownOf(before, input.string())) {
        media = foldedDown(media, *foldDown);
        if (!channels.map && media.channels.size() < before.size())
            opened.note =
                "note: " + words::quoted(input.string()) + ": " + foldDownText(before, media.layout);
    }
    const int wanted = rate.value_or(media.sampleRate);
    for (std::shared_ptr<SampleSource>& channel : media.channels)
        channel = convertedTo(channel, media.sampleRate, wanted);
    media.sampleRate = wanted;
    return opened;
}

void OutputOptions::declareOutput(CLI::App& app, const std::string& outputHelp, const Defaults& defaults,
                                  std::size_t mostBlock) {
    constexpr const char* group = "Output";
    app.add_option("-o,--output", output, outputHelp)->option_text("OUTPUT")->group(group);
    addParsed(app, "--format", format, &parseFormat, "f32, s8, u8, s16, s24, s24in32 or s32")
        ->option_text("FORMAT")
        ->group(group);
    declareRendering(app, group, defaults);
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
