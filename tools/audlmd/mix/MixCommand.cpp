#include "tools/audlmd/Subcommands.hpp"
#include "tools/audlmd/mix/Mix.hpp"

#include <CLI/CLI.hpp>

#include <memory>

namespace audlmd::command {

void addMixCommand(CLI::App& app) {
    CLI::App* mix = app.add_subcommand("mix", "Mix a timeline into a sound file, or show what sounds when");
    const auto options = std::make_shared<MixOptions>();
    options->declare(*mix);
    mix->callback([options] {
        options->requireCompatible();
        runMix(*options);
    });
}

} // namespace audlmd::command
