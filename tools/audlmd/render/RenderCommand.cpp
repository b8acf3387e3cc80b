#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/files/OutputPath.hpp"
#include "tools/audlmd/render/Render.hpp"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

namespace audlmd::command {
namespace {

/// Where each input goes: under its own name, with the extension of the wanted kind, else its own one, else
/// .wav.
std::vector<std::filesystem::path> outputsIn(const RenderOptions& options) {
    std::vector<std::filesystem::path> outputs;
    for (const std::filesystem::path& input : options.inputs) {
        // What a lossy file holds is not encoded again, unless that is asked for.
        const FileKind* const own = findFileKind(input);
        std::string extension = own != nullptr && own->lossy == 0 ? input.extension().string() : ".wav";
        if (options.kind)
            extension = "." + std::string((*options.kind)->extension);
        outputs.push_back(options.outputs.front() / (input.stem().string() + options.suffix + extension));
        for (std::size_t other = 0; other + 1 < outputs.size(); ++other)
            if (outputs[other] == outputs.back())
                throw CommandError("'" + options.inputs[other].string() + "' and '" + input.string() +
                                   "' would both be written as '" + outputs.back().string() +
                                   "'; render them in two calls, with a --suffix");
    }
    return outputs;
}

/// Renders each input, also after one that has failed.
void renderIntoFolder(const RenderOptions& options) {
    const std::vector<std::filesystem::path> outputs = outputsIn(options);
    std::error_code error;
    std::filesystem::create_directory(options.outputs.front(), error);
    if (error)
        failToWrite(options.outputs.front(), error.value());
    forEachInput(
        outputs.size(), [&](std::size_t n) { renderOne(options, options.inputs[n], {outputs[n]}); },
        "; the others are in '" + options.outputs.front().string() + "'");
}

void renderAll(const RenderOptions& options) {
    options.requireCompatible();
    if (options.isFolder())
        renderIntoFolder(options);
    else
        renderOne(options, options.inputs.front(), options.outputs);
}

} // namespace

void addRenderCommand(CLI::App& app) {
    CLI::App* render =
        app.add_subcommand("render", "Render a sound file, or a range of it, into another one");
    const auto options = std::make_shared<RenderOptions>();
    options->declare(*render);
    render->callback([options] { renderAll(*options); });
}

} // namespace audlmd::command
