#pragma once

#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/Parsers.hpp"

#include <filesystem>
#include <optional>
#include <vector>

namespace audlmd::command {

/// The options of `join`.
struct JoinOptions : OutputOptions {
    std::vector<std::filesystem::path> inputs;
    std::optional<FadeValue> crossfade;
    /// Whether the inputs are reports of slices.
    bool slices = false;
    /// A JSON file. Empty: none.
    std::filesystem::path report;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& join);
};

} // namespace audlmd::command
