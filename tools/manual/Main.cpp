#include "tools/audlmd/Subcommands.hpp"
#include "tools/manual/Completion.hpp"
#include "tools/manual/ManualPage.hpp"
#include "tools/manual/OptionText.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace {

using namespace audlmd;

void write(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path);
    if (!(file << text).flush())
        throw std::runtime_error("'" + path.string() + "' cannot be written");
}

/// The build's own program: audlmd-manual FOLDER VERSION DATE writes the manual pages of section 1, and what
/// bash, zsh and fish complete by.
void run(const std::filesystem::path& folder, const std::string& version, const std::string& date) {
    CLI::App command;
    command::declareCommand(command);
    std::filesystem::create_directories(folder);
    write(folder / "audlmd.1", manual::manualPage(command, version, date));
    for (const CLI::App* subcommand : manual::subcommandsOf(command))
        write(folder / (manual::nameOf(*subcommand, "-") + ".1"),
              manual::manualPage(*subcommand, version, date));
    write(folder / "audlmd.bash", manual::bashCompletion(command));
    write(folder / "_audlmd", manual::zshCompletion(command));
    write(folder / "audlmd.fish", manual::fishCompletion(command));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("audlmd-manual FOLDER VERSION DATE\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        run(argv[1], argv[2], argv[3]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "audlmd-manual: %s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
