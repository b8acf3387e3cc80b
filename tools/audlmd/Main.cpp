#include "loop_modes/Version.hpp"
#include "ole/Orv/Exception.hpp"
#include "tools/audlmd/Subcommands.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

constexpr int usageError = 2;

int complain(std::string line, int status) {
    std::ranges::replace(line, '\n', ' ');
    std::fprintf(stderr, "audlmd: %s\n", line.c_str());
    return status;
}

/// The command and the subcommands that were understood.
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
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error);
        return complain(std::string(error.what()) + " (" + commandSoFar(app) + " --help tells more)",
                        usageError);
    }
    // What was printed may still be on its way.
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
