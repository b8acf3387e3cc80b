#include "loop_modes/RenderFunction.hpp"
#include "ole/Orv/Exception.hpp"
#include "tools/audlmd/Subcommands.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

/// The exit status for a command line that cannot be understood. Other failures exit with EXIT_FAILURE.
constexpr int usageError = 2;

/// Prints one line of error and returns the exit status.
int complain(std::string line, int status) {
    std::ranges::replace(line, '\n', ' ');
    std::fprintf(stderr, "audlmd: %s\n", line.c_str());
    return status;
}

/// "audlmd" and the subcommands on the command line, for a hint at the right --help.
std::string commandSoFar(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return app.get_name() + (chosen.empty() ? "" : " " + commandSoFar(*chosen.front()));
}

int run(int argc, char** argv) {
    CLI::App app("Renders audio through the render functions of libaudlmd.", "audlmd");
    app.set_version_flag("--version", audLMDDllVersionStr());
    app.require_subcommand(1);
    app.failure_message(CLI::FailureMessage::simple);
    audlmd::command::addRenderCommand(app);
    audlmd::command::addModesCommand(app);
    audlmd::command::addPlotCommand(app);
    audlmd::command::addMixCommand(app);
    audlmd::command::addPlayCommand(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error);
        return complain(std::string(error.what()) + " (" + commandSoFar(app) + " --help tells more)",
                        usageError);
    }
    // The output may still be in a buffer, and writing it can fail.
    if (std::fflush(stdout) != 0)
        return complain("cannot write to standard output", EXIT_FAILURE);
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        return complain(error.what(), EXIT_FAILURE);
    } catch (const Orv::Exception::Base& error) {
        return complain(error.message(), EXIT_FAILURE);
    }
}
