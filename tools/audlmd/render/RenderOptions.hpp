#pragma once

#include "tools/audlmd/options/OutputOptions.hpp"
#include "tools/audlmd/options/StripOptions.hpp"

#include <filesystem>
#include <optional>

namespace audlmd::command {

/// The options of `render`. Without an output the render is only explained.
struct RenderOptions : OutputOptions {
    std::filesystem::path input;
    std::optional<std::filesystem::path> mixInto;
    StripOptions strip;
    bool explain = false;

    /// Declares all options with their help. This object must outlive the app.
    void declare(CLI::App& render);

    /// Throws CommandError for options that cannot stand together, or alone.
    void requireCompatible() const;
};

} // namespace audlmd::command
