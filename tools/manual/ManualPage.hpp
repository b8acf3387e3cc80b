#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace audlmd::manual {

/// A page of section 1 for the command or a subcommand, in the macros of man(7), made of the texts of --help.
/// `date` is that of the release, as 2026-01-31.
std::string manualPage(const CLI::App& command, const std::string& version, const std::string& date);

} // namespace audlmd::manual
