#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/mix/Mix.hpp"
#include "tools/audlmd/mix/SoundTimeline.hpp"
#include "tools/audlmd/mix/TimelineInput.hpp"
#include "tools/audlmd/mix/Watching.hpp"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace audlmd::command {
namespace {

/// Several sound files, all from the start on.
void mixSounds(MixOptions& options) {
    SoundTimeline together(options);
    options.timeline.clear();
    for (const std::filesystem::path& input : options.inputs) {
        if (isTimelineFile(input))
            throw CommandError(words::quoted(input.string()) +
                               " is a timeline: mix it alone, or sound files alone");
        together.addTrack(input);
        options.timeline += (options.timeline.empty() ? "" : ", ") + input.string();
    }
    runMix(options, std::move(together).timeline());
}

void mixOnce(MixOptions& options, const std::function<void(const std::filesystem::path&)>& looksAt) {
    if (options.inputs.size() > 1)
        return mixSounds(options);
    options.timeline = options.inputs.front();
    runMix(options, std::nullopt, looksAt);
}

void mix(MixOptions& options) {
    options.requireCompatible();
    if (!options.watch)
        return mixOnce(options, {});
    watchAndMix(options, [&options](const auto& looksAt) { mixOnce(options, looksAt); });
}

} // namespace

void addMixCommand(CLI::App& app) {
    CLI::App* command = app.add_subcommand(
        "mix", "Mix a timeline, or sound files, into a sound file, or show what sounds when");
    const auto options = std::make_shared<MixOptions>();
    options->declare(*command);
    command->callback([options] { mix(*options); });
}

} // namespace audlmd::command
