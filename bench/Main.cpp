#include "bench/Commands.hpp"
#include "loop_modes/RegistrationOrder.hpp"
#include "model/OutputTypes.hpp"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <map>

namespace {

std::map<std::string, std::size_t> outputTypeIndices() {
    std::map<std::string, std::size_t> indices;
    for (std::size_t i = 0; i < audlmd::model::outputTypeCount; ++i)
        indices[audlmd::model::outputTypeNames[i]] = i;
    return indices;
}

/// The options of both commands.
void addOptions(CLI::App& command, audlmd::bench::Selection& selection) {
    command.add_option("--code", selection.codes, "mode codes (all)")
        ->check(CLI::Validator(
            [](const std::string& text) {
                unsigned long code = 0;
                const bool valid =
                    CLI::detail::lexical_cast(text, code) && Aud::Render::isValidModeCode(code);
                return valid ? std::string() : text + " is not a valid mode code";
            },
            "CODE"));
    command.add_option("--rounds", selection.rounds, "times to go through everything")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    command.add_option("--repetitions", selection.repetitions, "times in a row for each function")
        ->capture_default_str()
        ->check(CLI::PositiveNumber);
    command.add_option("--json", selection.json, "file for the figures as JSON (- for standard output)");
}

} // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): options that clash are a fault of this program
int main(int argc, char** argv) {
    CLI::App app{"Measures the render functions of libaudlmd, each beside its floor: the host calls that it "
                 "must make."};
    app.require_subcommand(1);
    audlmd::bench::Selection selection;
    CLI::App* const modes = app.add_subcommand("modes", "nanoseconds per output sample");
    addOptions(*modes, selection);
    modes->add_option("--output", selection.outputTypes, "output types (all)")
        ->transform(CLI::CheckedTransformer(outputTypeIndices(), CLI::ignore_case));
    modes->add_option("--speed", selection.speeds, "speeds of modes with a conversion")
        ->capture_default_str()
        ->check(CLI::Range(0.01, 6.0));
    modes->add_option("--samples", selection.samples, "output samples per call")
        ->capture_default_str()
        ->check(CLI::Range(16U, 4096U));
    CLI::App* const calls = app.add_subcommand("calls", "nanoseconds per call of 0 and of 64 samples");
    addOptions(*calls, selection);
    CLI11_PARSE(app, argc, argv);

    if (selection.codes.empty())
        selection.codes.assign(Aud::Render::registrationOrder.begin(), Aud::Render::registrationOrder.end());
    if (selection.outputTypes.empty())
        for (std::size_t i = 0; i < audlmd::model::outputTypeCount; ++i)
            selection.outputTypes.push_back(i);
    try {
        return modes->parsed() ? audlmd::bench::measureModes(selection)
                               : audlmd::bench::measureCalls(selection);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "audlmd-bench: %s\n", failure.what());
        return 1;
    }
}
