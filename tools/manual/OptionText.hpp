#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace audlmd::manual {

/// What comes behind an option on the command line.
enum class Value { none, file, folder, words, other };

/// An option as a manual and a shell need to know it.
struct OptionText {
    /// With their hyphens, the short ones first.
    std::vector<std::string> names = {};
    /// What stands for the value in the help, such as TIME. Empty for a flag.
    std::string value;
    Value kind = Value::none;
    /// The words that the value can be, as far as they are known.
    std::vector<std::string> words = {};
    std::string description;
    std::string group;
};

/// The options of a subcommand in the order of the help, without its files and other words.
std::vector<OptionText> optionsOf(const CLI::App& command);

/// The files and other words behind the options, as the help writes them: "INPUT...".
std::string positionalsOf(const CLI::App& command);

/// In the order of the help.
std::vector<const CLI::App*> subcommandsOf(const CLI::App& command);

/// "audlmd-plot-curves": the names from the command down to a subcommand.
std::string nameOf(const CLI::App& command, std::string_view separator);

} // namespace audlmd::manual
