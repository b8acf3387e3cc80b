#include "tools/audlmd/CommandError.hpp"
#include "tools/audlmd/Hint.hpp"
#include "tools/audlmd/SettingNotes.hpp"
#include "tools/audlmd/Subcommands.hpp"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

namespace {

using audlmd::command::ExitStatus;

int complain(const std::string& line, ExitStatus status) {
    audlmd::command::printError(line);
    return static_cast<int>(status);
}

/// "audlmd" and the subcommands on the command line, for a hint at the right --help.
std::string commandSoFar(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return app.get_name() + (chosen.empty() ? "" : " " + commandSoFar(*chosen.front()));
}

/// Why the command line cannot be understood.
std::string whyNot(const CLI::App& app, const CLI::ParseError& error) {
    const std::string hint = audlmd::command::hintFor(app);
    return hint.empty() ? error.what() : hint;
}

int run(int argc, char** argv) {
    CLI::App app;
    audlmd::command::declareCommand(app);
    for (const std::string& note : audlmd::command::settingNotes())
        std::fprintf(stderr, "audlmd: %s\n", note.c_str());
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0)
            return complain(whyNot(app, error) + " (" + commandSoFar(app) + " --help tells more)",
                            ExitStatus::usage);
        app.exit(error); // prints the help or the version
    }
    // The output may still be in a buffer, and writing it can fail.
    if (std::fflush(stdout) != 0)
        return complain("cannot write to standard output", ExitStatus::output);
    return EXIT_SUCCESS;
}

/// Runs the command, and says what failed unless it is a lack of memory.
int runOrComplain(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (...) {
        const audlmd::command::CommandError failure = audlmd::command::currentFailure();
        return complain(failure.what(), failure.status());
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
        return static_cast<int>(ExitStatus::failed);
    }
}
