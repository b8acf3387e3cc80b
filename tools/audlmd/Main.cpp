#include "host/words/Text.hpp"
#include "loop_modes/RenderFunction.hpp"
#include "ole/Orv/Exception.hpp"
#include "tools/audlmd/Subcommands.hpp"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <system_error>

namespace {

/// The exit status for a command line that cannot be understood. Other failures exit with EXIT_FAILURE.
constexpr int usageError = 2;

/// Prints one line of error and returns the exit status. Paths and texts of files in the line must not give
/// orders to a terminal.
int complain(std::string line, int status) {
    std::ranges::replace(line, '\n', ' ');
    std::fprintf(stderr, "audlmd: %s\n", audlmd::words::printable(line, line.size()).c_str());
    return status;
}

/// Says what to do where a system call has failed without a file to name.
std::string textOf(const std::system_error& error) {
    const std::string text = error.what();
    return error.code() == std::errc::resource_unavailable_try_again
               ? "a thread cannot be started, because a limit of threads or of memory is reached: raise it, "
                 "or "
                 "try --threads 1 (" +
                     text + ")"
               : text;
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
        if (error.get_exit_code() != 0)
            return complain(std::string(error.what()) + " (" + commandSoFar(app) + " --help tells more)",
                            usageError);
        app.exit(error); // prints the help or the version
    }
    // The output may still be in a buffer, and writing it can fail.
    if (std::fflush(stdout) != 0)
        return complain("cannot write to standard output", EXIT_FAILURE);
    return EXIT_SUCCESS;
}

/// Runs the command, and says what failed unless it is a lack of memory.
int runOrComplain(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::system_error& error) {
        return complain(textOf(error), EXIT_FAILURE);
    } catch (const std::exception& error) {
        return complain(error.what(), EXIT_FAILURE);
    } catch (const Orv::Exception::Base& error) {
        return complain(error.message(), EXIT_FAILURE);
    }
}

} // namespace

int main(int argc, char** argv) {
    try {
        return runOrComplain(argc, argv);
    } catch (const std::bad_alloc&) {
        // Also where there is too little for a line about another failure, so this one takes none.
        std::fputs("audlmd: there is not enough memory for this: raise the limit, or try a shorter range\n",
                   stderr);
        return EXIT_FAILURE;
    }
}
