#include "tools/audlmd/options/PeaksOptions.hpp"

#include "host/words/Text.hpp"
#include "tools/audlmd/CommandError.hpp"

#include <CLI/CLI.hpp>

namespace audlmd::command {

void PeaksOptions::declare(CLI::App& app) {
    constexpr const char* group = "Output";
    CLI::Option* const peaks =
        app.add_option(
               "--peaks", file,
               "Also write waveform peaks for players in web pages, as audiowaveform does: .json or .dat")
            ->option_text("FILE")
            ->group(group);
    app.add_option("--peaks-bits", bits, "Of each of them: 8 (the default) or 16")
        ->check(CLI::IsMember({8, 16}))
        ->needs(peaks)
        ->option_text("N")
        ->group(group);
    app.add_option("--peaks-samples", samplesPerPixel, "The samples behind each of them (default 256)")
        ->check(CLI::Range(2, 1 << 24))
        ->needs(peaks)
        ->option_text("N")
        ->group(group);
}

void PeaksOptions::requireCompatible(bool hasOutput) const {
    if (!file.empty() && !hasOutput)
        throw CommandError("--peaks are those of an output: name the file to write with -o");
    if (!file.empty() && !isJson() && file.extension() != ".dat")
        throw CommandError("--peaks: " + words::quoted(file.string()) +
                           " names no kind of file; use .json or .dat");
}

} // namespace audlmd::command
