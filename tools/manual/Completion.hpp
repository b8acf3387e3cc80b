#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace audlmd::manual {

// What a shell needs to complete subcommands, options, their words and files.

std::string bashCompletion(const CLI::App& command);
std::string zshCompletion(const CLI::App& command);
std::string fishCompletion(const CLI::App& command);

} // namespace audlmd::manual
